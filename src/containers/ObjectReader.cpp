// SPDX-License-Identifier: MIT
#include "containers/ContainerAccess.h"
#include "containers/ContainerReader.h"
#include "foundation/MakeError.h"

#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/FieldFactory.h>
#include <AttributeContainer/ReferenceDictionary.h>
#include <ErrorHandling/Logger.h>

#include <istream>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "Object";
constexpr int flagSkipNameCheck = 4;
constexpr int traceLevel = 8;

using Access = ModelInFormatAccess;

/// Documents of an older version name the class of binary objects by its first name.
constexpr char oldBinaryClass[] = "GenericBinaryObject";
constexpr char newBinaryClass[] = "GenericBinaryObjectV2";

/// Reads an object: its container part and its children.
class ObjectReader {
public:
    ObjectReader(Object& object, std::istream& in, std::shared_ptr<ReadContextBase const> const& context)
        : object_(object), in_(in), context_(context), imf_(in), reading_(in, object) {
        Access::setFormat(imf_, context->getFormat());
    }

    [[nodiscard]] Result read();

private:
    [[nodiscard]] Result readBlock();
    [[nodiscard]] bool readEntry(std::string_view keyword);
    [[nodiscard]] bool readContainerPart();
    [[nodiscard]] bool readChildBlock();
    [[nodiscard]] bool note(Result result);
    [[nodiscard]] bool endsProperly();

    Object& object_;
    std::istream& in_;
    std::shared_ptr<ReadContextBase const> const& context_;
    ModelInFormat imf_;
    ReadingScope reading_;
    ReadOutcome outcome_;
    Result fatal_;
    bool hasOpenedPart_ = false;
    bool hasReadBlock_ = false;
};

Result ObjectReader::read() {
    auto const self = object_.shared_from_this();
    Result result = readBlock();
    reading_.finish();
    if (ReadOutcome::endsRead(result))
        ModelInFormat::cleanPropagateKeyword();
    else
        Access::propagateBlockEnd(imf_);
    return result;
}

Result ObjectReader::readBlock() {
    if (reading_.isTooDeep())
        return ContainerReader::tooDeep(sourceName, __LINE__, in_);
    std::string_view keyword;
    while (Access::current(imf_, keyword) && !Access::isBlockEnd(imf_)) {
        if (!readEntry(keyword))
            return std::move(fatal_);
    }
    if (!endsProperly())
        return readFailure(sourceName, __LINE__, in_, "The document holds no container");
    return outcome_.finish(sourceName, 682, ObjectContentUnknown);
}

bool ObjectReader::endsProperly() {
    if (Access::isBlockEnd(imf_))
        return !in_.bad();
    if (in_.bad() || in_.fail() || Access::wordLost(imf_) || Access::voxaOpen(imf_))
        return false;
    return reading_.isFirstOnStream() && hasReadBlock_;
}

bool ObjectReader::note(Result result) {
    if (ReadOutcome::endsRead(result)) {
        ModelInFormat::cleanPropagateKeyword();
        fatal_ = std::move(result);
        return false;
    }
    outcome_.note(std::move(result));
    return true;
}

bool ObjectReader::readEntry(std::string_view keyword) {
    bool const isKeyword = !Access::keywordQuoted(imf_);
    if (isKeyword && keyword == "Object") {
        imf_.nextKeyword();
        return true;
    }
    if (isKeyword && keyword == "Child")
        return readChildBlock();
    if (!hasOpenedPart_ &&
        (ContainerReader::isOpener(imf_, keyword) || ContainerReader::isEntry(imf_, keyword)))
        return readContainerPart();
    outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, keyword, object_.getClassName());
    ContainerReader::passUnknown(imf_, context_->getFormat(), hasReadBlock_);
    return true;
}

bool ObjectReader::readContainerPart() {
    hasReadBlock_ = true;
    Result result = object_.AttrContainer::readFrom(in_, context_);
    if (!note(std::move(result)))
        return false;
    if (ReadingScope::wasOpened()) {
        hasOpenedPart_ = true;
        imf_.nextKeyword();
    }
    return true;
}

