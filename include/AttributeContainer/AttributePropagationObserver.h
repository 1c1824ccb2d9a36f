// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Observer.h>

#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

class Attribute;

/// Lets its target attribute follow others: added to them as post-observer with the action "Propagate" (token
/// 2). Each attribute makes and owns its own, see `Attribute::getObserver`.
class KX_ATTRIBUTECONTAINER_API AttributePropagationObserver : public Observer {
public:
    explicit AttributePropagationObserver(std::shared_ptr<Attribute> const& target);
    ~AttributePropagationObserver() override;

    using Observer::getName;
    /// "AttributePropagationObserver".
    std::string getName() override;
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    /// The attribute that follows; empty when it is gone.
    std::shared_ptr<Attribute> getTarget() const;

private:
    std::weak_ptr<Attribute> target_;
};

} // namespace Zorvan::AttributeContainer
