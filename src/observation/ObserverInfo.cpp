// SPDX-License-Identifier: MIT
#include <AttributeContainer/ObserverInfo.h>

#include <utility>

namespace Zorvan::AttributeContainer {

ObserverInfo::~ObserverInfo() = default;

std::string const& ObserverInfo::getStaticClassName() {
    static std::string const& name = *new std::string("ObserverInfo");
    return name;
}

std::string const& ObserverInfo::getClassName() const { return getStaticClassName(); }

InfoFailed::InfoFailed(Result reason) : error(std::move(reason)) {}

InfoFailed::~InfoFailed() = default;

std::string const& InfoFailed::getStaticClassName() {
    static std::string const& name = *new std::string("InfoFailed");
    return name;
}

std::string const& InfoFailed::getClassName() const { return getStaticClassName(); }

} // namespace Zorvan::AttributeContainer
