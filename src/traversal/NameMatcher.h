// SPDX-License-Identifier: MIT
#pragma once

#include "containers/ContainerAccess.h"
#include "foundation/KeyTableGuess.h"

#include <AttributeContainer/WtAttrContainer.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

/// Asks for the memory of an object that is used soon, and of the counts of its owners in front of it.
inline void fetchObject(void const* object, std::size_t size) {
    if (object == nullptr)
        return;
    constexpr std::ptrdiff_t lineSize = 64, countsSize = 16;
    auto const* const begin = static_cast<char const*>(object) - countsSize;
    auto const* const last = static_cast<char const*>(object) + size - 1;
    for (auto const* line = begin; line < last; line += lineSize)
        __builtin_prefetch(line);
    __builtin_prefetch(last);
}

/// The attributes of a container by position: those of its classes, then custom ones. The lists are read anew
/// each time, since foreign code may change them in between.
class AttributeNames {
public:
    static constexpr std::uint64_t none = DataStructures::KeyTable::noToken;

    explicit AttributeNames(AttrContainer const& container) : container_(container) {}

    /// How many of the first attributes have the same names in two containers, because one class declares
    /// them.
    static std::uint64_t numDeclaredAlike(AttrContainer const& first, AttrContainer const& second) {
        if (typeid(first) != typeid(second))
            return 0;
        return std::min(first.getNumHardCodedAttributes(), second.getNumHardCodedAttributes());
    }

    std::uint64_t numDeclared() const { return ContainerAccess::declared(container_).size(); }
    std::uint64_t size() const { return container_.getNumAttributes(); }

    std::uint64_t tokenOf(std::uint64_t position) const {
        std::uint64_t const declared = numDeclared();
        auto const* custom = ContainerAccess::custom(container_);
        return position < declared || !custom ? position : custom->getFirstToken() + (position - declared);
    }
    /// The attribute at a position; empty behind the end and for types without a class.
    std::shared_ptr<Attribute> const& at(std::uint64_t position) const {
        static std::shared_ptr<Attribute> const& empty = *new std::shared_ptr<Attribute>();
        auto const& declared = ContainerAccess::declared(container_);
        if (position < declared.size())
            return declared[position];
        auto const* custom = ContainerAccess::custom(container_);
        return custom ? custom->getElement(custom->getFirstToken() + (position - declared.size())) : empty;
    }
    /// Empty for an attribute without a name, which takes no part, and where there is none. Valid until the
    /// next call.
    std::string_view nameAt(std::uint64_t position) const {
        if (!at(position))
            return {};
        if (position >= numDeclared()) {
            // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): there are custom ones at this position
            auto const* name = ContainerAccess::custom(container_)->findElementName(tokenOf(position));
            return name ? std::string_view(*name) : std::string_view();
        }
        if (auto const* definition = container_.getAttrDefinition(position))
            return definition->name;
        buffer_ = container_.getAttrName(position).value_or(std::string());
        return buffer_;
    }
    bool isNamed(std::uint64_t position) const { return !nameAt(position).empty(); }

    std::uint64_t find(std::string_view name) const {
        key_ = name;
        std::uint64_t token = container_.getAttrToken(key_);
        std::uint64_t const declared = numDeclared();
        auto const* custom = ContainerAccess::custom(container_);
        if (token < declared && !at(token) && custom)
            token = custom->getToken(key_); // An empty slot does not hide what was added beside it.
        if (token == none)
            return none;
        std::uint64_t position = token;
        if (token >= declared) {
            if (!custom || token < custom->getFirstToken())
                return none;
            position = declared + (token - custom->getFirstToken());
        }
        return at(position) ? position : none;
    }
    /// The names that the container keeps, as opposed to its class; null when there are none.
    DataStructures::KeyTable const* keptNames() const {
        auto const* custom = ContainerAccess::custom(container_);
        return custom ? &ContainerAccess::names(*custom) : nullptr;
    }
    std::string const* keptNameAt(std::uint64_t position) const {
        auto const* custom = ContainerAccess::custom(container_);
        return custom && position >= numDeclared() ? custom->findElementName(tokenOf(position)) : nullptr;
    }
    std::uint64_t positionOfKept(std::uint64_t token) const {
        auto const* custom = ContainerAccess::custom(container_);
        return token == none || !custom || token < custom->getFirstToken()
                   ? none
                   : numDeclared() + (token - custom->getFirstToken());
    }
    /// Asks in steps for the memory of an attribute.
    static constexpr int numFetchSteps = 1;
    void fetchMember(std::uint64_t position, int) const { fetchObject(at(position).get(), 112); }
    /// Whether a name means one attribute only.
    bool hasDistinctNames() const {
        auto const* custom = ContainerAccess::custom(container_);
        if (custom && !custom->hasDistinctNames())
            return false;
        for (std::uint64_t i = 0; i < numDeclared(); ++i)
            if (isNamed(i) &&
                (find(nameAt(i)) != i || (custom && custom->getToken(std::string(nameAt(i))) != none)))
                return false;
        return true;
    }

private:
    AttrContainer const& container_;
    mutable std::string buffer_;
    mutable std::string key_;
};

