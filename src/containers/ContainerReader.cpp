// SPDX-License-Identifier: MIT
#include "containers/ContainerReader.h"

#include "attributes/AttributeAccess.h"
#include "attributes/AttributeReading.h"
#include "containers/ContainerAccess.h"
#include "foundation/MakeError.h"
#include "serialization/AttributeBlock.h"
#include "serialization/CharReader.h"
#include "serialization/XmlName.h"

#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/UnknownAttrContainer.h>

#include <array>
#include <istream>
#include <typeinfo>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "WtAttrContainer";

using Access = ModelInFormatAccess;

bool isLinkKeyword(std::string_view keyword) {
    return keyword == "PreObserver" || keyword == "PostObserver" || keyword == "ObserverPath";
}

/// The type names of the table of keys, to be found by a number that is made of a few of their characters.
class TypeNames {
public:
    TypeNames() {
        for (std::uint32_t type = 0; type <= AttrTypeJsonValue; ++type)
            if (auto const keyword = AttrContainer::keyTable.getName(type))
                if (std::string_view const name = nameIn(*keyword); !name.empty())
                    add(name, static_cast<AttrType>(type));
    }

    /// What stands between the angle brackets of an attribute block's keyword; empty for another keyword.
    static std::string_view nameIn(std::string_view keyword) {
        if (!keyword.starts_with(prefix) || !keyword.ends_with('>'))
            return {};
        return keyword.substr(prefix.size(), keyword.size() - prefix.size() - 1);
    }

    AttrType find(std::string_view name) const {
        if (name.empty())
            return AttrTypeUnknown;
        std::size_t place = placeOf(name);
        while (entries_[place].type != AttrTypeUnknown && entries_[place].name != name)
            place = (place + 1) % entries_.size();
        return entries_[place].type;
    }

private:
    struct Entry {
        std::string name;
        AttrType type = AttrTypeUnknown;
    };

    static constexpr std::string_view prefix = "Attr<";

    static std::size_t placeOf(std::string_view name) {
        auto const at = [&](std::size_t index) { return static_cast<unsigned char>(name[index]); };
        return (name.size() * 29 + at(0) * 5 + at(name.size() / 2) * 3 + at(name.size() - 1)) % 256;
    }

    void add(std::string_view name, AttrType type) {
        std::size_t place = placeOf(name);
        while (entries_[place].type != AttrTypeUnknown)
            place = (place + 1) % entries_.size();
        entries_[place] = {std::string(name), type};
    }

    std::array<Entry, 256> entries_;
};

TypeNames const& typeNames() {
    static auto const& names = *new TypeNames;
    return names;
}

/// The type of an attribute block's keyword, `AttrTypeUnknown` for another keyword.
AttrType attributeTypeOf(std::string_view keyword) { return typeNames().find(TypeNames::nameIn(keyword)); }

Result skipped(std::istream& in, int line, std::string description) {
    return atOffset(
        addInfo(makeError(sourceName, line, ContentSkipped), "Description", std::move(description)), in);
}

} // namespace

ContainerReader::ContainerReader(AttrContainer& container, std::istream& in,
                                 std::shared_ptr<ReadContextBase const> const& context)
    : container_(container), in_(in), context_(context), imf_(in), reading_(in, container) {
    Access::setFormat(imf_, context->getFormat());
}

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

Result ContainerReader::tooDeep(char const* file, int line, std::istream& in) {
    return failed(addInfo(makeError(file, line, StreamFailure), "Description",
                          "The containers nest deeper than " + std::to_string(maxContainerDepth) + " levels"),
                  in);
}

bool ContainerReader::opensBlock(ModelInFormat& imf, std::istream& in) {
    imf.nextKeyword();
    std::string_view keyword;
    if (!Access::current(imf, keyword))
        in.setstate(std::ios_base::failbit);
    return Access::isBlockStart(imf);
}

