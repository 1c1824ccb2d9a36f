// SPDX-License-Identifier: MIT
#include "observation/LinkReading.h"

#include "observation/ObservationAccess.h"

#include <unordered_set>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constinit thread_local LinkReadingScope* innermostReading = nullptr;
constinit thread_local PathRootScope* innermostRoot = nullptr;

} // namespace

LinkReadingScope::LinkReadingScope(bool outermost)
    : enclosing_(innermostReading),
      document_(outermost || enclosing_ == nullptr ? this : enclosing_->document_) {
    innermostReading = this;
}

LinkReadingScope::~LinkReadingScope() { innermostReading = enclosing_; }

void LinkReadingScope::finish(std::shared_ptr<Observer> const& root) {
    if (document_ != this)
        return;
    std::vector<std::weak_ptr<Observable>> const observables = std::exchange(observables_, {});
    std::unordered_set<Observable const*> seen;
    std::vector<std::shared_ptr<Observable>> updated; // held, so that no address is met a second time
    PathRootScope const rootScope(root);
    for (auto const& noted : observables) {
        auto observable = noted.lock();
        if (observable == nullptr || !seen.insert(observable.get()).second)
            continue;
        observable->updateObserverLists(true);
        updated.push_back(std::move(observable));
    }
}

bool LinkReadingScope::isOpen() noexcept { return innermostReading != nullptr; }

void LinkReadingScope::enlist(Observable& observable) {
    if (innermostReading == nullptr)
        return;
    auto const self = std::static_pointer_cast<Observable>(observable.weak_from_this().lock());
    auto& observables = innermostReading->document_->observables_;
    // The links of one observable come one after the other.
    if (self != nullptr && (observables.empty() || observables.back().lock() != self))
        observables.push_back(self);
}

PathRootScope::PathRootScope(std::shared_ptr<Observer> const& root)
    : enclosing_(innermostRoot), root_(root != nullptr || enclosing_ == nullptr ? root : enclosing_->root_) {
    innermostRoot = this;
}

PathRootScope::~PathRootScope() { innermostRoot = enclosing_; }

std::shared_ptr<Observer> PathRootScope::effectiveRoot() {
    if (auto root = ObservationAccess::currentPathRoot())
        return root;
    return innermostRoot == nullptr ? nullptr : innermostRoot->root_;
}

} // namespace Zorvan::AttributeContainer
