// SPDX-License-Identifier: MIT
#include <AttributeContainer/FallbackObject.h>

#include "attributes/AttributeAccess.h"
#include "containers/ContainerAccess.h"
#include "containers/ContainerReader.h"
#include "containers/KeptText.h"
#include "foundation/MakeError.h"
#include "observation/ObservationAccess.h"
#include "serialization/MemoryStream.h"
#include "serialization/ReadOutcome.h"

#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/BlockUpdateObservers.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteContextBase.h>

#include <algorithm>
#include <ios>
#include <istream>
#include <ostream>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "FallbackObject";

/// Each placeholder within a placeholder is read once more than the one around it, so that deep ones keep
/// their text.
constexpr int maxParsedPlaceholders = 16;
constinit thread_local int numPlaceholdersBeingParsed = 0;

using Access = ModelInFormatAccess;

class ParsingScope {
public:
    ParsingScope() { ++numPlaceholdersBeingParsed; }
    ~ParsingScope() {
        --numPlaceholdersBeingParsed;
        ModelInFormat::cleanPropagateKeyword();
    }
    ParsingScope(ParsingScope const&) = delete;
    ParsingScope& operator=(ParsingScope const&) = delete;
};

/// Kept text, which tells positions of the document that it was taken from.
class KeptTextBuffer : public MemoryInBuffer {
public:
    KeptTextBuffer(std::string_view text, std::streamoff offset) : MemoryInBuffer(text), offset_(offset) {}

protected:
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction, std::ios_base::openmode) override {
        bool const isKnown = offset_ >= 0 && offset == 0 && direction == std::ios_base::cur;
        return pos_type(isKnown ? offset_ + (gptr() - eback()) : off_type(-1));
    }

private:
    std::streamoff offset_; ///< Of the text's first byte; negative: not known.
};

/// Where the current keyword begins, negative when the stream does not know.
std::streamoff offsetOfKeyword(ModelInFormat const& imf, std::istream& in) {
    std::streamoff const behind = in.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    return behind - static_cast<std::streamoff>(Access::rawKeyword(imf).size());
}

/// Whether a result says that content was lost. A placeholder's own report, inside `UnknownClass`, says the
/// contrary.
bool hasLostContent(ErrorHandling::ErrorBase const& error) {
    auto const* coded = dynamic_cast<Result::element_type const*>(&error);
    ErrorCode const code = coded ? coded->getCode() : StreamFailure;
    if (code == ContentSkipped || code == UnknownContent || code == UnknownKeyword ||
        code == ObjectContentUnknown)
        return true;
    for (auto const& nested : error.getNested()) {
        auto const* cause = dynamic_cast<Result::element_type const*>(nested.get());
        bool const isPlaceholder = code == UnknownClass && cause && cause->getCode() == ContentSkipped &&
                                   cause->getFile() == sourceName;
        if (!isPlaceholder && hasLostContent(*nested))
            return true;
    }
    return false;
}

} // namespace

IFallbackObject::~IFallbackObject() = default;

FallbackObject::FallbackObject(ConstructorProtector const& protector, CreateType type, OptionalSource source)
    : Object(protector, type, source) {}

FallbackObject::~FallbackObject() = default;

std::shared_ptr<FallbackObject> FallbackObject::create(CreateType type, OptionalSource source) {
    auto object = std::make_shared<FallbackObject>(ConstructorProtector(), type, source);
    object->init(type, source);
    return object;
}

std::shared_ptr<AttrContainer> FallbackObject::duplicate(CreateType type) {
    auto copy = create(type, type == CreateType::Blank ? std::nullopt : OptionalSource(*this));
    copy->fallbackClassName_ = fallbackClassName_; // A copy without it could not be written.
    return copy;
}

void FallbackObject::init(CreateType type, OptionalSource source) {
    BlockUpdateObservers const scope(source ? ContainerAccess::shared(*this) : nullptr);
    Object::init(type, source);
    auto const* original = source ? dynamic_cast<FallbackObject const*>(&source->get()) : nullptr;
    if (!original)
        return;
    fallbackClassName_ = original->fallbackClassName_;
    if (type == CreateType::Blank)
        return;
    headerText_ = original->headerText_;
    bodyText_ = original->bodyText_;
    textFormat_ = original->textFormat_;
    bodyParsed_ = original->bodyParsed_;
}

std::string const& FallbackObject::getStaticClassName() {
    static std::string const& name = *new std::string(sourceName);
    return name;
}

std::string const& FallbackObject::getClassName() const { return getStaticClassName(); }

void FallbackObject::setFallbackClassName(std::string const& className) { fallbackClassName_ = className; }

std::string const& FallbackObject::getFallbackClassName() const { return fallbackClassName_; }

bool FallbackObject::hasNothingPreserved() {
    return headerText_.empty() && bodyText_.empty() && !bodyParsed_;
}

void FallbackObject::initRead() { AttrContainer::initRead(); }

