// SPDX-License-Identifier: MIT
#include "containers/ContainerReader.h"

#include "attributes/AttributeAccess.h"
#include "containers/ContainerAccess.h"
#include "foundation/MakeError.h"

#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/UnknownAttrContainer.h>

#include <istream>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "WtAttrContainer";

using Access = ModelInFormatAccess;

bool isLinkKeyword(std::string_view keyword) {
    return keyword == "PreObserver" || keyword == "PostObserver" || keyword == "ObserverPath";
}

/// The type of an attribute block's keyword, `AttrTypeUnknown` for another keyword.
AttrType attributeTypeOf(std::string_view keyword) {
    if (!keyword.starts_with("Attr<"))
        return AttrTypeUnknown;
    std::uint64_t const token = AttrContainer::keyTable.getToken(keyword);
    return token <= AttrTypeJsonValue ? static_cast<AttrType>(token) : AttrTypeUnknown;
}

/// Containers that stand in for unknown classes keep names that are not valid here.
bool isPlaceholder(AttrContainer const& container) {
    return dynamic_cast<UnknownAttrContainer const*>(&container) ||
           dynamic_cast<IFallbackObject const*>(&container);
}

Result skipped(std::istream& in, int line, std::string description) {
    return atOffset(
        addInfo(makeError(sourceName, line, ContentSkipped), "Description", std::move(description)), in);
}

} // namespace

ContainerReader::ContainerReader(AttrContainer& container, std::istream& in,
                                 std::shared_ptr<ReadContextBase const> const& context)
    : container_(container), in_(in), context_(context), scope_(in, context), imf_(scope_.getImf()),
      reading_(in, container) {}

bool ContainerReader::isOpener(ModelInFormat const& imf, std::string_view keyword) {
    return keyword == "AttrContainer" && !Access::keywordQuoted(imf);
}

bool ContainerReader::isEntry(ModelInFormat const& imf, std::string_view keyword) {
    return !Access::keywordQuoted(imf) && (keyword == "SubContainer" || isLinkKeyword(keyword) ||
                                           attributeTypeOf(keyword) != AttrTypeUnknown);
}

Result ContainerReader::failed(Result error, std::istream& in) {
    ModelInFormat::cleanPropagateKeyword();
    return atOffset(std::move(error), in);
}

Result ContainerReader::read() {
    ReadingScope::setWasOpened(false);
    if (reading_.isTooDeep())
        return failed(
            addInfo(makeError(sourceName, __LINE__, StreamFailure), "Description",
                    "The containers nest deeper than " + std::to_string(maxContainerDepth) + " levels"),
            in_);
    auto const self =
        container_.shared_from_this(); // Handlers hear of what is read, and may let go of the tree.
    std::string_view keyword;
    while (Access::current(imf_, keyword) && !Access::isBlockEnd(imf_)) {
        bool const endsUnopenedPart = !wasOpened_ && keyword == "Child" && !Access::keywordQuoted(imf_) &&
                                      dynamic_cast<Object*>(&container_);
        if (endsUnopenedPart)
            break;
        hasReadAnything_ = true;
        if (!readEntry(keyword))
            return std::move(fatal_);
    }
    if (!endsProperly())
        return failed(makeError(sourceName, __LINE__, StreamFailure), in_);
    ReadingScope::setWasOpened(wasOpened_);
    context_->idle();
    reading_.finish();
    ReadingScope::setWasOpened(wasOpened_);
    return outcome_.finish(sourceName, 1530, UnknownContent);
}

bool ContainerReader::endsProperly() {
    if (in_.bad() || Access::wordLost(imf_))
        return false;
    if (Access::isBlockEnd(imf_)) {
        // A root that is not an object ends here; an XML document has to go on to the end of its root
        // element.
        bool const isRootPart = wasOpened_ && reading_.isOutermost() && Access::voxaOpen(imf_);
        if (!isRootPart)
            return true;
        imf_.nextKeyword();
        std::string_view next;
        return Access::ended(imf_) || Access::current(imf_, next);
    }
    std::string_view next;
    if (Access::current(imf_, next))
        return true; // The "Child" that ends an unopened part.
    if (wasOpened_ || in_.fail() || Access::voxaOpen(imf_))
        return false;
    return reading_.isPartOfObject() || (reading_.isFirstOnStream() && hasReadAnything_);
}

bool ContainerReader::readEntry(std::string_view keyword) {
    if (!wasOpened_ && isOpener(imf_, keyword)) {
        imf_.nextKeyword();
        if (!Access::isBlockStart(imf_)) {
            outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, "AttrContainer",
                                        container_.getClassName());
            return true;
        }
        wasOpened_ = true;
        imf_.nextKeyword();
        return true;
    }
    if (isEntry(imf_, keyword)) {
        if (isLinkKeyword(keyword))
            return readLinks();
        std::string const name(keyword);
        imf_.nextKeyword();
        if (!Access::isBlockStart(imf_)) {
            outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, name, container_.getClassName());
            return true;
        }
        if (name == "SubContainer")
            return readSubContainer();
        imf_.nextKeyword();
        return readAttributeBlock(attributeTypeOf(name), name);
    }
    skipUnknown(keyword);
    return true;
}

void ContainerReader::skipUnknown(std::string_view keyword) {
    outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, keyword, container_.getClassName());
    Access::skipEntry(imf_);
}

// --- Attributes
// -----------------------------------------------------------------------------------------------------

