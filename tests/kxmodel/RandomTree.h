// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttributeContainer.h>

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <sstream>
#include <string>
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

/// Makes trees of objects and fields, and edits them. For each edit it notes the lines by which `diff` is to
/// list it. No two edits concern the same place.
class RandomTree {
public:
    enum class Types { Change, Stay };
    explicit RandomTree(unsigned seed, Types types = Types::Change) : random_(seed), types_(types) {}

    std::shared_ptr<Object> make() {
        auto root = Object::create();
        fill(*root, 3);
        return root;
    }

    /// The paths are those of the container before the edits and after them.
    void edit(AttrContainer& container, std::string const& before = "", std::string const& after = "") {
        editAttributes(container, before, after);
        auto* const object = dynamic_cast<Object*>(&container);
        std::vector<std::shared_ptr<AttrContainer>> members;
        for (std::uint64_t i = 0; object && i < object->children().getNumChildren(); ++i)
            members.push_back(object->children().getChild(i));
        std::size_t const numChildren = members.size();
        for (std::uint64_t i = 0; i < container.getNumFields(); ++i)
            members.push_back(container.getField(i).lock());
        std::size_t numTwins = 0;
        for (std::size_t i = 0; i < members.size(); ++i)
            editMember(container, members[i], i < numChildren ? object : nullptr, numTwins, before, after);
        if (object && chance(6)) {
            auto const child = addChild(*object, freshName(), 1);
            list(*child, after + "/" + child->name(), "only-second");
        }
        if (chance(6)) {
            auto const field = addField(container, freshName(), 1);
            list(*field, after + "/" + field->name(), "only-second");
        }
    }

    std::vector<std::string> const& expected() const { return expected_; }

private:
    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
    bool chance(std::uint32_t n) { return below(n) == 0; }
    std::string freshName() { return "m" + std::to_string(++numNames_); }

    static std::string typeOf(Attribute const& attribute) {
        return attribute.getClassName().substr(5, attribute.getClassName().size() - 6);
    }
    static std::string textOf(Attribute const& attribute) {
        auto const* text = dynamic_cast<Attr<std::string> const*>(&attribute);
        return text ? '"' + text->getValue() + '"' : attribute.getValueAsText();
    }
    void expect(std::string const& path, std::string const& rest) { expected_.push_back(path + ": " + rest); }
    void listAttribute(Attribute const& attribute, std::string const& path, std::string const& kind) {
        expect(path, kind + ", " + typeOf(attribute) + ": " + textOf(attribute));
    }
    /// A subtree that is on one side only.
    void list(AttrContainer& container, std::string const& path, std::string const& kind) {
        for (std::uint64_t i = 0; i < container.getNumAttributes(); ++i) {
            auto const attribute = container.getAttr(i).lock();
            listAttribute(*attribute, path + "/" + attribute->getName(), kind);
        }
        std::size_t numTwins = 0;
        auto const listMember = [&](AttrContainer& member) {
            list(member, path + stepTo(member.name(), numTwins), kind);
        };
        if (auto* object = dynamic_cast<Object*>(&container))
            for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
                listMember(*object->children().getChild(i));
        for (std::uint64_t i = 0; i < container.getNumFields(); ++i)
            listMember(*container.getField(i).lock());
    }

    static std::string stepTo(std::string const& name, std::size_t& numTwins) {
        bool const isFurtherTwin = name == "twin" && ++numTwins > 1;
        return "/" + name + (isFurtherTwin ? "[" + std::to_string(numTwins) + "]" : "");
    }

    void editMember(AttrContainer& container, std::shared_ptr<AttrContainer> const& member, Object* parent,
                    std::size_t& numTwins, std::string const& before, std::string const& after) {
        std::string const name = member->name(), step = stepTo(name, numTwins);
        if (name != "twin" && chance(8)) {
            list(*member, before + step, "only-first");
            EXPECT_TRUE(parent ? parent->rmChild(static_cast<Object&>(*member), 0)
                               : container.rmField(member));
            return;
        }
        std::string newStep = step;
        if (name != "twin" && parent && !static_cast<Object const&>(*member).UUID().isNil() && chance(4)) {
            std::string const newName = freshName();
            expect(before + step + "/Name", "changed, String: \"" + name + "\" -> \"" + newName + "\"");
            member->name(newName);
            newStep = "/" + newName;
        }
        edit(*member, before + step, after + newStep);
    }

    void editAttributes(AttrContainer& container, std::string const& before, std::string const& after) {
        std::vector<std::string> names;
        for (auto i = container.getNumHardCodedAttributes(); i < container.getNumAttributes(); ++i)
            names.push_back(*container.getAttrName(i));
        for (std::string const& name : names) {
            auto const old = container.getAttr(name).lock();
            if (chance(8)) {
                listAttribute(*old, before + "/" + name, "only-first");
                EXPECT_TRUE(container.rmAttribute(name));
            } else if (chance(4)) {
                container.rmAttribute(name);
                auto const now = addAttribute(container, name);
                bool const isSame = typeOf(*old) == typeOf(*now);
                expect(before + "/" + name,
                       (isSame ? "changed, " + typeOf(*old)
                               : "type-changed, " + typeOf(*old) + " -> " + typeOf(*now)) +
                           ": " + textOf(*old) + " -> " + textOf(*now));
            }
        }
        if (chance(6)) {
            std::string const name = freshName();
            listAttribute(*addAttribute(container, name), after + "/" + name, "only-second");
        }
    }

    /// Each value is there once, so that every edit makes a difference.
    std::shared_ptr<Attribute> addAttribute(AttrContainer& container, std::string const& name) {
        int const number = ++numValues_;
        std::shared_ptr<Attribute> made;
        if (types_ == Types::Stay || chance(3))
            made = std::make_shared<CustAttr<int>>(number);
        else if (chance(2))
            made = std::make_shared<CustAttr<std::uint64_t>>(number);
        else
            made = std::make_shared<CustAttr<std::string>>("t" + std::to_string(number));
        return container.addAttribute(made, name).lock();
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

    std::shared_ptr<Object> addChild(Object& parent, std::string const& name, int depth) {
        auto child = Object::create();
        child->name(name);
        if (chance(2))
            child->getUuid();
        fill(*child, depth);
        EXPECT_TRUE(parent.addChild(child, 4));
        return child;
    }

    std::shared_ptr<AttrContainer> addField(AttrContainer& parent, std::string const& name, int depth) {
        std::shared_ptr<AttrContainer> field = AttrContainer::create();
        if (chance(3))
            field = Object::create();
        field->name(name);
        fill(*field, depth);
        EXPECT_TRUE(parent.addField(field, name, 4));
        return field;
    }

    std::mt19937 random_;
    Types types_;
    int numNames_ = 0;
    int numValues_ = 0;
    std::vector<std::string> expected_;
};

} // namespace kxmodel_test
