// SPDX-License-Identifier: MIT
#include <AttributeContainer/CachedAttributeInfo.h>

#include <AttributeContainer/WtAttribute.h>

#include <utility>

namespace Zorvan::AttributeContainer {

CachedAttributeInfo::CachedAttributeInfo(std::shared_ptr<Attribute> cached) : cached_(std::move(cached)) {
    setExpire(false);
}

CachedAttributeInfo::~CachedAttributeInfo() = default;

CachedAttributeInfo::CachedAttributeInfo(CachedAttributeInfo const& other) = default;

CachedAttributeInfo& CachedAttributeInfo::operator=(CachedAttributeInfo const& other) {
    if (this != &other) {
        setExpire(other.willExpire());
        cached_ = other.cached_;
    }
    return *this;
}

CachedAttributeInfo& CachedAttributeInfo::operator=(CachedAttributeInfo&& other) noexcept {
    setExpire(other.willExpire());
    if (this != &other)
        cached_ = std::move(other.cached_);
    return *this;
}

std::string const& CachedAttributeInfo::getStaticClassName() {
    static std::string const& name = *new std::string("CachedAttributeInfo");
    return name;
}

std::string const& CachedAttributeInfo::getClassName() const { return getStaticClassName(); }

std::shared_ptr<Attribute> CachedAttributeInfo::getCachedAttribute() { return cached_; }

} // namespace Zorvan::AttributeContainer