/// The same for the field slots of a container. A field in a slot without a name goes by its own.
class FieldNames {
public:
    static constexpr std::uint64_t none = DataStructures::KeyTable::noToken;

    explicit FieldNames(AttrContainer const& container) : container_(container) {}

    std::uint64_t size() const { return container_.getNumFields(); }

    std::shared_ptr<AttrContainer> const& at(std::uint64_t slot) const {
        static std::shared_ptr<AttrContainer> const& empty = *new std::shared_ptr<AttrContainer>();
        auto const* fields = ContainerAccess::fields(container_);
        return fields ? fields->getElement(fields->getFirstToken() + slot) : empty;
    }
    std::string_view nameAt(std::uint64_t slot) const {
        auto const* fields = ContainerAccess::fields(container_);
        if (!fields || slot >= fields->size())
            return {};
        std::uint64_t const token = fields->getFirstToken() + slot;
        if (slot < fields->getMinCapacity()) {
            buffer_ = container_.getFieldName(token).value_or(std::string());
            if (!buffer_.empty())
                return buffer_;
        } else if (auto const* name = fields->findElementName(token); name && !name->empty()) {
            return *name;
        }
        buffer_ = at(slot) ? at(slot)->getName() : std::string();
        return buffer_;
    }
    bool isNamed(std::uint64_t slot) const { return slot < size(); }

    std::uint64_t find(std::string_view name) const {
        key_ = name;
        std::uint64_t const token = container_.getFieldToken(key_);
        auto const* fields = ContainerAccess::fields(container_);
        if (token == none || !fields || token < fields->getFirstToken())
            return none;
        std::uint64_t const slot = token - fields->getFirstToken();
        return slot < fields->size() ? slot : none;
    }
    DataStructures::KeyTable const* keptNames() const {
        auto const* fields = ContainerAccess::fields(container_);
        return fields ? &ContainerAccess::names(*fields) : nullptr;
    }
    std::string const* keptNameAt(std::uint64_t slot) const {
        auto const* fields = ContainerAccess::fields(container_);
        return fields && slot >= fields->getMinCapacity()
                   ? fields->findElementName(fields->getFirstToken() + slot)
                   : nullptr;
    }
    std::uint64_t positionOfKept(std::uint64_t token) const {
        auto const* fields = ContainerAccess::fields(container_);
        return token == none || !fields || token < fields->getFirstToken() ? none
                                                                           : token - fields->getFirstToken();
    }
    /// A field, then where its attributes are, then the first of them.
    static constexpr int numFetchSteps = 3;
    void fetchMember(std::uint64_t slot, int step) const {
        auto const* const field = at(slot).get();
        if (!field || step == 0) {
            fetchObject(field, 144);
            return;
        }
        auto const& declared = ContainerAccess::declared(*field);
        if (step == 1)
            __builtin_prefetch(declared.data());
        else if (!declared.empty())
            fetchObject(declared.front().get(), 128);
    }
    bool hasDistinctNames() const {
        auto const* fields = ContainerAccess::fields(container_);
        if (!fields)
            return true;
        if (!fields->hasDistinctNames())
            return false;
        for (std::uint64_t i = 0; i < fields->getMinCapacity(); ++i)
            if (find(nameAt(i)) != i || fields->getToken(std::string(nameAt(i))) != none)
                return false;
        return true;
    }

private:
    AttrContainer const& container_;
    mutable std::string buffer_;
    mutable std::string key_;
};

