// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttributePropagationObserver.h>

#include <AttributeContainer/WtAttribute.h>

namespace Zorvan::AttributeContainer {

AttributePropagationObserver::AttributePropagationObserver(std::shared_ptr<Attribute> const& target)
    : Observer(std::nullopt), target_(target) {}

AttributePropagationObserver::~AttributePropagationObserver() = default;

std::string AttributePropagationObserver::getName() { return getStaticClassName(); }

std::string const& AttributePropagationObserver::getStaticClassName() {
    static std::string const& name = *new std::string("AttributePropagationObserver");
    return name;
}

std::string const& AttributePropagationObserver::getClassName() const { return getStaticClassName(); }

std::shared_ptr<Attribute> AttributePropagationObserver::getTarget() const { return target_.lock(); }

} // namespace Zorvan::AttributeContainer
