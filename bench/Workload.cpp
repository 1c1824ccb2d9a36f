// SPDX-License-Identifier: MIT
#include "Workload.h"

#include <algorithm>

namespace bench {

namespace {

constexpr std::size_t treeFanOut = 10;

/// Numbers that look random, always the same ones for a node.
class Numbers {
public:
    explicit Numbers(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15U;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31);
    }
    /// About nine decimal digits.
    double nextDouble() {
        double const digits = static_cast<double>(next() % 2'000'000'000U) - 1e9;
        return digits / 1e6;
    }
    char nextLetter() { return static_cast<char>('a' + next() % 26); }

private:
    std::uint64_t state_;
};

std::string labelOf(std::size_t index, Numbers& numbers) {
    std::string label(24, ' ');
    for (char& character : label)
        character = numbers.nextLetter();
    label[8] = label[16] = ' ';
    if (index % 16 == 3) {
        label[5] = '"';
        label[11] = '\\';
    }
    return label;
}

void fill(Node& node, std::size_t index) {
    Numbers numbers(index);
    node.length = numbers.nextDouble();
    node.label = labelOf(index, numbers);
    node.isOpen = index % 2 == 1;
    for (double& component : node.position)
        component = numbers.nextDouble();
    for (std::uint8_t& byte : node.id)
        byte = static_cast<std::uint8_t>(numbers.next());
    for (int i = 0; i < 8; ++i)
        node.samples.push_back(numbers.nextDouble());
    node.tags = {{"kind", std::string(6, numbers.nextLetter())}, {"owner", "o" + std::to_string(index % 97)}};
}

std::size_t fanOutOf(std::size_t numNodes, Shape shape) {
    return shape == Shape::Tree ? treeFanOut : numNodes;
}

/// The nodes are numbered level by level, from 0 for the root.
Node makeNode(std::size_t index, std::size_t numNodes, Shape shape) {
    Node node;
    node.name = "n" + std::to_string(index);
    node.count = static_cast<int>(index * 7919 % 1'000'003 + 1);
    if (shape != Shape::Members)
        fill(node, index);
    std::size_t const fanOut = fanOutOf(numNodes, shape);
    std::size_t const first = index * fanOut + 1;
    std::size_t const last = std::min(first + fanOut, numNodes);
    if (first < last)
        node.children.reserve(last - first);
    for (std::size_t child = first; child < last; ++child)
        node.children.push_back(makeNode(child, numNodes, shape));
    return node;
}

} // namespace

Node makeTree(std::size_t numNodes, Shape shape) { return makeNode(0, numNodes, shape); }

std::vector<std::string> samplePaths(std::size_t numNodes, Shape shape, std::size_t count) {
    Numbers numbers(count);
    std::size_t const fanOut = fanOutOf(numNodes, shape);
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < count; ++i) {
        std::string path;
        for (std::size_t index = 1 + numbers.next() % (numNodes - 1); index != 0;
             index = (index - 1) / fanOut)
            path = "n" + std::to_string(index) + (path.empty() ? "" : "/") + path;
        paths.push_back(path);
    }
    return paths;
}

} // namespace bench