void ContainerReader::passUnknown(ModelInFormat& imf, ModelFormat::Format format, bool& hasBlock) {
    if (hasBlock) {
        Access::skipEntry(imf);
        return;
    }
    std::string text;
    Access::captureEntry(imf, text);
    hasBlock = text.find(format == ModelFormat::XmlV2 ? "</" : "{") != std::string::npos;
}

bool ContainerReader::readClassLine(ModelInFormat& imf, std::istream& in, ModelFormat::Format format,
                                    std::string& className, std::string& name) {
    CharReader reader(in);
    auto const readString = [&](std::string& text, char quote) {
        if (reader.good())
            reader.skipSpace();
        if (!reader.good() || reader.peek() != quote)
            return false;
        text = DataInFormat<std::string>(in, format).take();
        return !in.fail();
    };
    bool isGood = false;
    if (format == ModelFormat::XmlV2) {
        // The class is the name of an element, behind which its value follows.
        imf.nextKeyword();
        std::string_view keyword;
        if (!Access::current(imf, keyword) || !Access::insideValue(imf) || keyword.empty())
            return false;
        className = keyword;
        isGood = isXmlName(className) && readString(name, '\'');
    } else {
        isGood = readString(className, '"') && readString(name, '"');
    }
    if (isGood || format != ModelFormat::XmlV2)
        imf.nextKeyword();
    return isGood;
}

Result ContainerReader::read() {
    // Handlers hear of what is read, and may let go of the tree.
    auto const self = container_.shared_from_this();
    Result result = readPart();
    reading_.finish();
    ReadingScope::setWasOpened(wasOpened_);
    return result;
}

Result ContainerReader::readPart() {
    if (reading_.isTooDeep())
        return tooDeep(sourceName, __LINE__, in_);
    std::string_view keyword;
    while (Access::current(imf_, keyword) && !Access::isBlockEnd(imf_) && !endsAtChild(keyword)) {
        if (!readEntry(keyword))
            return std::move(fatal_);
    }
    if (!endsProperly())
        return readFailure(sourceName, __LINE__, in_, "The document holds no container");
    context_->idle();
    return outcome_.finish(sourceName, 1530, UnknownContent);
}

/// The children of an object end its container part when that has no end of its own.
bool ContainerReader::endsAtChild(std::string_view keyword) const {
    return !wasOpened_ && keyword == "Child" && !Access::keywordQuoted(imf_) &&
           (dynamic_cast<Object const*>(&container_) ||
            dynamic_cast<UnknownAttrContainer const*>(&container_));
}

bool ContainerReader::endsProperly() {
    if (in_.bad() || Access::wordLost(imf_))
        return false;
    if (Access::isBlockEnd(imf_)) {
        // A root that is not an object ends here; an XML document has to go on to the end of its root
        // element.
        bool const isRootPart = wasOpened_ && reading_.isOutermost() && Access::voxaOpen(imf_);
        return !isRootPart || goesOn();
    }
    std::string_view next;
    if (Access::current(imf_, next))
        return true; // The "Child" that ends an unopened part.
    if (wasOpened_ || in_.fail() || Access::voxaOpen(imf_))
        return false;
    return reading_.isPartOfObject() || (reading_.isFirstOnStream() && hasReadBlock_);
}

/// Looks behind the "}" of the part, and leaves it current unless the end of the document follows. False: the
/// input ends there.
bool ContainerReader::goesOn() {
    std::string blockEnd;
    Access::captureEntry(imf_, blockEnd); // Up to behind the "<" of the next tag.
    if (Access::wordLost(imf_) || !in_.good())
        return false;
    bool const isEndTag = CharReader(in_).peek() == '/';
    if (isEndTag) {
        imf_.nextKeyword();
        std::string_view keyword;
        if (Access::ended(imf_) || !Access::current(imf_, keyword))
            return Access::ended(imf_);
        ModelInFormat::setPropagateKeyword(ModelFormat::END_OF_BLOCK_STR); // That of an application's block.
    } else {
        ModelInFormat::setPropagateKeyword(ModelFormat::END_OF_BLOCK_STR);
        imf_.nextKeyword();
    }
    return true;
}

