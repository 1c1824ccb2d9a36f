// SPDX-License-Identifier: MIT
#pragma once

#include "foundation/PerThread.h"

#include <cstddef>
#include <set>
#include <stdexcept>
#include <tuple>

namespace Zorvan::AttributeContainer {

class AttrContainer;

/// One container on the path of a traversal that runs on this thread, from the start of the traversal down to
/// where it is. Containers may be shared, also with an ancestor; a traversal does not enter one that is on
/// its path already.
///
/// Traversals recurse, so that the path cannot have any length: `maxDepth` levels fit into a stack of 1 MiB
/// in a build without optimisation. Documents nest far less deep; trees that calls build, or ways through
/// many references, need not.
class TraversalPath {
public:
    static constexpr std::size_t maxDepth = 512;

    /// Tells the copying of trees from other traversals.
    static void const* copying() {
        static char const tag = 0;
        return &tag;
    }

    /// `traversal` tells the traversals of a thread apart, which may be nested: the address of a visitor,
    /// say. One that walks two trees at once names a pair of containers. Levels are counted by `container`.
    /// Throws `std::length_error` beyond `maxDepth` of them.
    TraversalPath(void const* traversal, AttrContainer const* container,
                  AttrContainer const* counterpart = nullptr)
        : key_(traversal, container, counterpart), outer_(innermost()) {
        std::size_t steps = 0;
        for (TraversalPath const* one = outer_; one && steps < maxSearched; one = one->outer_, ++steps)
            if (one->key_ == key_ && one->isEntered_) {
                isEntered_ = false;
                break;
            }
        if (isEntered_ && steps == maxSearched) {
            // The way up is long: what lies on it is found through an ordered set.
            isEntered_ = registerDeep();
        }
        depth_ = depthOf(traversal);
        if (isEntered_ && container && ++depth_ > maxDepth) {
            if (isRegistered_)
                deepPaths().erase(key_);
            throw std::length_error("the containers of a tree nest too deep");
        }
        innermost() = this;
    }
    ~TraversalPath() {
        innermost() = outer_;
        if (isRegistered_)
            deepPaths().erase(key_);
    }
    TraversalPath(TraversalPath const&) = delete;
    TraversalPath& operator=(TraversalPath const&) = delete;

    /// False when the container is on the path already and must not be entered.
    bool isEntered() const { return isEntered_; }
    /// How many containers the innermost traversal of this thread has entered and not left, if it is this
    /// one.
    static std::size_t depthOf(void const* traversal) {
        auto const* const path = innermost();
        return path && std::get<0>(path->key_) == traversal ? path->depth_ : 0;
    }

private:
    using Key = std::tuple<void const*, AttrContainer const*, AttrContainer const*>;

    static constexpr std::size_t maxSearched = 48;

    static TraversalPath*& innermost() {
        static constinit thread_local TraversalPath* path = nullptr;
        return path;
    }
    static std::set<Key>& deepPaths() { return PerThread<std::set<Key>>::get(); }

    bool registerDeep() {
        // Frames that were entered before the way got long are not in the set yet: they enter when first
        // passed.
        for (TraversalPath* one = outer_; one && !one->isRegistered_; one = one->outer_)
            if (one->isEntered_)
                one->isRegistered_ = deepPaths().insert(one->key_).second;
        isRegistered_ = deepPaths().insert(key_).second;
        return isRegistered_;
    }

    Key key_;
    TraversalPath* outer_;
    std::size_t depth_ = 0;
    bool isEntered_ = true;
    bool isRegistered_ = false;
};

} // namespace Zorvan::AttributeContainer
