// SPDX-License-Identifier: MIT
#include <AttributeContainer/ObserverList.h>

#include "observation/ObserverListRep.h"

#include <AttributeContainer/Observable.h>

#include <stdexcept>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::uint64_t npos = ~std::uint64_t{0};

[[noreturn]] void throwInvalidSubscript() { throw std::out_of_range("invalid vector subscript"); }

} // namespace

ObserverList::ObserverList() noexcept = default;

ObserverList::~ObserverList() = default;

ObserverList::Rep& ObserverList::rep() {
    if (rep_ == nullptr)
        rep_ = std::make_unique<Rep>();
    return *rep_;
}

std::uint64_t ObserverList::size() const { return rep_ == nullptr ? 0 : rep_->paths.size(); }

ObserverPath& ObserverList::at(std::uint64_t index) const {
    if (index >= size())
        throwInvalidSubscript();
    return *rep_->paths[index];
}

ObserverPath* ObserverList::add(std::unique_ptr<ObserverPath> path) {
    return path == nullptr ? nullptr : rep().insertAt(size(), std::move(path), *this);
}

ObserverPath* ObserverList::addAfter(std::uint64_t index, std::unique_ptr<ObserverPath> path) {
    if (path == nullptr)
        return nullptr;
    std::uint64_t const behind = index + 1; // all ones wraps to the front
    return rep().insertAt(behind < size() ? behind : size(), std::move(path), *this);
}

std::unique_ptr<ObserverPath> ObserverList::remove(std::uint64_t index, std::uint64_t deferral) {
    if (index >= size())
        throwInvalidSubscript();
    if (deferral == 0)
        return rep_->takeAt(index);
    rep_->kill(*rep_->paths[index]);
    return nullptr;
}

bool ObserverList::removeElement(ObserverPath const& path, std::uint64_t deferral) {
    std::uint64_t const found = lookup(path);
    if (found == npos)
        return false;
    std::unique_ptr<ObserverPath> const released = remove(found, deferral);
    return true;
}

void ObserverList::compress(bool) {
    if (rep_ == nullptr)
        return;
    ReleasedPaths released;
    rep_->killActionless();
    rep_->purge(released);
}

std::uint64_t ObserverList::lookup(ObserverPath const& path) const {
    if (rep_ == nullptr)
        return npos;
    ObserverPath const* const found = rep_->findEqual(LinkKey(path, rep_->numText > 0), nullptr);
    return found == nullptr ? npos : rep_->positionOf(*found);
}

std::uint64_t ObserverList::lookupContent(ObserverPath& path) const { return lookup(path); }

void ObserverList::sort() {
    if (rep_ == nullptr)
        return;
    rep_->sortPending = true;
    if (rep_->walks != nullptr)
        return;
    ReleasedPaths released;
    rep_->settle(released);
}

ObserverWalk::ObserverWalk(ObserverList& list)
    : list_(&list), observable_(nullptr), thread_(nullptr),
      outerOfList_(std::exchange(list.rep().walks, this)), position_(list.rep_->paths.size()) {}

bool ObserverWalk::isNotifying(Observable const& observable, ObserverList const& list) {
    for (ObserverWalk const* walk = notifyingThread.innermostNotification; walk != nullptr;
         walk = walk->outerNotification_)
        if (walk->observable_ == &observable && walk->isOver(list))
            return true;
    return false;
}

void ObserverWalk::forget(Observable const& observable) noexcept {
    for (ObserverWalk* walk = notifyingThread.innermostNotification; walk != nullptr;
         walk = walk->outerNotification_)
        if (walk->observable_ == &observable) {
            walk->observable_ = nullptr;
            walk->leaveList();
        }
}

// The list may be another's, and outlive the walk.
void ObserverWalk::leaveList() noexcept {
    if (list_ == nullptr)
        return;
    ObserverWalk** walk = &list_->rep_->walks;
    while (*walk != this)
        walk = &(*walk)->outerOfList_;
    *walk = outerOfList_;
    list_ = nullptr;
    position_ = 0;
}

} // namespace Zorvan::AttributeContainer
