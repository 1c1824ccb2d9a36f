// SPDX-License-Identifier: MIT

// RapidJSON: parsing into its document, then conversion into plain structs; writing from them directly.

#include "../Text.h"
#include "../TreeTasks.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <stdexcept>

namespace bench {

namespace {

struct RapidJson : OnPlainStructs {
    static constexpr char name[] = "RapidJSON";
    using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

    static rapidjson::StringBuffer write(Tree const& tree) {
        rapidjson::StringBuffer out;
        Writer writer(out);
        writeNode(writer, tree);
        return out;
    }
    static std::string_view view(rapidjson::StringBuffer const& document) {
        return {document.GetString(), document.GetSize()};
    }

    static Tree read(std::string_view text) {
        rapidjson::Document document;
        // Without its flag for full precision: numbers of nine digits come back exactly, and faster.
        document.Parse(text.data(), text.size());
        if (document.HasParseError())
            throw std::runtime_error("RapidJSON cannot read the document");
        Node node;
        readNode(document, node);
        return node;
    }

private:
    static void writeText(Writer& writer, std::string const& text) {
        writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
    template <class Numbers>
    static void writeNumbers(Writer& writer, Numbers const& numbers) {
        writer.StartArray();
        for (double const number : numbers)
            writer.Double(number);
        writer.EndArray();
    }

    static void writeNode(Writer& writer, Node const& node) {
        writer.StartObject();
        writer.Key("name");
        writeText(writer, node.name);
        writer.Key("count");
        writer.Int(node.count);
        writer.Key("length");
        writer.Double(node.length);
        writer.Key("label");
        writeText(writer, node.label);
        writer.Key("isOpen");
        writer.Bool(node.isOpen);
        writer.Key("position");
        writeNumbers(writer, node.position);
        writer.Key("id");
        writeText(writer, idText(node.id));
        writer.Key("samples");
        writeNumbers(writer, node.samples);
        writer.Key("tags");
        writer.StartObject();
        for (auto const& [key, value] : node.tags) {
            writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
            writeText(writer, value);
        }
        writer.EndObject();
        writer.Key("children");
        writer.StartArray();
        for (Node const& child : node.children)
            writeNode(writer, child);
        writer.EndArray();
        writer.EndObject();
    }

    static std::string textOf(rapidjson::Value const& value) {
        return {value.GetString(), value.GetStringLength()};
    }

    static void readNode(rapidjson::Value const& value, Node& node) {
        node.name = textOf(value["name"]);
        node.count = value["count"].GetInt();
        node.length = value["length"].GetDouble();
        node.label = textOf(value["label"]);
        node.isOpen = value["isOpen"].GetBool();
        for (rapidjson::SizeType i = 0; i < node.position.size(); ++i)
            node.position[i] = value["position"][i].GetDouble();
        node.id = parseId(value["id"].GetString());
        auto const samples = value["samples"].GetArray();
        node.samples.reserve(samples.Size());
        for (auto const& sample : samples)
            node.samples.push_back(sample.GetDouble());
        for (auto const& tag : value["tags"].GetObject())
            node.tags.emplace_hint(node.tags.end(), textOf(tag.name), textOf(tag.value));
        auto const children = value["children"].GetArray();
        node.children.resize(children.Size());
        for (rapidjson::SizeType i = 0; i < children.Size(); ++i)
            readNode(children[i], node.children[i]);
    }
};

Registration const registration(TreeTasks<RapidJson>::contender());

} // namespace

} // namespace bench
