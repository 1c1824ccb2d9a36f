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
#include <utility>
#include <vector>

namespace kxmodel_test {

using Zorvan::AttributeContainer::Attr;
using Zorvan::AttributeContainer::AttrContainer;
using Zorvan::AttributeContainer::Attribute;
using Zorvan::AttributeContainer::CustAttr;
using Zorvan::AttributeContainer::Object;

inline std::string documentOf(Object& root) {
    std::ostringstream out;
    EXPECT_EQ(root.writeTo(out, std::make_shared<Zorvan::AttributeContainer::WriteContextBase>()), nullptr);
    return out.str();
}

/// Makes trees of objects and fields, and edits them. No two edits concern the same place.
class RandomTree {
public:
    enum class Types { Change, Stay };
    explicit RandomTree(unsigned seed, Types types = Types::Change) : random_(seed), types_(types) {}

    std::shared_ptr<Object> make() {
        auto root = Object::create();
        fill(*root, 3);
        return root;
    }

    /// Gives the lines by which `diff` is to list the edits, in alphabetical order.
    std::vector<std::string> edit(Object& root) {
        Values const before = valuesOf(root);
        editTree(root);
        std::vector<std::string> lines;
        Values added = valuesOf(root);
        for (auto const& [place, old] : before) {
            Value const now = std::exchange(added[place], {});
            added.erase(place);
            if (now.path.empty())
                lines.push_back(old.path + ": only-first, " + old.type + ": " + old.text);
            else if (now.type != old.type)
                lines.push_back(old.path + ": type-changed, " + old.type + " -> " + now.type + ": " +
                                old.text + " -> " + now.text);
            else if (now.text != old.text)
                lines.push_back(old.path + ": changed, " + old.type + ": " + old.text + " -> " + now.text);
        }
        for (auto const& [place, value] : added)
            lines.push_back(value.path + ": only-second, " + value.type + ": " + value.text);
        std::sort(lines.begin(), lines.end());
        return lines;
    }

private:
    struct Value {
        std::string path, type, text;
    };
    /// Of each attribute of each container.
    using Values = std::map<std::pair<AttrContainer const*, std::string>, Value>;
    using Members = std::vector<std::shared_ptr<AttrContainer>>;

    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
    bool chance(std::uint32_t n) { return below(n) == 0; }
    std::string freshName() { return "m" + std::to_string(++numNames_); }

    /// Children and fields.
    static Members membersOf(AttrContainer& container) {
        Members members;
        if (auto* const object = dynamic_cast<Object*>(&container))
            for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
                members.push_back(object->children().getChild(i));
        for (std::uint64_t i = 0; i < container.getNumFields(); ++i)
            members.push_back(container.getField(i).lock());
        return members;
    }

    static Values valuesOf(AttrContainer& container, std::string const& path = "") {
        Values values;
        for (std::uint64_t i = 0; i < container.getNumAttributes(); ++i) {
            auto const attribute = container.getAttr(i).lock();
            std::string const name = attribute->getName(), className = attribute->getClassName();
            auto const* text = dynamic_cast<Attr<std::string> const*>(attribute.get());
            values[{&container, name}] = {path + "/" + name, className.substr(5, className.size() - 6),
                                          text ? '"' + text->getValue() + '"' : attribute->getValueAsText()};
        }
        std::size_t numTwins = 0;
        for (auto const& member : membersOf(container)) {
            bool const isFurtherTwin = member->name() == "twin" && ++numTwins > 1;
            values.merge(valuesOf(*member, path + "/" + member->name() +
                                               (isFurtherTwin ? "[" + std::to_string(numTwins) + "]" : "")));
        }
        return values;
    }

    void editTree(AttrContainer& container) {
        editAttributes(container);
        for (auto const& member : membersOf(container))
            editMember(container, member);
        if (auto* const object = dynamic_cast<Object*>(&container); object && chance(6))
            addChild(*object, freshName(), 1);
        if (chance(6))
            addField(container, freshName(), 1);
    }

    void editMember(AttrContainer& container, std::shared_ptr<AttrContainer> const& member) {
        auto const object = std::dynamic_pointer_cast<Object>(member);
        auto* const parent = object ? object->getParent().get() : nullptr;
        bool const isTwin = member->name() == "twin";
        if (!isTwin && chance(8)) {
            EXPECT_TRUE(parent ? parent->rmChild(*object, 0) : container.rmField(member));
            removed_.push_back(member);
            return;
        }
        if (!isTwin && parent && !std::as_const(*object).UUID().isNil() && chance(4))
            member->name(freshName());
        editTree(*member);
    }

    void editAttributes(AttrContainer& container) {
        std::vector<std::string> names;
        for (auto i = container.getNumHardCodedAttributes(); i < container.getNumAttributes(); ++i)
            names.push_back(*container.getAttrName(i));
        for (std::string const& name : names) {
            bool const isRemoved = chance(8);
            if (!isRemoved && !chance(4))
                continue;
            EXPECT_TRUE(container.rmAttribute(name));
            if (!isRemoved)
                addAttribute(container, name);
        }
        if (chance(6))
            addAttribute(container, freshName());
    }

    /// Each value is there once, so that every edit makes a difference.
    void addAttribute(AttrContainer& container, std::string const& name) {
        int const number = ++numValues_;
        std::shared_ptr<Attribute> made;
        if (types_ == Types::Stay || chance(3))
            made = std::make_shared<CustAttr<int>>(number);
        else if (chance(2))
            made = std::make_shared<CustAttr<std::uint64_t>>(number);
        else
            made = std::make_shared<CustAttr<std::string>>("t" + std::to_string(number));
        EXPECT_FALSE(container.addAttribute(made, name).expired());
    }

    void fill(AttrContainer& container, int depth) {
        for (std::uint32_t i = below(5); i > 0; --i)
            addAttribute(container, freshName());
        if (depth == 0)
            return;
        bool const hasTwins = chance(3);
        if (auto* const object = dynamic_cast<Object*>(&container)) {
            for (std::uint32_t i = below(4); i > 0; --i)
                addChild(*object, freshName(), depth - 1);
            for (int i = hasTwins ? 2 : 0; i > 0; --i)
                addChild(*object, "twin", depth - 1);
        }
        // The last field takes the place of one that is removed, which must not change the order of the
        // twins.
        for (int i = hasTwins ? 2 : 0; i > 0; --i)
            addField(container, "twin", depth - 1);
        for (std::uint32_t i = below(3); i > 0; --i)
            addField(container, freshName(), depth - 1);
    }

    void addChild(Object& parent, std::string const& name, int depth) {
        auto child = Object::create();
        child->name(name);
        if (chance(2))
            child->getUuid();
        fill(*child, depth);
        EXPECT_TRUE(parent.addChild(child, 4));
    }

    void addField(AttrContainer& parent, std::string const& name, int depth) {
        std::shared_ptr<AttrContainer> field = AttrContainer::create();
        if (chance(3))
            field = Object::create();
        field->name(name);
        fill(*field, depth);
        EXPECT_TRUE(parent.addField(field, name, 4));
    }

    std::mt19937 random_;
    Types types_;
    int numNames_ = 0;
    int numValues_ = 0;
    Members removed_; ///< so that no new container is in the place of one of them
};

} // namespace kxmodel_test
