// SPDX-License-Identifier: MIT
#include "Document.h"

#include "Outline.h"
#include "TextBuffers.h"

#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/FallbackObject.h>
#include <AttributeContainer/Object.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/ReferenceDictionary.h>
#include <AttributeContainer/SharedInstanceCollection.h>
#include <AttributeContainer/WriteToScope.h>
#include <ErrorHandling/Logger.h>

#include <algorithm>
#include <istream>
#include <ostream>
#include <utility>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;
using Zorvan::ErrorHandling::ErrorBase;
using Zorvan::ErrorHandling::ErrorWithCode;
using Zorvan::ErrorHandling::Logger;
using Zorvan::ErrorHandling::LogMessage;
using Zorvan::ErrorHandling::LogSink;

namespace {

/// Where a reader stands in its document.
std::size_t offsetIn(std::istream& in) {
    auto const offset = std::streamoff(in.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in));
    return offset < 0 ? 0 : static_cast<std::size_t>(offset);
}

/// What follows behind white space, which is skipped.
bool isNext(std::istream& in, std::string const& text, std::string_view expected) {
    if (in.good())
        in >> std::ws;
    return in.good() && std::string_view(text).substr(offsetIn(in)).starts_with(expected);
}

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

bool isBlank(std::string_view text) { return text.find_first_not_of(whiteSpace) == text.npos; }

std::string_view withoutTrailingBlanks(std::string_view text) {
    return text.substr(0, text.find_last_not_of(whiteSpace) + 1);
}

/// Turns what the library logs while a document is read into remarks.
class LogToRemarks {
public:
    LogToRemarks(std::istream& in, std::vector<Remark>& remarks)
        : previous_(Logger::setSink([&in, &remarks](LogMessage const& log) {
              remarks.push_back({false, log.message, offsetIn(in)});
          })) {}
    ~LogToRemarks() { Logger::setSink(std::move(previous_)); }
    LogToRemarks(LogToRemarks const&) = delete;
    LogToRemarks& operator=(LogToRemarks const&) = delete;

private:
    std::shared_ptr<LogSink> previous_;
};

/// Notes the containers that are referred to.
class NotingDictionary : public ReferenceDictionary {
public:
    explicit NotingDictionary(ReferencedContainers& referenced) : referenced_(referenced) {}
    std::shared_ptr<AttrContainer> resolveReference(std::uint64_t id) override {
        auto container = ReferenceDictionary::resolveReference(id);
        if (container)
            referenced_.add(container);
        return container;
    }

private:
    ReferencedContainers& referenced_;
};

class ReadContext : public ReadContextBase {
public:
    ReadContext(std::vector<std::uint64_t>& ids, ReferencedContainers& referenced)
        : dictionary_(referenced), hasIds_(!ids.empty()) {
        dictionary_.initializeFromVector(ids);
    }
    ReferenceDictionary* getReferenceDictionary() const override { return hasIds_ ? &dictionary_ : nullptr; }

private:
    mutable NotingDictionary dictionary_;
    bool hasIds_;
};

class WriteContext : public WriteContextBase {
public:
    WriteContext(Rendering rendering, bool hasIds) : WriteContextBase(rendering), hasIds_(hasIds) {}
    SharedInstanceCollection* getSharedInstances() const override { return hasIds_ ? &instances_ : nullptr; }

private:
    mutable SharedInstanceCollection instances_;
    bool hasIds_;
};

/// Whether an error, or a cause of it, tells of content that no object has taken. Placeholders for unknown
/// classes and links that name an unknown action keep everything.
bool tellsOfLoss(ErrorBase const& error) {
    auto const* coded = dynamic_cast<ErrorWithCode<ErrorCode> const*>(&error);
    if (!coded)
        return true;
    switch (coded->getCode()) {
    case UnknownClass:
    case ObserverUnresolved:
        return std::any_of(error.getNested().begin(), error.getNested().end(),
                           [](auto const& nested) { return tellsOfLoss(*nested); });
    case ContentSkipped:
        return error.getFile() != FallbackObject::getStaticClassName();
    case NotMarked:
        return false;
    default:
        return true;
    }
}

Outcome outcomeOf(Result const& result) {
    if (!result)
        return Outcome::Good;
    switch (result->getCode()) {
    case ObserverUnresolved:
    case TargetMissing:
        return Outcome::Warnings;
    case StreamFailure:
    case NoContext:
    case NotSupported:
        return Outcome::Unreadable;
    default:
        return result->isWarning() ? Outcome::Warnings : Outcome::Incomplete;
    }
}