bool ContainerReader::readEntry(std::string_view keyword) {
    if (!wasOpened_ && isOpener(imf_, keyword)) {
        if (!opensBlock(imf_, in_)) {
            outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, "AttrContainer",
                                        container_.getClassName());
            return true;
        }
        wasOpened_ = true;
        hasReadBlock_ = true;
        imf_.nextKeyword();
        return true;
    }
    AttrType const type = Access::keywordQuoted(imf_) ? AttrTypeUnknown : attributeTypeOf(keyword);
    if (type != AttrTypeUnknown || isEntry(imf_, keyword)) {
        hasReadBlock_ = true;
        if (type != AttrTypeUnknown && readPlainAttributes(type))
            return true;
        if (isLinkKeyword(keyword))
            return readLinks();
        std::string const name(keyword);
        if (!opensBlock(imf_, in_)) {
            outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, name, container_.getClassName());
            return true;
        }
        if (name == "SubContainer")
            return readSubContainer();
        imf_.nextKeyword();
        return readAttributeBlock(type, name);
    }
    skipUnknown(keyword);
    return true;
}

void ContainerReader::skipUnknown(std::string_view keyword) {
    outcome_.noteUnknownKeyword(in_, sourceName, __LINE__, keyword, container_.getClassName());
    passUnknown(imf_, context_->getFormat(), hasReadBlock_);
}

// --- Attributes

/// Reads as many blocks as can be read ahead, and loads the keyword behind them. False, and nothing has
/// happened: not even the first one can.
bool ContainerReader::readPlainAttributes(AttrType type) {
    ModelFormat::Format const format = context_->getFormat();
    std::string name;
    if (AttributeBlock first(in_, imf_, format); !first.open(name) || !readPlainAttribute(first, type, name))
        return false;
    for (;;) {
        // Made anew each time: whoever heard of the value may have read the stream.
        AttributeBlock next(in_, imf_, format);
        if (!openNextBlock(next, type, name) || !readPlainAttribute(next, type, name))
            break;
    }
    imf_.nextKeyword();
    return true;
}

/// Up to the value, when the block can be read ahead and the keyword before it is the end of another one.
bool ContainerReader::openNextBlock(AttributeBlock& block, AttrType& type, std::string& name) {
    ReadingScope::Head* const head = reading_.head(numHeads_++);
    if (head && !head->text.empty() && block.openAgain(head->text)) {
        type = head->type;
        name = head->name;
        return true;
    }
    std::string_view typeName;
    if (!block.takeType(typeName))
        return false;
    type = typeNames().find(typeName);
    if (type == AttrTypeUnknown || !block.open(name))
        return false;
    constexpr std::size_t maxLength = 128;
    if (head && block.openedAs().size() <= maxLength) {
        head->text = block.openedAs();
        head->name = name;
        head->type = type;
    }
    return true;
}

/// A block of which nothing has to be reported, up to its value. False, and nothing has happened: it is
/// another one.
bool ContainerReader::readPlainAttribute(AttributeBlock& block, AttrType type, std::string const& name) {
    std::shared_ptr<Attribute>& spare = reading_.spare(type);
    std::shared_ptr<Attribute> read = std::exchange(spare, nullptr);
    if (!read)
        read = AttributeAccess::make({0, {}, type, 0}, nullptr);
    if (!read)
        return false;
    if (!block.hasValue()) {
        AttributeReading::resetValue(type, *read);
    } else if (!AttributeReading::readValue(type, *read, block.area(), context_->getFormat()) ||
               !block.closeValue()) {
        spare = std::move(read);
        return false;
    }
    block.commit();
    if (apply(name, read, type))
        spare = std::move(read);
    return true;
}

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
        fatal_ = readFailure(sourceName, __LINE__, in_, "The block is not closed");
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
        fatal_ = readFailure(sourceName, __LINE__, in_, "The attribute's name cannot be read");
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
    apply(name, temporary, AttrTypeUnknown);
    imf_.nextKeyword();
    return true;
}

