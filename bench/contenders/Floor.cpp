// SPDX-License-Identifier: MIT

// What the machine allows: plain structs, a writer and a reader made for them by hand, on one buffer.

#include "../Text.h"
#include "../TreeTasks.h"

#include <algorithm>
#include <stdexcept>

namespace bench {

namespace {

void appendQuoted(std::string& out, std::string_view text) {
    out += '"';
    for (std::size_t special; (special = text.find_first_of("\"\\")) != text.npos;) {
        out.append(text.substr(0, special)) += '\\';
        out += text[special];
        text.remove_prefix(special + 1);
    }
    out.append(text) += '"';
}

template <class Numbers>
void appendNumbers(std::string& out, Numbers const& numbers) {
    for (double const number : numbers) {
        out += ' ';
        appendNumber(out, number);
    }
}

void appendNode(std::string& out, Node const& node) {
    appendQuoted(out, node.name);
    out += ' ';
    appendNumber(out, node.count);
    out += ' ';
    appendNumber(out, node.length);
    out += ' ';
    appendQuoted(out, node.label);
    out += node.isOpen ? " 1" : " 0";
    appendNumbers(out, node.position);
    out += ' ';
    appendId(out, node.id);
    out += ' ';
    appendNumber(out, node.samples.size());
    appendNumbers(out, node.samples);
    out += ' ';
    appendNumber(out, node.tags.size());
    for (auto const& [key, value] : node.tags) {
        appendQuoted(out += ' ', key);
        appendQuoted(out += ' ', value);
    }
    out += ' ';
    appendNumber(out, node.children.size());
    out += '\n';
    for (Node const& child : node.children)
        appendNode(out, child);
}

class Reader {
public:
    explicit Reader(std::string_view text) : position_(text.data()), end_(position_ + text.size()) {}

    Node node() {
        Node node;
        node.name = quoted();
        node.count = number<int>();
        node.length = number<double>();
        node.label = quoted();
        node.isOpen = number<int>() != 0;
        for (double& component : node.position)
            component = number<double>();
        node.id = parseId({position_, 2 * node.id.size()});
        skip(2 * node.id.size() + 1);
        node.samples.resize(number<std::size_t>());
        for (double& sample : node.samples)
            sample = number<double>();
        for (auto count = number<std::size_t>(); count > 0; --count) {
            std::string key = quoted();
            node.tags.emplace_hint(node.tags.end(), std::move(key), quoted());
        }
        auto const numChildren = number<std::size_t>();
        node.children.reserve(numChildren);
        for (std::size_t i = 0; i < numChildren; ++i)
            node.children.push_back(this->node());
        return node;
    }

private:
    void skip(std::ptrdiff_t count) {
        if (end_ - position_ < count)
            throw std::runtime_error("the document ends early");
        position_ += count;
    }

    template <class T>
    T number() {
        T value{};
        auto const result = std::from_chars(position_, end_, value);
        if (result.ec != std::errc())
            throw std::runtime_error("a number is expected");
        position_ = result.ptr;
        skip(1);
        return value;
    }

    std::string quoted() {
        skip(1);
        std::string text;
        for (;;) {
            char const* const stop = std::find_if(
                position_, end_, [](char character) { return character == '"' || character == '\\'; });
            text.append(position_, stop);
            position_ = stop;
            skip(2);
            if (*stop == '"')
                return text;
            text += stop[1];
        }
    }

    char const* position_;
    char const* end_;
};

struct FloorTree {
    static constexpr char name[] = "floor";
    using Tree = Node;

    static bool accepts(Shape) { return true; }
    static Tree build(Node const& plan) { return plan; }
    static Node plain(Tree const& tree) { return tree; }
    static std::string write(Tree const& tree) {
        std::string out;
        appendNode(out, tree);
        return out;
    }
    static Tree read(std::string_view document) { return Reader(document).node(); }
    static Tree copy(Tree const& tree) { return tree; }
    static bool isEqual(Tree const& first, Tree const& second) { return first == second; }
    static void merge(Tree& target, Tree const& source) {
        if (target.name != source.name || target.children.size() != source.children.size()) {
            target = source;
            return;
        }
        assignIfOther(target.count, source.count);
        assignIfOther(target.length, source.length);
        assignIfOther(target.label, source.label);
        assignIfOther(target.isOpen, source.isOpen);
        assignIfOther(target.position, source.position);
        assignIfOther(target.id, source.id);
        assignIfOther(target.samples, source.samples);
        assignIfOther(target.tags, source.tags);
        for (std::size_t i = 0; i < source.children.size(); ++i)
            merge(target.children[i], source.children[i]);
    }

    /// The children of a node are searched one after the other.
    static Node const* find(Tree const& tree, std::string const& path) {
        Node const* node = &tree;
        for (std::size_t begin = 0; node && begin < path.size();) {
            std::size_t const end = std::min(path.find('/', begin), path.size());
            std::string_view const step(path.data() + begin, end - begin);
            auto const child = std::find_if(node->children.begin(), node->children.end(),
                                            [&](Node const& candidate) { return candidate.name == step; });
            node = child != node->children.end() ? &*child : nullptr;
            begin = end + 1;
        }
        return node;
    }
    static int number(Node const* node, std::string const& attribute) {
        return attribute == "count" ? node->count : 0;
    }

private:
    template <class T>
    static void assignIfOther(T& target, T const& source) {
        if (target != source)
            target = source;
    }
};

Registration const registration(TreeTasks<FloorTree>::contender());

} // namespace

} // namespace bench
