// SPDX-License-Identifier: MIT
#include "containers/ContainerWriter.h"

#include "attributes/AttributeAccess.h"
#include "containers/ContainerAccess.h"
#include "containers/WritingScope.h"
#include "foundation/MakeError.h"
#include "serialization/LineWriter.h"
#include "serialization/XmlName.h"

#include <AttributeContainer/SharedInstanceCollection.h>
#include <AttributeContainer/Visitors.h>

#include <optional>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "WtAttrContainer";
constexpr char objectSourceName[] = "Object";
constexpr char containerKeyword[] = "AttrContainer";
constexpr int categoryNotWritten = 32;

bool isError(Result const& result) { return result && !result->isWarning(); }

Result tooDeep() {
    return addInfo(makeError(sourceName, __LINE__, StreamFailure), "Description",
                   "The containers nest deeper than documents may");
}

Result streamFailure() { return makeError("WtAttribute.h", 829, StreamFailure); }

/// The line is finished before and after the calls that classes of applications may override: those may write
/// to the stream themselves.
Result writeAttribute(LineWriter& line, std::shared_ptr<WriteContextBase const> const& context,
                      AttrContainer const& container, Attribute& attribute, std::uint64_t token) {
    auto const* definition = container.getAttrDefinition(token);
    if ((definition && (definition->category & categoryNotWritten)) ||
        (context->writeOnlyMarked() && !attribute.isMarked()))
        return nullptr;
    auto const name = container.getAttrName(token);
    if (!name || name->empty())
        return nullptr;
    std::ostream& out = line.stream();
    std::string const& className = attribute.getClassName();
    line.resume();
    line.startAttributeBlock(className, *name);
    if (!AttributeAccess::appendPlainValue(line, attribute, context->writeDefaultValues())) {
        line.finish();
        if (auto result = attribute.writeTo(out, context); isError(result))
            return result;
        line.resume();
        line.endAttributeBlock();
        line.finish();
        return nullptr;
    }
    line.endAttributeBlock();
    line.finish();
    return out.good() ? nullptr : streamFailure();
}

// What works with the lines stands on its own: the room that they take on the stack is not to be there once
// more for each level of a tree.

[[gnu::noinline]] void endBlock(std::ostream& out, ModelFormat::Format format, std::string_view name) {
    LineWriter(out, format).endBlock(name).finish();
}

/// Begins the block of a container, and writes its attributes.
[[gnu::noinline]] Result writeAttributes(std::ostream& out,
                                         std::shared_ptr<WriteContextBase const> const& context,
                                         AttrContainer& container) {
    LineWriter line(out, context->getFormat());
    line.startBlock(containerKeyword);
    line.finish();
    // By token, since observers of applications may change the lists while their values are written.
    for (std::uint64_t i = 0; i < container.getNumHardCodedAttributes(); ++i)
        if (auto const attribute = ContainerAccess::declared(container)[i])
            if (auto error = writeAttribute(line, context, container, *attribute, i))
                return error;
    for (std::uint64_t i = 0;
         ContainerAccess::custom(container) && i < ContainerAccess::custom(container)->size(); ++i) {
        std::uint64_t const token = ContainerAccess::custom(container)->getFirstToken() + i;
        if (auto const attribute = ContainerAccess::custom(container)->getElement(token))
            if (auto error = writeAttribute(line, context, container, *attribute, token))
                return error;
    }
    return out.good() ? nullptr : streamFailure();
}

/// Begins the block of a member up to its content, of which a container that is not entered has none.
[[gnu::noinline]] void startMemberBlock(std::ostream& out, ModelFormat::Format format,
                                        std::string const& keyword, std::string const& className,
                                        std::string const& name, std::optional<std::uint64_t> sharedId,
                                        bool isReference) {
    LineWriter line(out, format);
    line.startBlock(keyword).startValueAsString(className).quoted(name).endValue();
    if (sharedId)
        line.startValue("InstanceID").number(*sharedId).endValue();
    if (isReference)
        line.startValue("ReferenceToShared").endValue();
    line.finish();
}

} // namespace