/// `type`: the value may be moved. True: nobody has heard of the temporary attribute.
bool ContainerReader::apply(std::string const& name, std::shared_ptr<Attribute> const& temporary,
                            AttrType type) {
    std::uint64_t const token = container_.getAttrToken(name);
    Attribute* const existing = ContainerAccess::attributeSlot(container_, token).get();
    if (!existing || reading_.isAttributeFilled(token)) {
        addCustom(name, temporary);
        return false;
    }
    reading_.setAttributeFilled(token);
    if (context_->readMarked() && !existing->isMarked())
        return true;
    if (type != AttrTypeUnknown && AttributeReading::takeValue(type, *existing, *temporary))
        return true;
    auto const held = ContainerAccess::attribute(container_, token);
    takeOver(*held, *temporary, name);
    return false;
}

void ContainerReader::takeOver(Attribute& existing, Attribute const& temporary, std::string const& name) {
    {
        BlockObserver const unasked;
        existing = temporary;
    }
    // A placeholder has to give the type back too.
    std::string const& type = temporary.getClassName();
    if (existing.getClassName() != type &&
        (isPlaceholder() || existing.getValueAsText() != temporary.getValueAsText()))
        outcome_.note(
            skipped(in_, __LINE__, "The value of the attribute \"" + name + "\" was converted from " + type));
    AttributeAccess::setWriteFlag(existing, temporary.getFlags().write != 0);
    existing.setMarked(temporary.isMarked());
    if (AttributeAccess::hasLinks(temporary)) {
        existing.copyFrom(temporary);
        LinkReadingScope::enlist(existing);
    }
    existing.touch(nullptr, nullptr);
}

void ContainerReader::addCustom(std::string const& name, std::shared_ptr<Attribute> const& temporary) {
    // A plain container without fields accepts any valid name; placeholders accept all.
    bool const isAccepted =
        !name.empty() &&
        (isPlaceholder() || (typeid(container_) == typeid(AttrContainer) && container_.getNumFields() == 0 &&
                             AttrContainer::isNameValid(name)));
    std::string const usedName =
        isAccepted || name.empty() ? std::string() : container_.generateUniqueName(name);
    std::weak_ptr<Attribute> const added =
        isAccepted ? ContainerAccess::addAttributeUnchecked(container_, temporary, name)
                   : container_.addAttribute(temporary, usedName);
    if (added.expired()) {
        outcome_.note(skipped(in_, __LINE__, "The attribute \"" + name + "\" was not accepted"));
        return;
    }
    if (!isAccepted && usedName != name)
        outcome_.note(
            skipped(in_, __LINE__, "The attribute \"" + name + "\" was renamed to \"" + usedName + "\""));
    reading_.setAttributeFilled(temporary->getToken());
}

/// Containers that stand in for unknown classes keep names that are not valid here.
bool ContainerReader::isPlaceholder() {
    if (!isPlaceholder_)
        isPlaceholder_ = dynamic_cast<UnknownAttrContainer const*>(&container_) ||
                         dynamic_cast<IFallbackObject const*>(&container_);
    return *isPlaceholder_;
}

// --- Links and fields

bool ContainerReader::readLinks() {
    auto const observable = container_.observable();
    Result result = observable->readFrom(in_, context_);
    if (outcome_.noteLinks(result, imf_, context_->getFormat() == ModelFormat::XmlV2))
        return true;
    fatal_ = std::move(result);
    return false;
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

Result AttrContainer::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    return ContainerReader(*this, in, context).read();
}

} // namespace Zorvan::AttributeContainer
