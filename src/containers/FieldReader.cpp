// SPDX-License-Identifier: MIT
#include "containers/ContainerAccess.h"
#include "containers/ContainerReader.h"
#include "foundation/MakeError.h"

#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/FieldFactory.h>
#include <AttributeContainer/ReferenceDictionary.h>
#include <AttributeContainer/UnknownAttrContainer.h>
#include <ErrorHandling/Logger.h>

#include <algorithm>
#include <istream>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "WtAttrContainer";
constexpr char functionName[] = "Zorvan::AttributeContainer::AttrContainer::readField";
constexpr int modeSkipNameCheck = 4;

using Access = ModelInFormatAccess;
using DataStructures::KeyTable;

/// Reads the content of one "SubContainer" block: the class line, what says where the field belongs, its
/// content.
class FieldReader {
public:
    FieldReader(AttrContainer& container, std::istream& in,
                std::shared_ptr<ReadContextBase const> const& context)
        : container_(container), in_(in), context_(context), imf_(in) {
        Access::setFormat(imf_, context->getFormat());
    }

    [[nodiscard]] Result read();

private:
    [[nodiscard]] EntryStep readEntry(std::string_view keyword);
    [[nodiscard]] bool readContent(std::string_view keyword);
    [[nodiscard]] bool prepareField(std::string_view keyword);
    void passOver(Result cause);
    void registerInstance();
    [[nodiscard]] bool failedOnStream();
    void findSlot();
    void placeReference();
    void createField();
    void store();
    void noteSkipped(int line, std::string description);

    AttrContainer& container_;
    std::istream& in_;
    std::shared_ptr<ReadContextBase const> const& context_;
    ModelInFormat imf_;
    ReadOutcome outcome_;
    Result fatal_;
    std::string className_;
    std::string fieldName_;
    std::uint64_t token_ = KeyTable::noToken;
    std::shared_ptr<AttrContainer> field_;
    std::uint64_t instanceId_ = 0;
    bool hasInstanceId_ = false;
    bool isNew_ = false;     ///< The field was made here and is to be put into the container.
    bool isSettled_ = false; ///< Content was read, or a reference was met.
};

Result FieldReader::read() {
    ModelFormat::Format const format = context_->getFormat();
    if (ContainerReader::readClassLine(imf_, in_, format, className_, fieldName_))
        findSlot();
    else
        passOver(addInfo(makeError(sourceName, __LINE__, UnknownKeyword), "Description",
                         "A field without class and name"));
    std::string_view keyword;
    while (Access::current(imf_, keyword) && !Access::isBlockEnd(imf_)) {
        EntryStep const step = readEntry(keyword);
        if (step == EntryStep::Fail || (step == EntryStep::Content && !readContent(keyword)))
            return std::move(fatal_);
    }
    if (!Access::isBlockEnd(imf_))
        return readFailure(sourceName, __LINE__, in_, "The block is not closed");
    // A block with its class line only still makes its field.
    if (!isSettled_ && !readContent(""))
        return std::move(fatal_);
    if (Access::isPropagated())
        ModelInFormat::cleanPropagateKeyword();
    Access::propagateBlockEnd(imf_);
    if (fatal_)
        return std::move(fatal_);
    return outcome_.finish(sourceName, __LINE__, UnknownContent);
}

bool FieldReader::failedOnStream() {
    if (!in_.fail())
        return false;
    fatal_ = readFailure(sourceName, __LINE__, in_, "The entry's number cannot be read");
    return true;
}

void FieldReader::noteSkipped(int line, std::string description) {
    outcome_.note(atOffset(
        addInfo(makeError(sourceName, line, ContentSkipped), "Description", std::move(description)), in_));
}

/// The slot that the name means; when this read of the container has filled it, the next one of that name.
void FieldReader::findSlot() {
    token_ = container_.getFieldToken(fieldName_);
    auto* reading = ReadingScope::of(container_);
    if (token_ == KeyTable::noToken || !reading || !reading->isFieldFilled(token_))
        return;
    std::uint64_t& next = reading->nextSlot(fieldName_);
    next = std::max(next, token_ + 1);
    while (next < reading->numFieldsBefore() &&
           (reading->isFieldFilled(next) || container_.getFieldName(next) != fieldName_))
        ++next;
    token_ = next < reading->numFieldsBefore() ? next : KeyTable::noToken;
}

EntryStep FieldReader::readEntry(std::string_view keyword) {
    ModelFormat::Format const format = context_->getFormat();
    bool const isKeyword = !Access::keywordQuoted(imf_);
    if (isKeyword && !isSettled_ && keyword == "InstanceID") {
        instanceId_ = DataInFormat<std::uint64_t>(in_, format).take();
        hasInstanceId_ = true;
    } else if (isKeyword && !isSettled_ && keyword == "FieldHandle") {
        auto const handle = DataInFormat<SVec2d<int>>(in_, format).take();
        if (auto const named = container_.lookupField(handle).lock()) {
            field_ = named;
            token_ = container_.getFieldToken(*named);
        }
    } else if (isKeyword && !isSettled_ && keyword == "FieldToken") {
        int const slot = DataInFormat<int>(in_, format).take();
        if (slot >= 0 && static_cast<std::uint64_t>(slot) < container_.getNumFields()) {
            token_ = static_cast<std::uint64_t>(slot);
            field_ = nullptr;
        }
    } else if (isKeyword && !isSettled_ && keyword == "ReferenceToShared") {
        placeReference();
    } else if (!isSettled_) {
        return EntryStep::Content;
    } else {
        noteSkipped(__LINE__, "Unknown Key: " + std::string(keyword) + " Unknown type: " + className_);
        Access::skipEntry(imf_);
        return EntryStep::GoOn;
    }
    if (failedOnStream())
        return EntryStep::Fail;
    imf_.nextKeyword();
    return EntryStep::GoOn;
}