/// The text without what other programs add before the root: a byte-order mark, and carriage returns in the
/// lines of an XML header, which the library compares whole. Blanks at the front make up for them, so that
/// offsets behind the header stay. Nothing when there is none of that.
std::optional<std::string> withPlainStart(std::string const& text) {
    static constexpr std::string_view mark = "\xEF\xBB\xBF", rootTag = "<VOXA>\r\n";
    std::size_t const begin = text.starts_with(mark) ? mark.size() : 0;
    std::size_t end = begin;
    std::size_t const first = text.find_first_not_of(whiteSpace, begin);
    std::size_t const lineEnd = first != text.npos && text[first] == '<' ? text.find('\n', first) : text.npos;
    if (lineEnd != text.npos && text.compare(lineEnd - 1, 3, "\r\n<") == 0)
        if (std::size_t const root = text.find(rootTag, begin); root != text.npos)
            end = root + rootTag.size();
    if (end == 0)
        return std::nullopt;
    std::string header = text.substr(begin, end - begin);
    std::erase(header, '\r');
    std::string result(end - header.size(), ' ');
    return result.append(header).append(text, end);
}

/// Reads one document.
class DocumentReader {
public:
    DocumentReader(std::string const& text, Progress* progress)
        : text_(text), buffer_(text, progress), in_(&buffer_) {}

    Document run() {
        LogToRemarks const log(in_, document_.remarks);
        if (findRendering())
            readRoot();
        if (document_.outcome == Outcome::Good && !document_.remarks.empty())
            document_.outcome = Outcome::Warnings;
        return std::move(document_);
    }

private:
    void fail(Outcome outcome, std::string text, std::size_t offset) {
        document_.outcome = std::max(document_.outcome, outcome);
        document_.isLossy = true;
        document_.remarks.push_back({true, std::move(text), offset});
        if (outcome == Outcome::Unreadable)
            document_.root.reset();
    }

    bool findRendering() {
        if (isBlank(text_)) {
            fail(Outcome::Unreadable, "the document is empty", 0);
            return false;
        }
        TextInput startBuffer(text_, nullptr);
        std::istream start(&startBuffer);
        document_.rendering = static_cast<Rendering>(ModelInFormat(start).determineFormat());
        bool const isMarkup = isNext(in_, text_, "<");
        if (isMarkup && document_.rendering == ModelFormat::Text) {
            fail(Outcome::Unreadable, "neither the text rendering nor XML v. 2", offsetIn(in_));
            return false;
        }
        return true;
    }

    void readRoot() {
        Outline outline = outlineOf(text_, document_.rendering);
        document_.hasInstanceIds = !outline.instanceIds.empty();
        auto const context = std::make_shared<ReadContext>(outline.instanceIds, document_.referenced);
        context->setFormat(document_.rendering);
        // This scope stays open while the root is read: it knows that an XML document was begun and must end.
        ReadFromScope scope(in_, context);
        if (!readHeader(scope.getImf()))
            return;
        if (!outline.hasBlocks) {
            fail(Outcome::Unreadable, "there is no container", offsetIn(in_));
            return;
        }
        std::shared_ptr<AttrContainer> root =
            outline.isRootObject ? Object::create() : AttrContainer::create();
        document_.result = root->readFrom(in_, context);
        document_.outcome = outcomeOf(document_.result);
        document_.isLossy = document_.result && tellsOfLoss(*document_.result);
        if (document_.outcome == Outcome::Unreadable)
            return;
        document_.root = std::move(root);
        if (document_.outcome != Outcome::Incomplete)
            checkEnd(scope.getImf());
        if (outline.referenceWithoutId)
            fail(Outcome::Incomplete, "a reference to a shared instance has no id",
                 *outline.referenceWithoutId);
    }

    bool readHeader(ModelInFormat& reader) {
        std::size_t const begin = offsetIn(in_);
        bool const isXml = document_.rendering == ModelFormat::XmlV2;
        if (isXml)
            reader.determineFormat();
        bool const isGood = isXml ? readXmlHeader(reader) : readTextHeader(reader);
        if (!isGood || in_.fail())
            fail(Outcome::Unreadable, "the header is damaged", begin);
        return isGood && !in_.fail();
    }

    bool readTextHeader(ModelInFormat& reader) {
        if (!isNext(in_, text_, "\""))
            return true;
        Header& header = document_.header.emplace();
        reader.readHeader(header.title);
        if (isNext(in_, text_, "\""))
            reader.readVersion(header.format.emplace());
        // `readRootModelVersion` would not keep what it read.
        if (isNext(in_, text_, "\""))
            header.rootModel = DataInFormat<VersionNum>(in_, ModelFormat::Text).take();
        return true;
    }