Result FallbackObject::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    auto const self = shared_from_this(); // Handlers hear of what is read, and may let go of the tree.
    ReadFromScope scope(in, context);
    ModelInFormat& imf = scope.getImf();
    ReadingScope reading(in, *this);
    textFormat_ = context->getFormat();
    bodyParsed_ = false;
    headerText_.clear();
    std::string text;
    bool hasContainerPart = false;
    std::streamoff offset = -1;
    std::string_view keyword;
    while (Access::current(imf, keyword) && !Access::isBlockEnd(imf)) {
        if (!hasContainerPart && ContainerReader::isOpener(imf, keyword)) {
            hasContainerPart = true;
            offset = offsetOfKeyword(imf, in);
            headerText_ = std::move(text);
            text.clear();
        }
        Access::captureEntry(imf, text);
    }
    bodyText_ = std::move(text);
    if (!Access::isBlockEnd(imf))
        return readFailure(sourceName, __LINE__, in, "The block is not closed");
    Result warning = atOffset(makeError(sourceName, __LINE__, ContentSkipped), in);
    if (hasContainerPart && numPlaceholdersBeingParsed < maxParsedPlaceholders)
        if (auto cause = parseBody(context, offset))
            warning->addNested(std::shared_ptr<ErrorHandling::ErrorBase>(std::move(cause)));
    reading.finish();
    Access::dropKeyword(imf);
    ModelInFormat::setPropagateKeyword(ModelFormat::END_OF_BLOCK_STR);
    return warning;
}

/// Reads the kept text, which begins at `offset` of the document, as an object. What the read reported, when
/// it succeeded.
Result FallbackObject::parseBody(std::shared_ptr<ReadContextBase const> const& context, std::int64_t offset) {
    KeptTextBuffer buffer(bodyText_, static_cast<std::streamoff>(offset));
    std::istream in(&buffer);
    ReadingScope::EmbeddedStream const embedded(in);
    std::string const nameBefore = name();
    std::uint64_t const droppedBefore = ReadingScope::droppedReferences();
    Result result;
    {
        ModelInFormat::cleanPropagateKeyword();
        ParsingScope const parsing;
        result = Object::readFrom(in, context);
    }
    in.clear();
    bool const isConsumed = (in >> std::ws).eof();
    bool const isComplete = isConsumed && droppedBefore == ReadingScope::droppedReferences();
    if (isComplete && !ReadOutcome::endsRead(result) && !(result && hasLostContent(*result))) {
        bodyText_.clear();
        bodyParsed_ = true;
        return result;
    }
    takeBack(nameBefore);
    return nullptr;
}

/// Undoes what a read that failed has made: the text says it all. Only the UUID stays, so that others find
/// the object by it.
void FallbackObject::takeBack(std::string const& nameBefore) {
    uuids::uuid const uuid = getUuid();
    while (children().getNumChildren() != 0)
        if (!rmChild(children().getNumChildren() - 1, 0))
            break;
    rmAllCustomAttributes();
    for (std::uint64_t size = getNumFields(); size > 0; size = std::min(getNumFields(), size - 1))
        rmField(size - 1);
    BlockObserver const unasked;
    for (std::uint64_t token = 0; token < getNumHardCodedAttributes(); ++token) {
        auto const attribute = ContainerAccess::attribute(*this, token);
        if (!attribute)
            continue;
        *attribute = *attribute->duplicate(CreateType::Blank, std::nullopt);
        AttributeAccess::setWriteFlag(*attribute, false);
        removePersistentLinks(*attribute);
    }
    if (auto* own = ContainerAccess::observable(*this))
        removePersistentLinks(*own);
    name(nameBefore);
    setUuid(uuid);
}

void FallbackObject::removePersistentLinks(Observable& observable) {
    for (std::uint64_t i = observable.getNumPrePaths() + observable.getNumPostPaths(); i-- > 0;)
        if (!observable.getPath(i).isTemporary())
            observable.removePath(i);
    ObservationAccess::dropUnknownLinks(observable);
}

Result FallbackObject::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    auto const self = shared_from_this();
    auto const from = static_cast<ModelFormat::Format>(textFormat_);
    auto const to = context->getFormat();
    if (auto error = writeKeptText(out, headerText_, from, to))
        return error;
    // A placeholder that was never read, but filled by the application, is an object like any other.
    bool const isFilled = headerText_.empty() && bodyText_.empty() &&
                          (ContainerAccess::custom(*this) || getNumFields() || children().getNumChildren());
    if (bodyParsed_ || isFilled) {
        Result result = Object::writeTo(out, context);
        if (result && !result->isWarning())
            return result;
    } else if (auto error = writeKeptText(out, bodyText_, from, to)) {
        return error;
    }
    return out.good() ? nullptr : makeError(sourceName, __LINE__, StreamFailure);
}

} // namespace Zorvan::AttributeContainer
