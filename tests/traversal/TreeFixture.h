// SPDX-License-Identifier: MIT
#pragma once

#include "attributes/AttributeFixture.h"
#include "containers/ApplicationClasses.h"

#include <algorithm>
#include <random>

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

/// Makes the tree of a text: "Class/name { members }", without a class an AttrContainer. Members are
///     name=1 name=0.5 name='text name=[0;1]   attributes: an integer, a number, a text, a list of numbers;
///                                             with a "*" before the name: marked
///     name<type>=text                         of any type; ";" stands for a blank
///     name:=text                              the value of a declared attribute, whose index may stand for
///                                             it, and whom nobody refuses
///     slot:own { members }                    a field
///     slot->own { members }                   a field in a declared slot
///     slot->. { } slot->-                     the field that is there, no field
///     child:own { members }                   a child of an object
class TreeText {
public:
    explicit TreeText(std::string const& text) : in_(text) {}
    Container make() { return members(container(next())); }

private:
    std::string next() {
        std::string word;
        EXPECT_TRUE(in_ >> word) << in_.str();
        return word;
    }

    static Container container(std::string const& name) {
        auto const slash = name.find('/');
        if (slash == std::string::npos)
            return named(name);
        auto const made = name.starts_with("Pump") ? Pump::create()
                                                   : FieldFactory::the()->createField(name.substr(0, slash));
        EXPECT_FALSE(made->setName(name.substr(slash + 1), 0)) << name;
        return made;
    }

    Container members(Container const& parent) {
        EXPECT_EQ("{", next()) << in_.str();
        for (std::string word = next(); in_ && word != "}"; word = next()) {
            bool const isMarked = word.starts_with('*');
            auto const at = word.find_first_of(":=-");
            std::string const name = word.substr(isMarked, at - isMarked), rest = word.substr(at + 1);
            if (word[at] == '-')
                slot(parent, name, rest.substr(1));
            else if (word[at] == '=')
                attribute(parent, name, rest)->setMarked(isMarked);
            else if (rest.starts_with('=')) {
                BlockObserver const unasked;
                declared(*parent, name)->assignFrom(rest.substr(1), nullptr, nullptr, nullptr);
                declared(*parent, name)->setMarked(isMarked);
            } else if (auto const member = members(container(rest)); name == "child")
                EXPECT_TRUE(
                    static_cast<Object&>(*parent).addChild(std::static_pointer_cast<Object>(member), 0));
            else
                EXPECT_TRUE(parent->addField(member, name, 4));
        }
        return parent;
    }

    void slot(Container const& parent, std::string const& name, std::string const& own) {
        auto const token = parent->getFieldToken(name);
        if (own == ".")
            members(parent->getField(token).lock());
        else
            EXPECT_TRUE(own == "-" ? parent->rmField(token)
                                   : parent->setField(token, members(container(own))));
    }

    static std::shared_ptr<Attribute> declared(AttrContainer& parent, std::string const& name) {
        return (std::isdigit(name[0]) ? parent.getAttr(std::stoull(name)) : parent.getAttr(name)).lock();
    }

    static std::shared_ptr<Attribute> attribute(Container const& parent, std::string const& name,
                                                std::string const& value) {
        if (value.starts_with('[')) { // Numbers may be "nan" and "inf" here.
            std::vector<double> numbers;
            std::istringstream in(value.substr(1, value.size() - 2));
            for (std::string number; std::getline(in, number, ';');)
                numbers.push_back(std::stod(number));
            return add(parent, name, numbers);
        }
        bool const isText = value.starts_with('\'');
        auto const at = std::min(name.find('<'), name.size());
        std::string const type = at < name.size()                                 ? name.substr(at)
                                 : isText                                         ? "<String>"
                                 : value.find_first_of(".e") != std::string::npos ? "<double>"
                                                                                  : "<int>";
        std::string text = value.substr(isText);
        std::replace(text.begin(), text.end(), ';', ' ');
        auto const made =
            AttrDefinition{0, "", AttrContainer::getTypeFromString("Attr" + type), 0}.createAttr(
                CreateType::Deep, {}, {});
        EXPECT_FALSE(parent->addAttribute(made, name.substr(0, at)).expired()) << name;
        made->assignFrom(text, nullptr, nullptr, nullptr);
        return made;
    }

    std::istringstream in_;
};

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

/// Tells a log of each attribute of a tree that is announced. Those whose name begins with "fixed" are not to
/// change.
struct Listeners {
    Log log;
    std::vector<std::shared_ptr<RecordingObserver>> observers;

    void watch(Container const& container) {
        for (std::uint64_t token = 0; token < container->getNumAttributes(); ++token) {
            auto const attribute = container->getAttr(token).lock();
            observers.push_back(
                RecordingObserver::make(container->getName() + "/" + attribute->getName(), log));
            attribute->addObserver(*observers.back(), 10, NOTIFY, false);
            if (attribute->getName().starts_with("fixed"))
                attribute->addPreObserver(*observers.back(), 10, PRE_NOTIFY, false);
            observers.back()->toChange = [](Observable& observable, Cause const&) {
                return refuse(observable);
            };
        }
        for (std::uint64_t token = 0; token < container->getNumFields(); ++token)
            if (auto const field = container->getField(token).lock())
                watch(field);
    }
};

/// Two trees that differ in each way that a difference can arise.
struct Differing {
    Container a = TreeText("a { n=1 d=1.000001 onlyA=1 f:cfg { w=1 } g:g { } }").make();
    Container b = TreeText("a { d=1.000004 n=2 onlyB=1 onlyB2=1 f:cfg { w=2 v=3 } h:h { k=1 } }").make();
};

/// A tree of a few dozen containers. What has one name is of one class or type, so that a merge can make any
/// two trees equal; several members may have one name.
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : random_(seed) {}

    Container make() { return TreeText(text(3)).make(); }

private:
    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

    std::string text(int depth) {
        std::string text = "name" + std::to_string(below(3)) + " { ";
        for (unsigned i = below(6); i > 0; --i)
            text += attribute() + " ";
        for (unsigned i = depth > 0 ? below(5) : 0; i > 0; --i)
            text += field(depth - 1);
        return text + "} ";
    }

    std::string attribute() {
        unsigned const value = below(3);
        static constexpr char const* values[5][3] = {
            {"int#=0", "int#=1", "int#=2"},
            {"double#=0.0", "double#=0.25", "double#=0.1"},
            {"string#='", "string#='short", "string#='a;longer;one"},
            {"list#=[]", "list#=[0.5]", "list#=[0.5;0.5]"},
            {"matrix#<Mat4df>=0", "matrix#<Mat4df>=0", "matrix#<Mat4df>=0"}};
        std::string text = values[below(5)][value];
        return text.replace(text.find('#'), 1, std::to_string(below(2)));
    }

    std::string field(int depth) {
        std::string const number = std::to_string(below(2));
        switch (below(6)) {
        case 0:
            return "array" + number + ":ArrayContainer/" + text(depth);
        case 1: // A declared slot is filled or empty.
            return "pump:Pump/pump { " + (below(2) ? "Spare->" + text(0) : "") + "} ";
        default:
            return "field" + number + ":" + text(depth);
        }
    }

    std::mt19937 random_;
};

} // namespace Zorvan::AttributeContainer::Testing
