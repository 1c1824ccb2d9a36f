// SPDX-License-Identifier: MIT

// Boost.PropertyTree, in its own format INFO. Its tree holds strings, so that documents are converted from
// and to plain structs.

#include "../Text.h"
#include "../TreeTasks.h"

#include <boost/property_tree/info_parser.hpp>
#include <boost/property_tree/ptree.hpp>

#include <sstream>

namespace bench {

namespace {

struct BoostPropertyTree : OnPlainStructs {
    static constexpr char name[] = "Boost.PropertyTree";
    using Properties = boost::property_tree::ptree;

    static std::string write(Tree const& tree) {
        std::ostringstream out;
        boost::property_tree::write_info(out, propertiesOf(tree));
        return std::move(out).str();
    }
    static Tree read(std::string_view text) {
        ViewStream in(text);
        Properties properties;
        boost::property_tree::read_info(in, properties);
        return nodeOf(properties);
    }

private:
    static Properties propertiesOf(Node const& node) {
        Properties properties;
        properties.put("name", node.name);
        properties.put("count", node.count);
        properties.put("length", numbersText(std::array{node.length}));
        properties.put("label", node.label);
        properties.put("isOpen", node.isOpen);
        properties.put("position", numbersText(node.position));
        properties.put("id", idText(node.id));
        properties.put("samples", numbersText(node.samples));
        Properties& tags = properties.put("tags", "");
        for (auto const& [key, value] : node.tags)
            tags.put(key, value);
        Properties& children = properties.put("children", "");
        for (Node const& child : node.children)
            children.push_back({"node", propertiesOf(child)});
        return properties;
    }

    static Node nodeOf(Properties const& properties) {
        Node node;
        node.name = properties.get<std::string>("name");
        node.count = properties.get<int>("count");
        node.length = parseNumber<double>(properties.get<std::string>("length"));
        node.label = properties.get<std::string>("label");
        node.isOpen = properties.get<bool>("isOpen");
        node.position = parsePosition(properties.get<std::string>("position"));
        node.id = parseId(properties.get<std::string>("id"));
        node.samples = parseVector(properties.get<std::string>("samples"));
        for (auto const& [key, value] : properties.get_child("tags"))
            node.tags.emplace_hint(node.tags.end(), key, value.data());
        for (auto const& child : properties.get_child("children"))
            node.children.push_back(nodeOf(child.second));
        return node;
    }
};

Registration const registration(TreeTasks<BoostPropertyTree>::contender());

} // namespace

} // namespace bench