bool ContainerReader::readAttributeBlock(AttrType type, std::string const& typeName) {
    bool isReported = false;
    std::string_view keyword;
    while (Access::current(imf_, keyword) && !Access::isBlockEnd(imf_)) {
        if (keyword == "Name" && !Access::keywordQuoted(imf_))
            return readNamedAttribute(type, typeName);
        isReported = true;
        outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, keyword, container_.getClassName());
        Access::skipEntry(imf_);
    }
    if (!Access::isBlockEnd(imf_)) {
        fatal_ = failed(makeError(sourceName, __LINE__, StreamFailure), in_);
        return false;
    }
    if (!isReported)
        outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, typeName, container_.getClassName());
    imf_.nextKeyword();
    return true;
}

std::shared_ptr<Attribute> ContainerReader::makeTemporary(AttrType type, std::string const& typeName,
                                                          std::string const& name) {
    AttrDefinition const definition{0, name, type, 0};
    if (auto attribute = AttributeAccess::make(definition, nullptr))
        return attribute;
    // A type that no definition makes: an application may have put such an attribute there itself.
    auto const existing = container_.getAttr(name).lock();
    if (existing && existing->getClassName() == typeName)
        return existing->duplicate(CreateType::Blank, std::nullopt);
    return nullptr;
}

bool ContainerReader::readNamedAttribute(AttrType type, std::string const& typeName) {
    std::string const name = DataInFormat<std::string>(in_, context_->getFormat()).take();
    if (in_.fail()) {
        fatal_ = failed(makeError(sourceName, __LINE__, StreamFailure), in_);
        return false;
    }
    auto const temporary = makeTemporary(type, typeName, name);
    if (!temporary) {
        fatal_ = failed(addInfo(makeError(sourceName, __LINE__, AttributeNotCreated), "Description",
                                "No attribute of type " + typeName),
                        in_);
        return false;
    }
    imf_.nextKeyword();
    Result result = temporary->readFrom(in_, context_);
    if (ReadOutcome::endsRead(result)) {
        ModelInFormat::cleanPropagateKeyword();
        fatal_ = std::move(result);
        return false;
    }
    outcome_.note(std::move(result));
    imf_.nextKeyword(); // The propagated "}", taken before anything foreign runs.
    apply(name, temporary);
    imf_.nextKeyword();
    return true;
}

void ContainerReader::apply(std::string const& name, std::shared_ptr<Attribute> const& temporary) {
    std::uint64_t const token = container_.getAttrToken(name);
    auto const existing = ContainerAccess::attribute(container_, token);
    if (!existing || reading_.isAttributeFilled(token)) {
        addCustom(name, temporary);
        return;
    }
    reading_.setAttributeFilled(token);
    if (!context_->readMarked() || existing->isMarked())
        takeOver(*existing, *temporary);
}

void ContainerReader::takeOver(Attribute& existing, Attribute const& temporary) {
    {
        BlockObserver const unasked;
        existing = temporary;
    }
    AttributeAccess::setWriteFlag(existing, temporary.getFlags().write != 0);
    existing.setMarked(temporary.isMarked());
    if (AttributeAccess::hasLinks(temporary)) {
        existing.copyFrom(temporary);
        LinkReadingScope::enlist(existing);
    }
    existing.touch(nullptr, nullptr);
}

void ContainerReader::addCustom(std::string const& name, std::shared_ptr<Attribute> const& temporary) {
    std::weak_ptr<Attribute> added;
    std::string usedName = name;
    if (!name.empty()) {
        if (isPlaceholder(container_)) {
            added = ContainerAccess::addAttributeUnchecked(container_, temporary, name);
        } else {
            usedName = container_.generateUniqueName(name);
            added = container_.addAttribute(temporary, usedName);
        }
    }
    if (added.expired()) {
        outcome_.note(skipped(in_, __LINE__, "The attribute \"" + name + "\" was not accepted"));
        return;
    }
    if (usedName != name)
        outcome_.note(
            skipped(in_, __LINE__, "The attribute \"" + name + "\" was renamed to \"" + usedName + "\""));
    reading_.setAttributeFilled(temporary->getToken());
}

// --- Links and fields
// -----------------------------------------------------------------------------------------------

bool ContainerReader::readLinks() {
    auto const observable = container_.observable();
    Result result = observable->readFrom(in_, context_);
    ModelInFormat::cleanPropagateKeyword();
    if (result && result->getCode() == UnknownKeyword) {
        // The links ended at a keyword that is not theirs; the loop goes on with it. What went wrong with the
        // links themselves is nested.
        for (auto const& nested : result->getNested())
            if (auto const* error = dynamic_cast<Result::element_type const*>(nested.get()))
                outcome_.note(std::make_unique<Result::element_type>(*error));
        return true;
    }
    if (ReadOutcome::endsRead(result)) {
        fatal_ = std::move(result);
        return false;
    }
    outcome_.note(std::move(result));
    return true;
}

bool ContainerReader::readSubContainer() {
    Result result = ContainerAccess::readField(container_, in_, context_);
    // Without unknown containers, a field of an unknown class is passed over like any other unknown entry.
    if (ReadOutcome::endsRead(result) && result->getCode() != UnknownKeyword) {
        ModelInFormat::cleanPropagateKeyword();
        fatal_ = std::move(result);
        return false;
    }
    outcome_.note(std::move(result));
    imf_.nextKeyword(); // The propagated "}".
    imf_.nextKeyword();
    return true;
}

// --- AttrContainer
// --------------------------------------------------------------------------------------------------

Result AttrContainer::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    return ContainerReader(*this, in, context).read();
}

} // namespace Zorvan::AttributeContainer
