// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttributeContainer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace kxmodel_test {

using namespace Zorvan::AttributeContainer;

inline std::string documentOf(Object& root) {
    std::ostringstream out;
    EXPECT_EQ(root.writeTo(out, std::make_shared<WriteContextBase>()), nullptr);
    return out.str();
}

/// Makes trees of objects and fields with a few names each, so that two trees have much in common. What has
/// one name is of one class.
class RandomTree {
public:
    enum class Types { Change, Stay };
    explicit RandomTree(unsigned seed, Types types = Types::Change) : random_(seed), types_(types) {}

    std::shared_ptr<Object> make() {
        auto root = Object::create();
        fill(*root, 3);
        return root;
    }

private:
    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }

    void fill(AttrContainer& container, int depth) {
        for (char const* const name : {"a", "b", "c", "d"})
            if (below(3) > 0) {
                EXPECT_FALSE(container.addAttribute(attribute(), name).expired());
            }
        for (unsigned i = depth > 0 ? below(4) : 0; i > 0; --i) {
            unsigned const number = below(4);
            std::shared_ptr<AttrContainer> const field =
                number == 0 ? Object::create() : AttrContainer::create();
            fill(*field, depth - 1);
            EXPECT_TRUE(container.addField(field, "field" + std::to_string(number), 4));
        }
        auto* const object = dynamic_cast<Object*>(&container);
        for (unsigned i = object && depth > 0 ? below(4) : 0; i > 0; --i) {
            auto const child = Object::create();
            child->name("child" + std::to_string(below(4)));
            fill(*child, depth - 1);
            EXPECT_TRUE(object->addChild(child, 4));
        }
    }

    std::shared_ptr<Attribute> attribute() {
        int const value = static_cast<int>(below(3));
        switch (types_ == Types::Stay ? 0 : below(4)) {
        case 0:
        case 1:
            return std::make_shared<CustAttr<int>>(value);
        case 2:
            return std::make_shared<CustAttr<std::uint64_t>>(value);
        default:
            return std::make_shared<CustAttr<std::string>>("t" + std::to_string(value));
        }
    }

    std::mt19937 random_;
    Types types_;
};

/// Type and value of each attribute, by its path.
using Values = std::map<std::string, std::pair<std::string, std::string>>;

inline Values valuesOf(AttrContainer& container, std::string const& path = "") {
    Values values;
    for (std::uint64_t i = 0; i < container.getNumAttributes(); ++i) {
        auto const attribute = container.getAttr(i).lock();
        std::string const type = attribute->getClassName();
        auto const* text = dynamic_cast<Attr<std::string> const*>(attribute.get());
        values[path + "/" + attribute->getName()] = {type.substr(5, type.size() - 6),
                                                     text ? '"' + text->getValue() + '"'
                                                          : attribute->getValueAsText()};
    }
    std::map<std::string, int> numbers;
    auto const add = [&](AttrContainer& member, std::string const& name) {
        int const number = ++numbers[name];
        values.merge(
            valuesOf(member, path + "/" + name + (number > 1 ? "[" + std::to_string(number) + "]" : "")));
    };
    if (auto* const object = dynamic_cast<Object*>(&container))
        for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
            add(*object->children().getChild(i), object->children().getChild(i)->name());
    for (std::uint64_t i = 0; i < container.getNumFields(); ++i)
        add(*container.getField(i).lock(), *container.getFieldName(i));
    return values;
}

/// The lines by which `diff` is to list what differs, in alphabetical order.
inline std::vector<std::string> differences(Values const& first, Values const& second) {
    std::vector<std::string> lines;
    for (auto const& [path, old] : first)
        if (auto const found = second.find(path); found == second.end())
            lines.push_back(path + ": only-first, " + old.first + ": " + old.second);
        else if (auto const& [type, text] = found->second; type != old.first)
            lines.push_back(path + ": type-changed, " + old.first + " -> " + type + ": " + old.second +
                            " -> " + text);
        else if (text != old.second)
            lines.push_back(path + ": changed, " + type + ": " + old.second + " -> " + text);
    for (auto const& [path, value] : second)
        if (!first.contains(path))
            lines.push_back(path + ": only-second, " + value.first + ": " + value.second);
    std::sort(lines.begin(), lines.end());
    return lines;
}

} // namespace kxmodel_test