/// Looks for counterparts ahead in lists that no cache holds. A name takes a step each time when the caller
/// goes on by one member: each step reads what an earlier one has asked the memory for, so that memory and
/// caller work side by side. Foreign code may change both lists meanwhile: these are guesses, to be verified
/// on use.
template <class Names>
class LookAhead {
public:
    static constexpr std::uint64_t none = Names::none;

    /// From the member at `begin` on. `withMembers`: the caller reads the members themselves, not only what
    /// they are called.
    LookAhead(Names const& from, Names const& to, std::uint64_t begin, bool withMembers)
        : from_(from), to_(to), begin_(begin), withMembers_(withMembers) {
        for (std::uint64_t ahead = 0; ahead < reach; ++ahead)
            goOn(static_cast<std::int64_t>(begin + ahead) - static_cast<std::int64_t>(reach));
        next_ = begin;
    }

    /// Shorter lists stay in the cache.
    static bool isWorthwhile(Names const& to) { return to.size() >= 2048; }
    /// The positions are to be passed in their order, from the first one on.
    std::uint64_t guess(std::uint64_t position) {
        for (; next_ <= position; ++next_)
            goOn(static_cast<std::int64_t>(next_));
        return guesses_[position % width].position;
    }

private:
    struct Guess {
        std::uint64_t position = none;
        std::uint32_t hash = 0;
        bool hasHash = false;
    };

    /// Members that the caller passes while the memory answers.
    static constexpr int pause = 4;
    static constexpr int numSteps = 3 + Names::numFetchSteps;
    static constexpr std::uint64_t reach = pause * numSteps;
    static constexpr std::uint64_t width = 32;
    static_assert(reach < width);

    /// Moves the names on that are ahead of a position, which is negative while the first ones come in.
    void goOn(std::int64_t position) {
        auto const* const table = to_.keptNames();
        int ahead = pause * numSteps;
        auto const withNext = [&](auto&& step) {
            std::int64_t const there = position + ahead;
            ahead -= pause;
            if (there >= static_cast<std::int64_t>(begin_))
                step(static_cast<std::uint64_t>(there), guesses_[static_cast<std::uint64_t>(there) % width]);
        };
        withNext([&](std::uint64_t from, Guess& guess) {
            auto const* const name = table ? from_.keptNameAt(from) : nullptr;
            guess = {none, 0, name != nullptr};
            if (!name)
                return;
            DataStructures::KeyTableGuess const names(*table);
            guess.hash = names.hashOf(*name);
            names.fetchSlot(guess.hash);
        });
        withNext([&](std::uint64_t, Guess const& guess) {
            if (table && guess.hasHash)
                DataStructures::KeyTableGuess(*table).fetchEntry(guess.hash);
        });
        withNext([&](std::uint64_t, Guess& guess) {
            if (!table || !guess.hasHash)
                return;
            guess.position = to_.positionOfKept(DataStructures::KeyTableGuess(*table).token(guess.hash));
            __builtin_prefetch(&to_.at(guess.position));
        });
        for (int fetchStep = 0; withMembers_ && fetchStep < Names::numFetchSteps; ++fetchStep)
            withNext([&](std::uint64_t from, Guess const& guess) {
                from_.fetchMember(from, fetchStep);
                if (guess.position != none)
                    to_.fetchMember(guess.position, fetchStep);
            });
    }

    Names const& from_;
    Names const& to_;
    std::uint64_t begin_;
    bool withMembers_;
    std::uint64_t next_ = 0;
    std::array<Guess, width> guesses_{};
};

/// Finds the counterparts of the members of one container in another one: those of the same name, the n-th of
/// several with one name for the n-th. The members of the first are to be passed in their order, each once.
///
/// As long as both lists run side by side nothing is looked up or stored. From the first difference on names
/// are looked up, and an index of the other list is made only where a name is there more than once.
template <class Names>
class NameMatcher {
public:
    static constexpr std::uint64_t none = Names::none;

    /// `withMembers`: the caller reads the members themselves, not only what they are called.
    NameMatcher(Names const& from, Names const& to, bool withMembers = true)
        : from_(from), to_(to), withMembers_(withMembers) {}

