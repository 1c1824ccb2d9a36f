// SPDX-License-Identifier: MIT
#include <AttributeContainer/UnknownAttrContainer.h>

#include "containers/ContainerAccess.h"
#include "containers/ContainerReader.h"
#include "containers/KeptText.h"
#include "foundation/MakeError.h"
#include "observation/ObservationAccess.h"

#include <AttributeContainer/BlockUpdateObservers.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteContextBase.h>

#include <istream>
#include <ostream>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "UnknownAttrContainer";

using Access = ModelInFormatAccess;

} // namespace

UnknownAttrContainer::UnknownAttrContainer(ConstructorProtector const& protector, CreateType type,
                                           OptionalSource source)
    : AttrContainer(protector, type, source ? AttrContainer::OptionalSource(source->get()) : std::nullopt) {}

UnknownAttrContainer::~UnknownAttrContainer() = default;

std::shared_ptr<UnknownAttrContainer> UnknownAttrContainer::create(CreateType type, OptionalSource source) {
    auto container = std::make_shared<UnknownAttrContainer>(ConstructorProtector(), type, source);
    container->init(type, source);
    return container;
}

std::shared_ptr<AttrContainer> UnknownAttrContainer::duplicate(CreateType type) {
    auto copy = create(type, type == CreateType::Blank ? std::nullopt : OptionalSource(*this));
    copy->typeName_ = typeName_; // A copy without it could not be written.
    return copy;
}

void UnknownAttrContainer::init(CreateType type, OptionalSource source) {
    AttrContainer::OptionalSource const base =
        source ? AttrContainer::OptionalSource(source->get()) : std::nullopt;
    BlockUpdateObservers const scope(source ? std::static_pointer_cast<AttrContainer>(shared_from_this())
                                            : nullptr);
    AttrContainer::init(type, base);
    if (!source) {
        static_cast<void>(setName(getClassName(), 0));
        return;
    }
    UnknownAttrContainer const& original = source->get();
    typeName_ = original.typeName_;
    if (type == CreateType::Blank)
        return;
    textBefore_ = original.textBefore_;
    textBehind_ = original.textBehind_;
    nameWithoutPart_ = original.nameWithoutPart_;
    textFormat_ = original.textFormat_;
    hasContainerPart_ = original.hasContainerPart_;
}

std::string const& UnknownAttrContainer::getStaticClassName() {
    static std::string const& name = *new std::string("UnknownAttrContainer");
    return name;
}

std::string const& UnknownAttrContainer::getClassName() const { return getStaticClassName(); }

std::shared_ptr<AttrContainer> UnknownAttrContainer::checkCreateChildField(std::string const& className,
                                                                           std::string const& fieldName,
                                                                           std::uint64_t*) {
    auto field = create();
    field->typeName_ = className;
    static_cast<void>(field->setName(fieldName, 0)); // A name that is refused leaves the class name.
    return field;
}

Result UnknownAttrContainer::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    auto const self = shared_from_this(); // Handlers hear of what is read, and may let go of the tree.
    return readBlock(in, context);
}

/// Ends with the "}" of the block current and propagated, unless the read ended before it.
Result UnknownAttrContainer::readBlock(std::istream& in,
                                       std::shared_ptr<ReadContextBase const> const& context) {
    ReadFromScope scope(in, context);
    ModelInFormat& imf = scope.getImf();
    ReadingScope reading(in, *this);
    textFormat_ = context->getFormat();
    textBefore_.clear();
    textBehind_.clear();
    std::string_view keyword;
    bool isPart = false;
    while (!isPart && Access::current(imf, keyword) && !Access::isBlockEnd(imf)) {
        isPart = ContainerReader::isOpener(imf, keyword) || ContainerReader::isEntry(imf, keyword);
        if (!isPart)
            Access::captureEntry(imf, textBefore_);
    }
    Result result;
    hasContainerPart_ = isPart;
    if (!isPart)
        nameWithoutPart_ = getName();
    if (isPart) {
        result = AttrContainer::readFrom(in, context);
        if (ReadOutcome::endsRead(result)) {
            reading.finish();
            return result;
        }
        if (ReadingScope::wasOpened())
            imf.nextKeyword();
        while (Access::current(imf, keyword) && !Access::isBlockEnd(imf))
            Access::captureEntry(imf, textBehind_);
    }
    // As a root, it may end with the document.
    bool const mayEnd = reading.isFirstOnStream() && (isPart || !textBefore_.empty()) && !in.fail() &&
                        !Access::wordLost(imf) && !Access::voxaOpen(imf);
    if (!Access::isBlockEnd(imf) && !mayEnd)
        result = readFailure(sourceName, __LINE__, in, "The block is not closed");
    reading.finish();
    if (ReadOutcome::endsRead(result))
        return result;
    Access::propagateBlockEnd(imf);
    return result;
}

/// A block that had no container part gets one when the application has filled, renamed or observed the
/// container.
bool UnknownAttrContainer::needsContainerPart() {
    if (hasContainerPart_ || ContainerAccess::custom(*this) || getNumFields() != 0 ||
        getName() != nameWithoutPart_)
        return true;
    auto const* own = ContainerAccess::observable(*this);
    auto const nameAttribute = ContainerAccess::attribute(*this, 0);
    return (own && ObservationAccess::hasLinks(*own)) ||
           (nameAttribute && ObservationAccess::hasLinks(*nameAttribute));
}

Result UnknownAttrContainer::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    auto const self = shared_from_this();
    auto const from = static_cast<ModelFormat::Format>(textFormat_);
    auto const to = context->getFormat();
    if (auto error = writeKeptText(out, textBefore_, from, to))
        return error;
    if (needsContainerPart()) {
        Result result = AttrContainer::writeTo(out, context);
        if (result && !result->isWarning())
            return result;
    }
    if (auto error = writeKeptText(out, textBehind_, from, to))
        return error;
    return out.good() ? nullptr : makeError(sourceName, __LINE__, StreamFailure);
}

} // namespace Zorvan::AttributeContainer
