// SPDX-License-Identifier: MIT
#include "DocumentFile.h"
#include "Files.h"
#include "Process.h"
#include "TreePath.h"
#include "TreeText.h"

#include <AttributeContainer/AttributePropagationObserver.h>
#include <AttributeContainer/Object.h>

#include <unordered_map>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

/// A text in the quotes of the dot language, which takes "&" for the start of an entity.
std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (char const c : onOneLine(text)) {
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
        if (c == '&')
            result += "amp;";
    }
    return result + '"';
}

/// Without the quotes that a document puts around a string.
std::string_view unquoted(std::string_view text) {
    return text.size() >= 2 && text.front() == '"' ? text.substr(1, text.size() - 2) : text;
}

/// The tree as a text in the dot language: a box for each container, an arrow to each child, a dashed one to
/// each field, and a coloured one for each observer link, from what is observed to the observer.
class DotWriter {
public:
    /// The containers nearest to the root are drawn. More of them could neither be laid out in reasonable
    /// time nor be read.
    explicit DotWriter(AttrContainer& root) {
        add(root);
        for (std::size_t i = 0; i < shown_.size(); ++i)
            addMembers(i);
        for (std::size_t i = 0; i < shown_.size(); ++i)
            addLinks(i);
    }

    std::string text() const {
        return "digraph kxmodel {\nnode [shape=box, fontname=\"sans-serif\"]\n"
               "edge [fontname=\"sans-serif\", fontsize=10]\n" +
               out_ + "}\n";
    }
    std::uint64_t numOmitted() const { return numOmitted_; }

private:
    static std::string nodeName(std::size_t index) { return "n" + std::to_string(index); }

    /// Draws a container unless that is done; nothing when there is no room for it.
    std::optional<std::size_t> add(AttrContainer& container) {
        if (auto const found = indexes_.find(&container); found != indexes_.end())
            return found->second;
        if (shown_.size() == maxGraphNodes)
            return std::nullopt;
        std::size_t const index = shown_.size();
        shown_.push_back(&container);
        indexes_.emplace(&container, index);
        out_ += nodeName(index) + " [label=" + quoted(container.getName()) + "+\"\\n\"+" +
                quoted(classTextOf(container)) + "]\n";
        return index;
    }

    void addMembers(std::size_t parent) {
        AttrContainer& container = *shown_[parent];
        std::uint64_t numOmitted = 0;
        auto const draw = [&](AttrContainer& member, std::string const& style) {
            if (auto const index = add(member))
                out_ += nodeName(parent) + " -> " + nodeName(*index) + style + '\n';
            else
                ++numOmitted;
        };
        for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
            if (auto const field = container.getField(token).lock())
                draw(*field,
                     " [style=dashed, label=" + quoted(container.getFieldName(token).value_or("")) + "]");
        if (auto* object = dynamic_cast<Object*>(&container))
            for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
                draw(*object->children().getChild(i), "");
        if (numOmitted == 0)
            return;
        numOmitted_ += numOmitted;
        std::string const note = "more" + std::to_string(parent);
        out_ += note + " [shape=plaintext, label=\"... " + std::to_string(numOmitted) + " more\"]\n" +
                nodeName(parent) + " -> " + note + " [style=dotted]\n";
    }

    void addLinks(std::size_t index) {
        AttrContainer& container = *shown_[index];
        drawLinks(index, *container.observable(), "");
        for (std::uint64_t token = 0; token < container.getNumAttributes(); ++token)
            if (auto const attribute = container.getAttr(token).lock())
                drawLinks(index, *attribute, attribute->getName() + ": ");
    }

    void drawLinks(std::size_t index, Observable& observable, std::string const& observed) {
        for (LinkText const& link : linksOf(observable)) {
            std::string const path(unquoted(link.path));
            std::string const label = observed + std::string(unquoted(link.action)) + " " + link.priority;
            out_ += nodeName(index) + " -> " + observerNode(observable, path) + " [label=" + quoted(label) +
                    ", constraint=false, color=" + (link.kind.starts_with("pre") ? "red" : "blue") + "]\n";
        }
    }

    /// The container of the observer that a path names; a node of its own when it is not drawn.
    std::string observerNode(Observable& observable, std::string const& path) {
        auto const observer = observable.inqObserver(path).lock();
        auto const* container = dynamic_cast<AttrContainer const*>(observer.get());
        std::shared_ptr<Attribute const> attribute = std::dynamic_pointer_cast<Attribute const>(observer);
        if (auto const* follower = dynamic_cast<AttributePropagationObserver const*>(observer.get()))
            attribute = follower->getTarget();
        if (attribute && attribute->getLocation())
            container = &attribute->getLocation()->get();
        if (auto const found = indexes_.find(container); found != indexes_.end())
            return nodeName(found->second);
        auto const [place, isNew] = elsewhere_.emplace(path, "x" + std::to_string(elsewhere_.size()));
        if (isNew)
            out_ += place->second + " [style=dotted, label=" + quoted(path) + "]\n";
        return place->second;
    }

    std::vector<AttrContainer*> shown_;
    std::unordered_map<AttrContainer const*, std::size_t> indexes_;
    std::unordered_map<std::string, std::string> elsewhere_;
    std::uint64_t numOmitted_ = 0;
    std::string out_;
};

bool endsIn(std::string const& path, std::string_view ending) {
    return path.size() > ending.size() &&
           isSimilar(std::string_view(path).substr(path.size() - ending.size()), ending);
}

} // namespace

Status graph(GraphOptions const& options) {
    bool const isPicture = endsIn(options.out, ".svg");
    if (!isPicture && options.out != "-" && !endsIn(options.out, ".dot")) {
        printMessage(options.out, "a graph goes to a file that ends in .dot or .svg");
        return Status::Failed;
    }
    DocumentFile file(options.file);
    Document const& document = file.document();
    bool const isRead = document.outcome < Outcome::Incomplete;
    if (!isRead) {
        file.report().print(document);
        return Status::Failed;
    }
    DotWriter const writer(*document.root);
    std::string content = writer.text();
    if (isPicture) {
        try {
            content = runProgram("dot", {"-Tsvg"}, content);
        } catch (ProcessError const& error) {
            printMessage(options.out, std::string("the picture needs Graphviz: ") + error.what());
            return Status::Failed;
        }
    }
    writeAll(options.out, content);
    if (writer.numOmitted() != 0)
        printMessage(file.name(), "note: only the " + std::to_string(maxGraphNodes) +
                                      " containers nearest to the root are drawn");
    return Status::Good;
}

} // namespace kxmodel