void FieldReader::placeReference() {
    isSettled_ = true;
    auto* dictionary = context_->getReferenceDictionary();
    if (!dictionary || !hasInstanceId_) {
        ReadingScope::noteDroppedReference();
        return;
    }
    field_ = dictionary->resolveReference(instanceId_);
    if (!field_) {
        noteSkipped(__LINE__, "The shared instance " + std::to_string(instanceId_) + " was not found");
        return;
    }
    isNew_ = true;
    store();
}

/// Finds or makes the container that takes the content. False when there is none.
bool FieldReader::prepareField(std::string_view keyword) {
    if (!field_ && token_ != KeyTable::noToken)
        field_ = container_.getField(token_).lock();
    if (field_)
        return true;
    createField();
    if (!field_ && context_->areUnknownContainersAccepted()) {
        ErrorHandling::Logger::appendLogMsgExt("Failed to create container of type " + className_ +
                                                   ". Using UnknownAttrContainer instead.",
                                               3, sourceName, 1895, functionName);
        auto const unknown = UnknownAttrContainer::create();
        unknown->setTypeName(className_);
        static_cast<void>(unknown->setName(fieldName_, 0)); // The content usually says it too.
        field_ = unknown;
    }
    if (!field_) {
        passOver(addInfo(makeError(sourceName, 1907, UnknownKeyword), "Description",
                         "Unknown Key: " + std::string(keyword) + " Unknown type: " + className_));
        return false;
    }
    isNew_ = true;
    return true;
}

/// Passes over the rest of the block; the error is handed up when it has ended.
void FieldReader::passOver(Result cause) {
    fatal_ = atOffset(std::move(cause), in_);
    isSettled_ = true;
    std::string_view keyword;
    while (Access::current(imf_, keyword) && !Access::isBlockEnd(imf_))
        Access::skipEntry(imf_);
}

/// Before the content is read, so that a reference to an ancestor resolves.
void FieldReader::registerInstance() {
    if (auto* dictionary = hasInstanceId_ ? context_->getReferenceDictionary() : nullptr)
        dictionary->registerReference(instanceId_, field_);
}

void FieldReader::createField() {
    std::uint64_t token = token_;
    field_ = container_.checkCreateChildField(className_, fieldName_, &token);
    if (!field_)
        field_ = FieldFactory::the()->createField(className_);
    if (!field_)
        field_ = container_.checkCreateDefaultChildField(className_, fieldName_, &token);
    if (!field_)
        field_ = context_->createObject(className_);
    if (field_)
        token_ = token; // A hook may have chosen the slot.
    else
        ErrorHandling::Logger::appendLogMsgExt("Error creating container with typeName " + className_, 3,
                                               sourceName, 1830, functionName);
}

bool FieldReader::readContent(std::string_view keyword) {
    if (!prepareField(keyword))
        return true;
    isSettled_ = true;
    registerInstance();
    // Of what has no content, only a placeholder has to know.
    if (!Access::isBlockEnd(imf_) || dynamic_cast<UnknownAttrContainer*>(field_.get())) {
        ReadingScope::setWasOpened(ContainerReader::isOpener(imf_, keyword));
        Result result = field_->readFrom(in_, context_);
        if (ReadOutcome::endsRead(result)) {
            ModelInFormat::cleanPropagateKeyword();
            fatal_ = std::move(result);
            if (fatal_->getCode() == ObjectContentUnknown)
                store(); // It was read to its end, and is worth having.
            return false;
        }
        outcome_.note(std::move(result));
        // An object, or a placeholder, ends with this block's "}" propagated; a container with its own "}"
        // current, which is this block's when the content had no opener.
        if (Access::isPropagated() || ReadingScope::wasOpened())
            imf_.nextKeyword();
    }
    store();
    return true;
}

void FieldReader::store() {
    auto* reading = ReadingScope::of(container_);
    if (isNew_) {
        bool isStored = false;
        if (token_ != KeyTable::noToken && token_ < container_.getNumFields()) {
            isStored = container_.setField(token_, field_);
        } else {
            token_ = container_.getNumFields();
            isStored = container_.addField(field_, fieldName_, modeSkipNameCheck);
        }
        if (!isStored)
            noteSkipped(__LINE__, "The field \"" + fieldName_ + "\" was not accepted");
    }
    if (reading && token_ != KeyTable::noToken)
        reading->setFieldFilled(token_);
}

} // namespace

Result AttrContainer::readField(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    return FieldReader(*this, in, context).read();
}

} // namespace Zorvan::AttributeContainer
