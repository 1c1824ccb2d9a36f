// SPDX-License-Identifier: MIT
#include "containers/ReadingScope.h"

#include <AttributeContainer/ModelInFormat.h>
#include <AttributeContainer/Object.h>

#include <exception>
#include <istream>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constinit thread_local ReadingScope* innermost = nullptr;
constinit thread_local std::istream const* embedded = nullptr;
constinit thread_local bool lastPartWasOpened = false;
constinit thread_local std::uint64_t numDroppedReferences = 0;

} // namespace

ReadingScope::ReadingScope(std::istream& in, AttrContainer& container)
    : in_(&in), container_(container), enclosing_(innermost),
      isFirstOnStream_(!enclosing_ || enclosing_->in_ != &in),
      isOutermost_(isFirstOnStream_ && embedded != &in),
      // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): what is embedded is so in an enclosing one
      depth_(isOutermost_ ? 1 : enclosing_->depth_ + (&enclosing_->container_ == &container ? 0 : 1)),
      numExceptions_(std::uncaught_exceptions()), first_(enclosing_ ? enclosing_->first_ : this),
      ownState_(isPartOfObject() ? nullptr : std::make_unique<State>()),
      state_(ownState_ ? *ownState_ : enclosing_->state_), links_(isOutermost_) {
    if (ownState_)
        ownState_->numFieldsBefore = container.getNumFields();
    innermost = this;
}

ReadingScope::~ReadingScope() {
    innermost = enclosing_;
    // A reader that an exception left may have propagated what nobody will take.
    if (std::uncaught_exceptions() > numExceptions_)
        ModelInFormat::cleanPropagateKeyword();
}

ReadingScope* ReadingScope::of(AttrContainer const& container) {
    return innermost && &innermost->container_ == &container ? innermost : nullptr;
}

void ReadingScope::finish() {
    if (!isOutermost_)
        return;
    std::shared_ptr<Observer> root;
    if (auto* object = dynamic_cast<Object*>(&container_))
        root = object->findRoot();
    else
        root = std::static_pointer_cast<AttrContainer>(container_.shared_from_this());
    links_.finish(root);
}

ReadingScope::Kept& ReadingScope::kept() {
    auto& kept = first_->ownKept_;
    if (!kept)
        kept = std::make_unique<Kept>();
    return *kept;
}

std::shared_ptr<Attribute>& ReadingScope::spare(AttrType type) { return kept().spares[type]; }

ReadingScope::Head* ReadingScope::head(std::size_t index) {
    auto& heads = kept().heads;
    return index < heads.size() ? &heads[index] : nullptr;
}

std::string ReadingScope::takeText() { return std::exchange(kept().text, std::string()); }

void ReadingScope::giveBack(std::string&& text) {
    constexpr std::size_t maxKept = 1024;
    if (text.capacity() > maxKept)
        return;
    text.clear();
    kept().text = std::move(text);
}

bool ReadingScope::wasOpened() { return lastPartWasOpened; }

void ReadingScope::setWasOpened(bool wasOpened) { lastPartWasOpened = wasOpened; }

std::uint64_t ReadingScope::droppedReferences() { return numDroppedReferences; }

void ReadingScope::noteDroppedReference() { ++numDroppedReferences; }

ReadingScope::EmbeddedStream::EmbeddedStream(std::istream& in) : previous_(embedded) { embedded = &in; }

ReadingScope::EmbeddedStream::~EmbeddedStream() { embedded = previous_; }

} // namespace Zorvan::AttributeContainer
