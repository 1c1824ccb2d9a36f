// SPDX-License-Identifier: MIT
#pragma once

#include "containers/ApplicationClasses.h"

#include <AttributeContainer/ArrayContainer.h>
#include <AttributeContainer/AttrContComparer.h>
#include <AttributeContainer/AttrContMerger.h>

#include <memory>
#include <random>
#include <string>

namespace Zorvan::AttributeContainer::Testing {

using Container = std::shared_ptr<AttrContainer>;

template <class T>
std::shared_ptr<CustAttr<T>> add(Container const& container, std::string const& name, T const& value) {
    auto attribute = std::make_shared<CustAttr<T>>(value);
    EXPECT_FALSE(container->addAttribute(attribute, name).expired()) << name;
    return attribute;
}

/// A new field with a name of its own, under `slotName`, whether or not there are others of that name.
template <class T = AttrContainer>
Container addField(Container const& parent, std::string const& slotName, std::string const& ownName) {
    auto const field = named<T>(ownName);
    EXPECT_TRUE(parent->addField(field, slotName, 4));
    return field;
}

inline std::uint64_t differences(AttrContainer const& a, AttrContainer const& b, int mode = 0) {
    return AttrContComparer(-1, mode).compare(a, b);
}

/// The paths of the differences, separated by blanks.
inline std::string paths(AttrContComparerKeepDiffs const& comparer) {
    std::string text;
    for (std::uint64_t i = 0; i < comparer.getNumMismatches(); ++i)
        text += (i ? " " : "") + *comparer.getMismatch(i);
    return text;
}

inline std::string text(AttrContMerger::Result const& r) {
    std::string text;
    for (auto const counter :
         {r.changed, r.unchanged, r.addedAttributes, r.removedAttributes, r.addedFields, r.removedFields})
        text += (text.empty() ? "" : " ") + std::to_string(counter);
    return text;
}

/// Two trees that differ in each way that a difference can arise.
struct Differing {
    Container a = named("a"), b = named("a");

    Differing() {
        add(a, "n", 1);
        add(a, "d", 1.000001);
        add(a, "onlyA", 1);
        add(addField(a, "f", "cfg"), "w", 1);
        addField(a, "g", "g");
        add(b, "d", 1.000004);
        add(b, "n", 2);
        add(b, "onlyB", 1);
        add(b, "onlyB2", 1);
        auto const cfg = addField(b, "f", "cfg");
        add(cfg, "w", 2);
        add(cfg, "v", 3);
        add(addField(b, "h", "h"), "k", 1);
    }
};

/// A tree of a few dozen containers. What has one name is of one class or type, so that a merge can make any
/// two trees equal; several members may have one name.
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : random_(seed) {}

    Container make(int depth = 3) {
        auto const root = AttrContainer::create();
        fill(root, depth);
        return root;
    }

private:
    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

    void fill(Container const& container, int depth) {
        EXPECT_FALSE(container->setName("name" + std::to_string(below(3)), 0));
        for (unsigned i = below(6); i > 0; --i)
            addAttribute(container);
        for (unsigned i = depth > 0 ? below(5) : 0; i > 0; --i)
            addFieldTo(container, depth - 1);
    }

    void addAttribute(Container const& container) {
        int const value = static_cast<int>(below(3));
        switch (std::string const number = std::to_string(below(2)); below(5)) {
        case 0:
            add(container, "int" + number, value);
            break;
        case 1:
            add(container, "double" + number, value / 3.0);
            break;
        case 2:
            add(container, "string" + number, std::string(static_cast<std::size_t>(value) * 9, 's'));
            break;
        case 3:
            add(container, "list" + number, std::vector<double>(static_cast<std::size_t>(value), 0.5));
            break;
        default:
            add(container, "matrix" + number, Mat4d<float>());
        }
    }

    void addFieldTo(Container const& container, int depth) {
        switch (std::string const number = std::to_string(below(2)); below(6)) {
        case 0:
            fill(addField<ArrayContainer>(container, "array" + number, "array"), depth);
            break;
        case 1: {
            auto const pump = addField<Pump>(container, "pump", "pump");
            if (below(2)) { // A declared slot is filled or empty.
                EXPECT_TRUE(pump->setField(1, make(0)));
            }
            break;
        }
        default:
            fill(addField(container, "field" + number, "field"), depth);
        }
    }

    std::mt19937 random_;
};

} // namespace Zorvan::AttributeContainer::Testing
