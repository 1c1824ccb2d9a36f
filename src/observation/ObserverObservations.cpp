// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observer.h>

#include "foundation/PerThread.h"
#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"

#include <AttributeContainer/Observable.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::uint64_t npos = ~std::uint64_t{0};

struct PathRoot {
    std::shared_ptr<Observer> root;
};

} // namespace

std::shared_ptr<Observer> ObservationAccess::currentPathRoot() {
    PathRoot const* const state = PerThread<PathRoot>::peek();
    return state == nullptr ? nullptr : state->root;
}

void Observer::currentPathRoot(std::shared_ptr<Observer> root) {
    if (root == nullptr && PerThread<PathRoot>::peek() == nullptr)
        return;
    // The previous root is released when the new one is in force: its destructor may be foreign.
    PerThread<PathRoot>::get().root.swap(root);
}

// The observables that an observer watches and does not own itself, each once, the latest first.
std::vector<std::shared_ptr<Observable>> ObservationAccess::foreignObservables(Observer const& observer) {
    auto observables = observer.params_.distinctObservables(true);
    std::erase_if(observables, [&](std::shared_ptr<Observable> const& observable) {
        auto const owner = observable->lookupObject();
        return owner && &owner->get() == &observer;
    });
    return observables;
}

// The live links of a list to an observer, from the last one to the first.
std::vector<ObserverPath*> ObservationAccess::liveLinks(ObserverList const& list, Observer const& observer) {
    std::vector<ObserverPath*> links;
    if (list.rep_ == nullptr)
        return links;
    list.rep_->collectOf(observer, links);
    std::erase_if(links, [](ObserverPath const* link) { return !link->isActive(); });
    std::ranges::sort(links, std::greater(),
                      [&](ObserverPath const* link) { return list.rep_->positionOf(*link); });
    return links;
}

std::uint64_t Observer::copyObservationsFrom(Observer& other) {
    if (&other == this)
        return 0;
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    std::uint64_t collected = 0;
    for (auto const& observable : ObservationAccess::foreignObservables(other)) {
        std::vector<std::pair<bool, std::unique_ptr<ObserverPath>>> copies;
        for (bool const isPre : {true, false}) {
            ObserverList const* const list = ObservationAccess::findList(*observable, isPre);
            if (list == nullptr)
                continue;
            auto const links = ObservationAccess::liveLinks(*list, other);
            for (auto link = links.rbegin(); link != links.rend(); ++link) {
                auto copy = std::make_unique<ObserverPath>(*observable, *this, (*link)->priority_, npos);
                std::shared_ptr<RegisteredAction> const none = copy->exchangeAction((*link)->action_);
                copy->setTemporary((*link)->isTemporary());
                copies.emplace_back(isPre, std::move(copy));
            }
        }
        collected += copies.size();
        for (auto& [isPre, copy] : copies)
            isPre ? observable->addPreObserver(std::move(copy), true)
                  : observable->addObserver(std::move(copy), true);
    }
    return collected;
}

std::uint64_t Observer::takeOverObservationsFrom(Observer& other) {
    if (&other == this)
        return 0;
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    std::uint64_t moved = 0;
    for (auto const& observable : ObservationAccess::foreignObservables(other)) {
        for (bool const isPre : {false, true}) {
            ObserverList* const list = ObservationAccess::findList(*observable, isPre);
            if (list == nullptr || list->empty())
                continue;
            // Comparing links may ask foreign observers for their paths; the walk keeps removed links in
            // memory.
            ObserverWalk const walk(*list);
            for (ObserverPath* const link : ObservationAccess::liveLinks(*list, other)) {
                if (!link->isActive())
                    continue;
                link->setObserver(*this, true);
                ++moved;
            }
        }
    }
    return moved;
}

} // namespace Zorvan::AttributeContainer
