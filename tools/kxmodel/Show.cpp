// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Files.h"
#include "Report.h"

#include <AttributeContainer/FallbackObject.h>
#include <AttributeContainer/Object.h>
#include <AttributeContainer/UnknownAttrContainer.h>
#include <AttributeContainer/WriteContextBase.h>

#include <limits>
#include <sstream>
#include <string_view>
#include <unordered_set>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

constexpr std::size_t maxValueLength = 72;

/// The lines of a text that a writer made; each of them begins with a line break.
std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        std::size_t const end = text.find('\n');
        if (end != 0)
            lines.push_back(text.substr(0, end));
        text = end == text.npos ? std::string_view() : text.substr(end + 1);
    }
    return lines;
}

/// What follows a key at the start of a line.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view key) {
    if (!line.starts_with(key) || line.size() <= key.size() || line[key.size()] != ' ')
        return std::nullopt;
    return line.substr(key.size() + 1);
}

class TreeWriter {
public:
    explicit TreeWriter(ShowOptions const& options)
        : options_(options), maxLevel_(options.depth.value_or(std::numeric_limits<std::uint32_t>::max())),
          context_(std::make_shared<WriteContextBase>()) {
        context_->setWriteDefaultValues(true);
    }

    /// Writes a container and what is below it. `role` says what it is to the container above it.
    void write(AttrContainer& container, std::string const& role, std::uint32_t level) {
        line(level) += role + className(container) + " \"" + onOneLine(container.getName()) + "\"";
        // A shared container is shown once; a container may even be shared by what is below it.
        if (!shown_.insert(&container).second) {
            out_ += " (shown above)\n";
            return;
        }
        bool const isKeptAsText = writeKept(container);
        out_ += '\n';
        if (isKeptAsText)
            return;

        if (options_.showsLinks)
            writeLinks(*container.observable(), level + 1);
        for (std::uint64_t token = 0; token < container.getNumAttributes(); ++token)
            if (auto const attribute = container.getAttr(token).lock())
                writeAttribute(*attribute, level + 1);
        writeMembers(container, level);
    }

    std::string take() { return std::move(out_); }

private:
    std::string& line(std::uint32_t level) { return out_.append(2 * std::size_t{level}, ' '); }

    static std::string className(AttrContainer const& container) {
        if (auto const* object = dynamic_cast<FallbackObject const*>(&container))
            return onOneLine(object->getFallbackClassName()) + " (unknown class)";
        if (auto const* unknown = dynamic_cast<UnknownAttrContainer const*>(&container))
            return onOneLine(unknown->getTypeName()) + " (unknown class)";
        return container.getClassName();
    }

    /// The size of what a placeholder keeps as text; true when that is all that there is of it.
    bool writeKept(AttrContainer const& container) {
        auto const* object = dynamic_cast<FallbackObject const*>(&container);
        std::size_t const length = object ? object->getHeaderText().size() + object->getBodyText().size() : 0;
        if (length != 0)
            out_ += ", " + std::to_string(length) + " bytes kept as text";
        return length != 0 && !object->isBodyParsed();
    }

    void writeMembers(AttrContainer& container, std::uint32_t level) {
        if (level >= maxLevel_) {
            writeOmitted(container, level + 1);
            return;
        }
        for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
            if (auto const field = container.getField(token).lock())
                write(*field, "field " + onOneLine(container.getFieldName(token).value_or("")) + ": ",
                      level + 1);
        if (auto* object = dynamic_cast<Object*>(&container))
            for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
                write(*object->children().getChild(i), "child ", level + 1);
    }

    void writeOmitted(AttrContainer& container, std::uint32_t level) {
        std::uint64_t numFields = 0;
        for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
            numFields += container.getField(token).expired() ? 0 : 1;
        auto const* object = dynamic_cast<Object*>(&container);
        std::uint64_t const numChildren = object ? object->children().getNumChildren() : 0;
        if (numFields != 0)
            line(level) += "... " + std::to_string(numFields) + (numFields == 1 ? " field\n" : " fields\n");
        if (numChildren != 0)
            line(level) +=
                "... " + std::to_string(numChildren) + (numChildren == 1 ? " child\n" : " children\n");
    }

    void writeAttribute(Attribute& attribute, std::uint32_t level) {
        std::string_view type = attribute.getClassName();
        if (type.starts_with("Attr<") && type.ends_with('>'))
            type = type.substr(5, type.size() - 6);
        line(level).append(type) += " " + onOneLine(attribute.getName());
        if (!options_.hidesValues)
            out_ += " = " + shortened(valueText(attribute));
        out_ += '\n';
        if (options_.showsLinks)
            writeLinks(attribute, level + 1);
    }

    /// The value in the form that documents have it; unlike the display text it has all digits and quotes
    /// strings.
    std::string valueText(Attribute& attribute) {
        std::ostringstream text;
        if (auto const failure = attribute.writeTo(text, context_); failure && !failure->isWarning())
            return errorCodeName(failure->getCode());
        for (std::string_view const entry : linesOf(text.view()))
            if (auto const value = valueOf(entry, "Value"))
                return onOneLine(value->substr(0, value->find_last_not_of(' ') + 1));
        return {};
    }

    std::string shortened(std::string text) const {
        if (options_.isFull || text.size() <= maxValueLength)
            return text;
        std::size_t end = maxValueLength;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
            --end; // a character of several bytes stays whole
        return text.substr(0, end) + "... (" + std::to_string(text.size()) + " characters)";
    }

    /// The persistent links, in the order of the document, those with an action that this program does not
    /// know too.
    void writeLinks(Observable& observable, std::uint32_t level) {
        std::ostringstream text;
        if (observable.writeTo(text, context_))
            return;
        std::string kind, path, priority;
        for (std::string_view const entry : linesOf(text.view())) {
            if (entry.starts_with("PreObserver"))
                kind = "pre-observer";
            else if (entry.starts_with("PostObserver"))
                kind = "post-observer";
            else if (auto const pathText = valueOf(entry, "Path"))
                path = *pathText;
            else if (auto const priorityText = valueOf(entry, "Priority"))
                priority = *priorityText;
            else if (auto const action = valueOf(entry, "Action"))
                line(level).append(kind).append(" ").append(path).append(", action ").append(*action) +=
                    ", priority " + priority + '\n';
        }
    }

    ShowOptions const& options_;
    std::uint32_t maxLevel_;
    std::shared_ptr<WriteContextBase> context_;
    std::unordered_set<AttrContainer const*> shown_;
    std::string out_;
};

} // namespace

Status show(ShowOptions const& options) {
    std::string const text = readAll(options.file);
    std::string const name = inputName(options.file);
    Document const document = readDocument(text);
    if (document.outcome >= Outcome::Incomplete)
        Report(name, text).print(document);
    if (!document.root)
        return Status::Failed;

    TreeWriter tree(options);
    tree.write(*document.root, "", 0);
    writeAll("-", tree.take());
    return document.outcome >= Outcome::Incomplete ? Status::Failed : Status::Good;
}

} // namespace kxmodel
