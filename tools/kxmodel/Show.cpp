// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Files.h"
#include "Placeholder.h"
#include "Report.h"
#include "TreeText.h"

#include <AttributeContainer/Object.h>

#include <limits>
#include <string_view>
#include <unordered_set>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

constexpr std::size_t maxValueLength = 72;

class TreeWriter {
public:
    explicit TreeWriter(ShowOptions const& options)
        : options_(options), maxLevel_(options.depth.value_or(std::numeric_limits<std::uint32_t>::max())) {}

    /// Writes a container and what is below it. `role` says what it is to the container above it.
    void write(AttrContainer& container, std::string const& role, std::uint32_t level) {
        line(level) += role + classTextOf(container) + " \"" + onOneLine(container.getName()) + "\"";
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

    /// The size of what a placeholder keeps as text; true when that is all that there is of it.
    bool writeKept(AttrContainer const& container) {
        std::size_t const length = numBytesKept(container);
        if (length != 0)
            out_ += ", " + std::to_string(length) + " bytes kept as text";
        return length != 0 && isKeptAsText(container);
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
        line(level).append(shortTypeOf(attribute)) += " " + onOneLine(attribute.getName());
        if (!options_.hidesValues)
            out_ += " = " + shortened(onOneLine(valueTextOf(attribute)));
        out_ += '\n';
        if (options_.showsLinks)
            writeLinks(attribute, level + 1);
    }

    std::string shortened(std::string text) const {
        if (options_.isFull || text.size() <= maxValueLength)
            return text;
        std::size_t end = maxValueLength;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
            --end; // a character of several bytes stays whole
        return text.substr(0, end) + "... (" + std::to_string(text.size()) + " characters)";
    }

    void writeLinks(Observable& observable, std::uint32_t level) {
        for (LinkText const& link : linksOf(observable))
            line(level) += link.kind + " " + link.path + ", action " + link.action + ", priority " +
                           link.priority + '\n';
    }

    ShowOptions const& options_;
    std::uint32_t maxLevel_;
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
