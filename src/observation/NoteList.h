// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ObserverInfo.h>

#include <memory>
#include <typeindex>
#include <utility>

namespace Zorvan::AttributeContainer {

/// Notes with their types, in the order in which they were attached. They are moved from one list to another
/// without need of memory: what ends a change must not fail. A few at most: the end is found by going there.
/// Most changes of which observers are asked move one, which is why all of it is inline.
class NoteList {
public:
    struct Node;
    using Link = std::unique_ptr<Node>;
    struct Node {
        explicit Node(std::type_index const& itsType) : type(itsType) {}

        std::type_index type;
        std::shared_ptr<ObserverInfo> info;
        Link next;
    };

    NoteList() = default;
    NoteList(NoteList&&) = default;
    NoteList& operator=(NoteList&& other) noexcept {
        // What went before goes last: foreign code may go with notes.
        NoteList const released(std::exchange(first_, std::exchange(other.first_, nullptr)));
        return *this;
    }
    ~NoteList() {
        if (first_ != nullptr)
            clear();
    }

    bool empty() const noexcept { return first_ == nullptr; }
    Link& first() noexcept { return first_; }
    Link const& first() const noexcept { return first_; }

    /// The link to the first note that fulfils a condition; an empty one when there is none.
    template <class Condition>
    Link& findIf(Condition const& condition) {
        Link* link = &first_;
        while (*link != nullptr && !condition(std::as_const(**link)))
            link = &(*link)->next;
        return *link;
    }
    Link& find(std::type_index const& type) {
        return findIf([&](Node const& node) { return node.type == type; });
    }

    /// Takes a node out of the list of which the link is a part.
    static Link take(Link& link) noexcept {
        Link node = std::move(link);
        link = std::move(node->next);
        return node;
    }
    void append(Link node) noexcept { end() = std::move(node); }
    void append(NoteList& other) noexcept { end() = std::move(other.first_); }
    void prepend(Link node) noexcept {
        node->next = std::move(first_);
        first_ = std::move(node);
    }

private:
    explicit NoteList(Link first) : first_(std::move(first)) {}

    [[gnu::noinline]] void clear() noexcept {
        while (first_ != nullptr)
            take(first_);
    }

    Link& end() noexcept {
        return findIf([](Node const&) { return false; });
    }

    Link first_;
};

} // namespace Zorvan::AttributeContainer