    bool readXmlHeader(ModelInFormat& reader) {
        if (isNext(in_, text_, "<!--")) {
            Header& header = document_.header.emplace();
            reader.readHeader(header.title);
            if (isNext(in_, text_, "<!--")) {
                reader.readVersion(header.format.emplace());
            } else {
                // The start tag of the root was read with the header.
                std::string_view const sofar = std::string_view(text_).substr(0, offsetIn(in_));
                return withoutTrailingBlanks(sofar).ends_with(ModelFormat::XML_ROOT_START_TAG);
            }
        }
        return reader.readVoxaStart();
    }

    /// Nothing may follow the root, and an XML document must be closed.
    void checkEnd(ModelInFormat& reader) {
        std::size_t const offset = offsetIn(in_);
        if (auto const keyword = reader.getKeyword(); keyword && keyword->starts_with('}'))
            reader.nextKeyword();
        if (reader.getKeyword()) {
            fail(Outcome::Incomplete, "there is content behind the root", offset);
            return;
        }
        std::size_t const end = offsetIn(in_);
        std::string_view const read = withoutTrailingBlanks(std::string_view(text_).substr(0, end));
        if (document_.rendering == ModelFormat::XmlV2 && !read.ends_with(ModelFormat::XML_ROOT_END_TAG))
            fail(Outcome::Unreadable, "the end tag of the document is missing", text_.size());
        else if (document_.rendering == ModelFormat::Text &&
                 !read.ends_with('}')) // A word ends with the input.
            fail(Outcome::Incomplete, "there is content behind the root", offset);
        else if (!isBlank(std::string_view(text_).substr(end)))
            fail(Outcome::Incomplete, "there is content behind the end of the document", end);
    }

    std::string const& text_;
    TextInput buffer_;
    std::istream in_;
    Document document_;
};

void writeHeader(WriteToScope& scope, Document const& document, Rendering rendering) {
    ModelOutFormat& out = scope.getMof();
    if (!document.header) {
        // Text needs no header; XML must be recognised when it is read again.
        if (rendering == ModelFormat::XmlV2)
            out.output() << ModelFormat::XML_HEADER << '\n'
                         << ModelFormat::XML_V2_COMMENT << '\n'
                         << ModelFormat::XML_ROOT_START_TAG << '\n';
        return;
    }
    Header const& header = *document.header;
    if (!header.format) {
        out.writeHeader(header.title);
        return;
    }
    Version versions(version);
    versions.setFormatVersion(*header.format);
    if (header.rootModel)
        versions.setRootModelVersion(*header.rootModel);
    bool const withRootModel = header.rootModel || document.rendering == ModelFormat::XmlV2;
    out.writeHeader(header.title, versions, withRootModel);
}

} // namespace

ReferencedContainers::~ReferencedContainers() {
    for (auto const& reference : containers_) {
        auto const container = reference.lock();
        if (!container)
            continue;
        for (std::uint64_t token = container->getNumFields(); token-- > 0;)
            container->rmField(token);
        if (auto* object = dynamic_cast<Object*>(container.get()))
            for (std::uint64_t i = object->children().getNumChildren(); i-- > 0;)
                object->rmChild(i, 0);
    }
}

Document readDocument(std::string const& text, Progress* progress) {
    std::optional<std::string> const plain = withPlainStart(text);
    Document document = DocumentReader(plain ? *plain : text, progress).run();
    document.size = text.size();
    return document;
}

std::size_t expectedSize(Document const& document, Rendering rendering) {
    if (rendering == document.rendering)
        return document.size;
    // Tags take about half as much again as text.
    return rendering == ModelFormat::Text ? document.size / 3 * 2 : document.size / 2 * 3;
}

std::optional<std::string> writeDocument(Document const& document, Rendering rendering, Result& why,
                                         Progress* progress) {
    TextOutput buffer(progress, expectedSize(document, rendering));
    std::ostream out(&buffer);
    auto const context = std::make_shared<WriteContext>(rendering, document.hasInstanceIds);
    WriteToScope scope(out, context);
    writeHeader(scope, document, rendering);
    why = document.root->writeTo(out, context);
    if (why && !why->isWarning())
        return std::nullopt;
    scope.getMof().writeFooter();
    if (!out) {
        why = std::make_unique<ErrorWithCode<ErrorCode>>("kxmodel", __LINE__, StreamFailure);
        return std::nullopt;
    }
    return buffer.take();
}

} // namespace kxmodel
