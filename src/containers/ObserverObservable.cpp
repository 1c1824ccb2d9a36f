// SPDX-License-Identifier: MIT
#include "containers/ObserverObservable.h"

#include <utility>

namespace Zorvan::AttributeContainer {

ObserverObservable::ObserverObservable(std::weak_ptr<AttrContainer> container)
    : container_(std::move(container)) {}

ObserverObservable::~ObserverObservable() = default;

std::weak_ptr<ObservingObject> ObserverObservable::inqObserver(std::optional<std::string const> const& path) {
    auto const container = container_.lock();
    return container ? container->inqObserver(path) : std::weak_ptr<ObservingObject>();
}

std::weak_ptr<ObservingObject const>
ObserverObservable::inqObserver(std::optional<std::string const> const& path) const {
    std::shared_ptr<AttrContainer const> const container = container_.lock();
    return container ? container->inqObserver(path) : std::weak_ptr<ObservingObject const>();
}

std::optional<std::reference_wrapper<Observer const>> ObserverObservable::lookupObject() {
    auto const container = container_.lock();
    if (!container)
        return std::nullopt;
    return *container;
}

std::string ObserverObservable::getName() {
    auto const container = container_.lock();
    return container ? container->getName() : std::string();
}

std::optional<std::string> ObserverObservable::inqObjPath() {
    auto const container = container_.lock();
    return container ? container->inqObjPath() : std::nullopt;
}

} // namespace Zorvan::AttributeContainer
