// SPDX-License-Identifier: MIT

// nlohmann::json: its own tree, in which numbers are numbers, is the live one. Children are members by name.

#include "../Text.h"
#include "../TreeTasks.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace bench {

namespace {

struct NlohmannJson {
    static constexpr char name[] = "nlohmann::json";
    using Tree = nlohmann::json;

    static Tree build(Node const& plan) {
        Tree tree = Tree::object();
        tree["name"] = plan.name;
        tree["count"] = plan.count;
        tree["length"] = plan.length;
        tree["label"] = plan.label;
        tree["isOpen"] = plan.isOpen;
        tree["position"] = plan.position;
        tree["id"] = idText(plan.id);
        tree["samples"] = plan.samples;
        tree["tags"] = plan.tags;
        if (!plan.children.empty()) {
            Tree& children = tree["children"] = Tree::object();
            for (Node const& child : plan.children)
                children[child.name] = build(child);
        }
        return tree;
    }

    static Node plain(Tree const& tree) {
        Node node{tree["name"],
                  tree["count"],
                  tree["length"],
                  tree["label"],
                  tree["isOpen"],
                  tree["position"],
                  parseId(tree["id"].get_ref<std::string const&>()),
                  tree["samples"],
                  tree["tags"],
                  {}};
        if (auto const children = tree.find("children"); children != tree.end())
            for (Tree const& child : *children)
                node.children.push_back(plain(child));
        // They are sorted by their names here, "n10" before "n2".
        std::sort(node.children.begin(), node.children.end(), [](Node const& a, Node const& b) {
            return std::pair(a.name.size(), a.name) < std::pair(b.name.size(), b.name);
        });
        return node;
    }

    static std::string write(Tree const& tree) { return tree.dump(); }
    static Tree read(std::string_view text) { return Tree::parse(text); }
    static Tree copy(Tree const& tree) { return tree; }
    static bool isEqual(Tree const& first, Tree const& second) { return first == second; }
    static void merge(Tree& target, Tree const& source) { target.merge_patch(source); }

    static Tree const* find(Tree const& tree, std::string const& path) {
        Tree const* node = &tree;
        for (std::size_t begin = 0; begin < path.size();) {
            std::size_t const end = std::min(path.find('/', begin), path.size());
            node = &node->at("children").at(path.substr(begin, end - begin));
            begin = end + 1;
        }
        return node;
    }
    static int number(Tree const* node, std::string const& attribute) {
        return node->at(attribute).get<int>();
    }
};

Registration const registration(TreeTasks<NlohmannJson>::contender());

} // namespace

} // namespace bench
