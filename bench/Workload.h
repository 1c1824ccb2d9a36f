// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// One node of the tree that every contender builds, writes and reads: a name and eight attributes. The plain
/// struct is the description of the work and, at the same time, what contenders without objects of their own
/// read into.
struct Node {
    std::string name;
    int count = 0;
    double length = 0;
    std::string label; ///< 24 characters; one in 16 has a quote and a backslash.
    bool isOpen = false;
    std::array<double, 3> position{};
    std::array<std::uint8_t, 16> id{};
    std::vector<double> samples;
    std::map<std::string, std::string> tags;

    std::vector<Node> children;

    friend bool operator==(Node const&, Node const&) = default;
};

/// What a tree looks like.
enum class Shape {
    Tree,   ///< Ten children a node.
    Wide,   ///< All nodes are children of the root.
    Members ///< As Wide, and only the name and the count of a node say something.
};

/// The tree of so many nodes, the same in every run and on every machine.
Node makeTree(std::size_t numNodes, Shape shape = Shape::Tree);

/// The paths, below the root, of `count` nodes that lie all over a tree made by `makeTree`: "n1/n12".
std::vector<std::string> samplePaths(std::size_t numNodes, Shape shape, std::size_t count);

} // namespace bench