bool ObjectReader::readChildBlock() {
    hasReadBlock_ = true;
    if (!ContainerReader::opensBlock(imf_, in_)) {
        outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, "Child", object_.getClassName());
        return true;
    }
    if (!note(ContainerAccess::readChild(object_, in_, context_)))
        return false;
    imf_.nextKeyword(); // The propagated "}".
    imf_.nextKeyword();
    return true;
}

/// Reads the content of one "Child" block.
class ChildReader {
public:
    ChildReader(Object& parent, std::istream& in, std::shared_ptr<ReadContextBase const> const& context)
        : parent_(parent), in_(in), context_(context), imf_(in) {
        Access::setFormat(imf_, context->getFormat());
    }

    [[nodiscard]] Result read();

private:
    [[nodiscard]] EntryStep readEntry(std::string_view keyword);
    [[nodiscard]] bool readContent();
    void makeChild();
    void readVersionNumber(bool isMajor);
    void addReference();
    void noteUnknownClass(Result cause);
    void addToParent(std::shared_ptr<Object> const& child);
    void trace(int line, char const* before, char const* behind) const;

    Object& parent_;
    std::istream& in_;
    std::shared_ptr<ReadContextBase const> const& context_;
    ModelInFormat imf_;
    ReadOutcome outcome_;
    Result fatal_;
    std::string className_;
    std::string name_;
    std::shared_ptr<Object> child_;
    std::uint64_t instanceId_ = 0;
    bool hasInstanceId_ = false;
    bool isFallback_ = false;
    bool hasContent_ = false;
    bool isReference_ = false;
};

Result ChildReader::read() {
    ModelFormat::Format const format = context_->getFormat();
    bool const isNamed = ContainerReader::readClassLine(imf_, in_, format, className_, name_);
    std::string_view keyword;
    if (!isNamed) {
        outcome_.note(atOffset(addInfo(makeError(sourceName, __LINE__, UnknownKeyword), "Description",
                                       "A child without class and name"),
                               in_));
        while (Access::current(imf_, keyword) && !Access::isBlockEnd(imf_))
            Access::skipEntry(imf_);
    }
    while (Access::current(imf_, keyword) && !Access::isBlockEnd(imf_)) {
        EntryStep const step = readEntry(keyword);
        if (step == EntryStep::Fail || (step == EntryStep::Content && !readContent()))
            return std::move(fatal_);
    }
    if (!Access::isBlockEnd(imf_))
        return readFailure(sourceName, __LINE__, in_, "The block is not closed");
    if (isNamed && !isReference_) {
        if (!child_)
            makeChild();
        if (isFallback_ && !hasContent_)
            noteUnknownClass(nullptr);
        addToParent(child_);
    }
    if (Access::isPropagated())
        ModelInFormat::cleanPropagateKeyword();
    Access::propagateBlockEnd(imf_);
    return outcome_.finish(sourceName, __LINE__, UnknownContent);
}

EntryStep ChildReader::readEntry(std::string_view keyword) {
    ModelFormat::Format const format = context_->getFormat();
    bool const isKeyword = !Access::keywordQuoted(imf_);
    if (isKeyword && !child_ && !isReference_ && keyword == "InstanceID") {
        instanceId_ = DataInFormat<std::uint64_t>(in_, format).take();
        hasInstanceId_ = true;
    } else if (isKeyword && !child_ && !isReference_ && keyword == "ReferenceToShared") {
        addReference();
    } else if (hasContent_ || isReference_) {
        outcome_.note(
            atOffset(addInfo(makeError(sourceName, __LINE__, ContentSkipped), "Description",
                             "Unknown Key: " + std::string(keyword) + " Unknown type: " + className_),
                     in_));
        Access::skipEntry(imf_);
        return EntryStep::GoOn;
    } else {
        if (!child_)
            makeChild();
        bool const isMajor = keyword == "MajorVersion";
        // A placeholder keeps these with the rest of its content.
        if (isFallback_ || !isKeyword || (!isMajor && keyword != "MinorVersion"))
            return EntryStep::Content;
        readVersionNumber(isMajor);
    }
    if (in_.fail()) {
        fatal_ = readFailure(sourceName, __LINE__, in_, "The entry's number cannot be read");
        return EntryStep::Fail;
    }
    imf_.nextKeyword();
    return EntryStep::GoOn;
}