Result writeMemberBlock(std::ostream& out, std::shared_ptr<WriteContextBase const> const& context,
                        std::string const& keyword, std::string const& name, AttrContainer& member) {
    auto const format = context->getFormat();
    std::string const className = WritingScope::documentClassName(member);
    if (format != ModelFormat::Text && !isXmlName(className))
        return addInfo(makeError(sourceName, __LINE__, StreamFailure), "Description",
                       "The class name \"" + className + "\" is no XML name");
    auto* shared = context->getSharedInstances();
    bool const wasWritten = ContainerAccess::isSerialized(member);
    if (shared)
        member.setIsSerialized(true);
    bool const isReference = shared && wasWritten;
    startMemberBlock(out, format, keyword, className, name,
                     shared ? std::optional(member.getInstanceIdentifier()) : std::nullopt, isReference);
    if (isReference)
        shared->insert(member.getInstanceIdentifier());
    // Without a collection, one that is its own ancestor is named here and not entered again.
    else if (!WritingScope::isBeingWritten(out, member))
        if (auto result = member.writeTo(out, context); isError(result))
            return result;
    endBlock(out, format, keyword);
    return nullptr;
}

Result AttrContainer::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) {
    if (!context)
        return makeError(sourceName, 1301, NoContext);
    auto const self = shared_from_this();
    WritingScope const writing(out, *this);
    if (writing.isTooDeep())
        return tooDeep();
    if (auto error = writeAttributes(out, context, *this))
        return error;
    if (auto* own = ContainerAccess::observable(*this))
        if (auto result = own->writeTo(out, context); isError(result))
            return result;
    if (context->writeFields())
        for (std::uint64_t i = 0; fields_ && i < fields_->size(); ++i)
            if (fields_->getElement(fields_->getFirstToken() + i))
                if (auto result = writeField(out, i, context); isError(result))
                    return result;
    endBlock(out, context->getFormat(), containerKeyword);
    return out.good() ? nullptr : makeError(sourceName, __LINE__, StreamFailure);
}

Result AttrContainer::writeField(std::ostream& out, std::uint64_t fieldIndex,
                                 std::shared_ptr<WriteContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    std::uint64_t const token = fields_ ? fields_->getFirstToken() + fieldIndex : fieldIndex;
    auto const field = fields_ ? fields_->getElement(token) : nullptr;
    if (!field)
        return makeError(sourceName, __LINE__, TargetMissing);
    if (context->writeOnlyMarked()) {
        AttrCountMarkedVisitor count;
        try {
            field->attributeVisitor(count, true);
        } catch (std::length_error const&) {
            return tooDeep();
        }
        if (count.getNumMarkedAttributes() == 0)
            return nullptr;
    }
    return writeMemberBlock(out, context, "SubContainer", getFieldName(token).value_or(std::string()),
                            *field);
}

Result Object::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) {
    if (!context)
        return makeError(objectSourceName, 702, NoContext);
    auto const self = shared_from_this();
    if (context->createObjectUuid())
        getUuid();
    WritingScope const writing(out, *this);
    if (auto result = AttrContainer::writeTo(out, context); isError(result))
        return result;
    for (std::uint64_t i = 0; context->writeChildren() && i < children_.getNumChildren(); ++i) {
        auto const child = children_.getChild(i);
        if (context->writeOnlyMarkedObjects()) {
            auto const first = ContainerAccess::firstAttribute(*child);
            if (!first || !first->isMarked())
                continue;
        }
        if (auto result = writeMemberBlock(out, context, "Child", child->getName(), *child); isError(result))
            return result;
    }
    return out.good() ? nullptr : makeError(objectSourceName, __LINE__, StreamFailure);
}

} // namespace Zorvan::AttributeContainer