    /// The position of the counterpart, or `none`.
    std::uint64_t match(std::uint64_t position, std::string_view name) {
        if (isAligned_) {
            if (to_.isNamed(position) && to_.nameAt(position) == name) {
                alignedEnd_ = position + 1;
                return position;
            }
            std::string const kept(name); // The names are read anew, which the view may not outlive.
            leaveAlignment(position);
            return lookUp(position, kept);
        }
        return lookUp(position, name);
    }
    /// The same where the caller knows that both lists have the same names up to and with the position.
    void matchSame(std::uint64_t position) { alignedEnd_ = position + 1; }
    /// The member has no name and no counterpart.
    void skip(std::uint64_t position) {
        if (!isAligned_)
            return;
        if (to_.isNamed(position))
            leaveAlignment(position);
        else
            alignedEnd_ = position + 1;
    }

    bool isAligned() const { return isAligned_; }
    /// Up to here every member of the other list is matched, or has no name.
    std::uint64_t alignedEnd() const { return alignedEnd_; }
    bool isMatched(std::uint64_t position) const {
        return position < alignedEnd_ || (position < matched_.size() && matched_[position]);
    }
    /// The member passed last is not the first of its name in its list.
    bool isFurther() const { return isFurther_; }

private:
    struct Group {
        std::vector<std::uint64_t> positions; ///< In the other list.
        std::size_t numPassed = 0;            ///< Members of that name that were passed.
    };
    using Groups = std::unordered_map<std::string, Group>;

    std::uint64_t lookUp(std::uint64_t position, std::string_view name) {
        std::uint64_t const found = groups_ ? nextOf(name) : find(position, name);
        if (found != none) {
            if (found >= matched_.size())
                matched_.resize(to_.size());
            matched_[found] = true;
            lastFound_ = found;
        }
        return found;
    }
    void leaveAlignment(std::uint64_t position) {
        isAligned_ = false;
        lastFound_ = alignedEnd_;
        if (from_.hasDistinctNames() && to_.hasDistinctNames()) {
            if (LookAhead<Names>::isWorthwhile(to_))
                ahead_ = std::make_unique<LookAhead<Names>>(from_, to_, position, withMembers_);
            return;
        }
        groups_ = std::make_unique<Groups>();
        for (std::uint64_t i = 0; i < to_.size(); ++i)
            if (to_.isNamed(i))
                (*groups_)[std::string(to_.nameAt(i))].positions.push_back(i);
        for (std::uint64_t i = 0; i < alignedEnd_; ++i)
            if (from_.isNamed(i))
                ++(*groups_)[std::string(from_.nameAt(i))].numPassed;
    }
    /// Beside the last counterpart first: lists that differ by a few members, or by their direction, need
    /// hardly any look-up.
    std::uint64_t find(std::uint64_t position, std::string_view name) {
        auto const isAt = [&](std::uint64_t place) {
            return to_.isNamed(place) && to_.nameAt(place) == name;
        };
        if (ahead_) {
            if (std::uint64_t const guess = ahead_->guess(position); guess != none && isAt(guess))
                return guess;
        } else {
            for (std::uint64_t const beside : {lastFound_ + 1, lastFound_ - 1})
                if (isAt(beside))
                    return beside;
        }
        return to_.find(name);
    }
    std::uint64_t nextOf(std::string_view name) {
        Group& group = (*groups_)[std::string(name)];
        std::size_t const n = group.numPassed++;
        isFurther_ = n > 0;
        if (n == 0 && group.positions.empty())
            return to_.find(name); // A class may accept names that it does not give.
        if (n >= group.positions.size())
            return none;
        std::uint64_t const found = group.positions[n];
        return to_.nameAt(found) == name ? found : to_.find(name);
    }

    Names const& from_;
    Names const& to_;
    bool withMembers_;
    bool isAligned_ = true;
    bool isFurther_ = false;
    std::uint64_t alignedEnd_ = 0;
    std::uint64_t lastFound_ = 0;
    std::vector<bool> matched_;
    std::unique_ptr<Groups> groups_;
    std::unique_ptr<LookAhead<Names>> ahead_;
};

} // namespace Zorvan::AttributeContainer
