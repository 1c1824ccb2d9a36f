// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>

#include <memory>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

/// What observers of a container register with: an observable that hands its questions on to the container.
class ObserverObservable final : public Observable {
public:
    explicit ObserverObservable(std::weak_ptr<AttrContainer> container);
    ~ObserverObservable() override;

    using Observable::getName;
    using Observable::inqObjPath;
    using Observable::lookupObject;
    std::weak_ptr<ObservingObject> inqObserver(std::optional<std::string const> const& path) override;
    std::weak_ptr<ObservingObject const>
    inqObserver(std::optional<std::string const> const& path) const override;
    std::optional<std::reference_wrapper<Observer const>> lookupObject() override;
    std::string getName() override;
    std::optional<std::string> inqObjPath() override;

private:
    std::weak_ptr<AttrContainer> container_;
};

} // namespace Zorvan::AttributeContainer
