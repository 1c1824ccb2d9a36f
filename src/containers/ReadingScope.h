// SPDX-License-Identifier: MIT
#pragma once

#include "observation/LinkReading.h"

#include <AttributeContainer/WtAttrContainer.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Zorvan::AttributeContainer {

/// How deep the containers of a document may nest. Reading and writing recurse once for each level; the limit
/// keeps them within a stack of 1 MiB.
constexpr int maxContainerDepth = 256;

/// One running `readFrom` of a container, and what it has done so far.
class ReadingScope {
public:
    ReadingScope(std::istream& in, AttrContainer& container);
    ~ReadingScope();
    ReadingScope(ReadingScope const&) = delete;
    ReadingScope& operator=(ReadingScope const&) = delete;

    /// The outermost read of the document: what it does not find is not there.
    bool isOutermost() const { return isOutermost_; }
    /// The first read of its stream: the end of the input ends it. True too for kept text that is read again.
    bool isFirstOnStream() const { return isFirstOnStream_; }
    /// The container part of an object, or of a placeholder, whose own read encloses this one and judges how
    /// the input ends.
    bool isPartOfObject() const {
        return enclosing_ && enclosing_->in_ == in_ && &enclosing_->container_ == &container_;
    }
    /// The document nests deeper than it may.
    bool isTooDeep() const { return depth_ > maxContainerDepth; }

    /// The innermost read, when it is one of this container; null otherwise.
    static ReadingScope* of(AttrContainer const& container);

    /// In the outermost read, activates the links of everything that was read. Called at its end, good or
    /// bad, when nothing is propagated: it calls foreign code.
    void finish();

    // Members that this read has filled; a second one of the same name goes elsewhere.
    bool isAttributeFilled(std::uint64_t token) const { return isSet(state_.filledAttributes, token); }
    void setAttributeFilled(std::uint64_t token) { set(state_.filledAttributes, token); }
    bool isFieldFilled(std::uint64_t token) const {
        return token >= state_.numFieldsBefore || isSet(state_.filledFields, token);
    }
    void setFieldFilled(std::uint64_t token) { set(state_.filledFields, token); }
    /// The slots that were there before the read; others are its own.
    std::uint64_t numFieldsBefore() const { return state_.numFieldsBefore; }
    /// Where the search for the next slot of a name goes on.
    std::uint64_t& nextSlot(std::string const& name) { return state_.nextSlots[name]; }

    /// The container part that was read last on this thread had an "AttrContainer" opener, so that its "}" is
    /// its own.
    static bool wasOpened();
    static void setWasOpened(bool wasOpened);

    /// References to shared instances that this thread's reads have passed over because there was no
    /// dictionary, or no id, to resolve them with: a count that only grows.
    static std::uint64_t droppedReferences();
    static void noteDroppedReference();

    /// Kept text that is read again, as a part of the document that is being read.
    class EmbeddedStream {
    public:
        explicit EmbeddedStream(std::istream& in);
        ~EmbeddedStream();
        EmbeddedStream(EmbeddedStream const&) = delete;
        EmbeddedStream& operator=(EmbeddedStream const&) = delete;

    private:
        std::istream const* previous_;
    };

private:
    struct State {
        std::uint64_t numFieldsBefore = 0;
        std::vector<bool> filledAttributes;
        std::vector<bool> filledFields;
        std::unordered_map<std::string, std::uint64_t> nextSlots;
    };

    static bool isSet(std::vector<bool> const& bits, std::uint64_t index) {
        return index < bits.size() && bits[index];
    }
    static void set(std::vector<bool>& bits, std::uint64_t index) {
        if (index >= bits.size())
            bits.resize(index + 1 + index / 2);
        bits[index] = true;
    }

    std::istream const* in_;
    AttrContainer& container_;
    ReadingScope* enclosing_;
    bool isFirstOnStream_;
    bool isOutermost_;
    int depth_;
    int numExceptions_;
    std::unique_ptr<State> ownState_; ///< On the heap: documents nest, and the stack is small.
    State& state_;                    ///< The enclosing read's when that is one of the same container.
    LinkReadingScope links_;
};

} // namespace Zorvan::AttributeContainer
