// SPDX-License-Identifier: MIT

// pugixml: its document between the text and plain structs, for both directions.

#include "../Text.h"
#include "../TreeTasks.h"

#include <pugixml.hpp>

#include <stdexcept>

namespace bench {

namespace {

class StringWriter : public pugi::xml_writer {
public:
    explicit StringWriter(std::string& out) : out_(out) {}
    void write(void const* data, std::size_t size) override {
        out_.append(static_cast<char const*>(data), size);
    }

private:
    std::string& out_;
};

struct PugiXml : OnPlainStructs {
    static constexpr char name[] = "pugixml";

    static std::string write(Tree const& tree) {
        pugi::xml_document document;
        pugi::xml_node root = document.append_child("node");
        writeNode(root, tree);
        std::string text;
        StringWriter writer(text);
        document.save(writer, "", pugi::format_raw);
        return text;
    }

    static Tree read(std::string_view text) {
        pugi::xml_document document;
        if (!document.load_buffer(text.data(), text.size()))
            throw std::runtime_error("pugixml cannot read the document");
        Node node;
        readNode(document.child("node"), node);
        return node;
    }

private:
    static void add(pugi::xml_node& element, char const* attribute, std::string const& value) {
        element.append_attribute(attribute).set_value(value.c_str());
    }

    static void writeNode(pugi::xml_node& element, Node const& node) {
        add(element, "name", node.name);
        element.append_attribute("count").set_value(node.count);
        add(element, "length", numbersText(std::array{node.length}));
        add(element, "label", node.label);
        element.append_attribute("isOpen").set_value(node.isOpen);
        add(element, "position", numbersText(node.position));
        add(element, "id", idText(node.id));
        add(element, "samples", numbersText(node.samples));
        for (auto const& [key, value] : node.tags) {
            pugi::xml_node tag = element.append_child("tag");
            add(tag, "key", key);
            add(tag, "value", value);
        }
        for (Node const& child : node.children) {
            pugi::xml_node below = element.append_child("node");
            writeNode(below, child);
        }
    }

    static void readNode(pugi::xml_node const& element, Node& node) {
        node.name = element.attribute("name").value();
        node.count = element.attribute("count").as_int();
        node.length = parseNumber<double>(element.attribute("length").value());
        node.label = element.attribute("label").value();
        node.isOpen = element.attribute("isOpen").as_bool();
        node.position = parsePosition(element.attribute("position").value());
        node.id = parseId(element.attribute("id").value());
        node.samples = parseVector(element.attribute("samples").value());
        for (auto const& tag : element.children("tag"))
            node.tags.emplace_hint(node.tags.end(), tag.attribute("key").value(),
                                   tag.attribute("value").value());
        for (auto const& child : element.children("node"))
            readNode(child, node.children.emplace_back());
    }
};

Registration const registration(TreeTasks<PugiXml>::contender());

} // namespace

} // namespace bench
