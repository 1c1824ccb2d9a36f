// SPDX-License-Identifier: MIT
#include <AttributeContainer/InfoStringMap.h>

#include <utility>

namespace Zorvan::AttributeContainer {

InfoStringMap::InfoStringMap(std::map<std::string, std::string> infos) : infos_(std::move(infos)) {}

InfoStringMap::~InfoStringMap() = default;

InfoStringMap& InfoStringMap::operator=(InfoStringMap const& other) {
    infos_ = other.infos_;
    return *this;
}

std::string const& InfoStringMap::getStaticClassName() {
    static std::string const& name = *new std::string("InfoStringMap");
    return name;
}

std::string const& InfoStringMap::getClassName() const { return getStaticClassName(); }

template <>
void InfoStringMap::addInfo<std::string>(std::string const& key, std::string const& value) {
    infos_.insert_or_assign(key, value);
}

std::optional<std::string> InfoStringMap::getInfoByKey(std::string const& key) const {
    auto const found = infos_.find(key);
    return found == infos_.end() ? std::string() : found->second;
}

void InfoStringMap::setInfos(std::map<std::string, std::string> infos) { infos_ = std::move(infos); }

} // namespace Zorvan::AttributeContainer
