// SPDX-License-Identifier: MIT
#pragma once

#include "observation/LinkReading.h"

#include <AttributeContainer/AttrType.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <array>
#include <cstddef>
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
    bool isAttributeFilled(std::uint64_t token) const { return state_.filledAttributes.contains(token); }
    void setAttributeFilled(std::uint64_t token) { state_.filledAttributes.insert(token); }
    bool isFieldFilled(std::uint64_t token) const {
        return token >= state_.numFieldsBefore || state_.filledFields.contains(token);
    }
    void setFieldFilled(std::uint64_t token) { state_.filledFields.insert(token); }
    /// The slots that were there before the read; others are its own.
    std::uint64_t numFieldsBefore() const { return state_.numFieldsBefore; }
    /// Where the search for the next slot of a name goes on.
    std::uint64_t& nextSlot(std::string const& name) { return state_.nextSlots[name]; }

    /// Attributes that values are read into on their way to those of a container, by their types; null where
    /// there is none. One is taken out while it is in use, and put back when nobody has heard of it.
    std::shared_ptr<Attribute>& spare(AttrType type);

    /// How the block of an attribute began, up to behind its name, and what that says.
    struct Head {
        std::string text;
        std::string name;
        AttrType type = AttrTypeUnknown;
    };
    /// How the `index`th attribute of the container that was read before began: documents repeat themselves,
    /// and what stands there again needs not be taken apart again. Null for more attributes than most
    /// containers have.
    Head* head(std::size_t index);

    /// An empty text that mostly has room already, for messages that nearly nobody wants. Give it back.
    std::string takeText();
    void giveBack(std::string&& text);

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
    /// A set of tokens. Those of most containers need no memory.
    class Tokens {
    public:
        bool contains(std::uint64_t token) const {
            if (token < numLow)
                return (low_ >> token & 1) != 0;
            return token - numLow < high_.size() && high_[token - numLow];
        }
        void insert(std::uint64_t token) {
            if (token < numLow) {
                low_ |= std::uint64_t{1} << token;
                return;
            }
            std::uint64_t const index = token - numLow;
            if (index >= high_.size())
                high_.resize(index + 1 + index / 2);
            high_[index] = true;
        }

    private:
        static constexpr std::uint64_t numLow = 64;

        std::uint64_t low_ = 0;
        std::vector<bool> high_;
    };

    struct State {
        std::uint64_t numFieldsBefore = 0;
        Tokens filledAttributes;
        Tokens filledFields;
        std::unordered_map<std::string, std::uint64_t> nextSlots;
    };

    /// What is used again by reads that follow; nothing that a document could make grow.
    struct Kept {
        std::array<std::shared_ptr<Attribute>, AttrTypeJsonValue + 1> spares; ///< One for each type number.
        std::array<Head, 24> heads;
        std::string text;
    };
    Kept& kept();

    std::istream const* in_;
    AttrContainer& container_;
    ReadingScope* enclosing_;
    bool isFirstOnStream_;
    bool isOutermost_;
    int depth_;
    int numExceptions_;
    ReadingScope* first_;             ///< The thread's outermost read.
    std::unique_ptr<State> ownState_; ///< On the heap: documents nest, and the stack is small.
    std::unique_ptr<Kept> ownKept_;   ///< Of the thread's outermost read.
    State& state_;                    ///< The enclosing read's when that is one of the same container.
    LinkReadingScope links_;
};

} // namespace Zorvan::AttributeContainer