void ChildReader::readVersionNumber(bool isMajor) {
    auto const number = DataInFormat<unsigned short>(in_, context_->getFormat()).take();
    ClassVersion stored = child_->getStoredClassVersion();
    (isMajor ? stored.major : stored.minor) = number;
    child_->setClassVersion(stored);
}

void ChildReader::addReference() {
    isReference_ = true;
    auto* dictionary = context_->getReferenceDictionary();
    if (!dictionary || !hasInstanceId_) {
        ReadingScope::noteDroppedReference();
        outcome_.note(atOffset(makeError(sourceName, __LINE__, TargetMissing), in_));
        return;
    }
    auto const shared = std::dynamic_pointer_cast<Object>(dictionary->resolveReference(instanceId_));
    if (!shared || !parent_.addChild(shared, flagSkipNameCheck))
        outcome_.note(atOffset(makeError(sourceName, 496, ContentSkipped), in_));
}

void ChildReader::makeChild() {
    std::string const& wanted = className_ == oldBinaryClass ? newBinaryClass : className_;
    child_ = FieldFactory::the()->createObject(wanted);
    if (!child_)
        child_ = std::dynamic_pointer_cast<Object>(context_->createObject(wanted));
    if (!child_) {
        auto const fallback = FallbackObject::create();
        fallback->setFallbackClassName(className_);
        child_ = fallback;
        isFallback_ = true;
    }
    // The content usually says the name too; a placeholder may keep it as text.
    {
        BlockObserver const unasked;
        child_->name(name_);
    }
    if (hasInstanceId_)
        if (auto* dictionary = context_->getReferenceDictionary())
            dictionary->registerReference(instanceId_, child_);
}

void ChildReader::trace(int line, char const* before, char const* behind) const {
    // This is once for every object, and the logger alone knows whether anybody wants it.
    auto* const reading = ReadingScope::of(parent_);
    std::string message = reading ? reading->takeText() : std::string();
    message.append(before).append(name_).append(" of type ").append(className_).append(behind);
    ErrorHandling::Logger::appendLogMsgExt(message, traceLevel, sourceName, line, nullptr);
    if (reading)
        reading->giveBack(std::move(message));
}

bool ChildReader::readContent() {
    hasContent_ = true;
    trace(554, "Object::readChild - ", " ...");
    Result result = child_->readFrom(in_, context_);
    if (ReadOutcome::endsRead(result)) {
        ModelInFormat::cleanPropagateKeyword();
        fatal_ = std::move(result);
        if (fatal_->getCode() == ObjectContentUnknown)
            addToParent(child_); // It was read to its end, and is worth having.
        return false;
    }
    imf_.nextKeyword(); // The propagated "}", taken before anything foreign runs.
    trace(616, "... Object::readChild - ", " done");
    if (isFallback_)
        noteUnknownClass(std::move(result));
    else
        outcome_.note(std::move(result));
    return true;
}

void ChildReader::noteUnknownClass(Result cause) {
    auto error =
        addInfo(makeError(sourceName, __LINE__, UnknownClass), "Description", "Unknown type: " + className_);
    if (cause)
        error->addNested(std::shared_ptr<ErrorHandling::ErrorBase>(std::move(cause)));
    outcome_.note(atOffset(std::move(error), in_));
}

void ChildReader::addToParent(std::shared_ptr<Object> const& child) {
    if (!parent_.addChild(child, flagSkipNameCheck))
        outcome_.note(atOffset(addInfo(makeError(sourceName, __LINE__, ContentSkipped), "Description",
                                       "The child \"" + name_ + "\" was not accepted"),
                               in_));
}

} // namespace

Result Object::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    return ObjectReader(*this, in, context).read();
}

Result Object::readChild(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    return ChildReader(*this, in, context).read();
}

} // namespace Zorvan::AttributeContainer
