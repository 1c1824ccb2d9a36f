// SPDX-License-Identifier: MIT
#pragma once

#include "containers/ApplicationClass.h"
#include "containers/Hooks.h"

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer::Testing {

/// A field of an application's class, with a declared field, an optional one,
/// and an attribute without a name.
class Pump final : public Hooked<ApplicationClass<Pump, AttrContainer>> {
public:
    static constexpr char classNameText[] = "Pump";

    using Hooked::Hooked;
    static std::vector<AttrDefinition> const& attributes() {
        static std::vector<AttrDefinition> const table{
            {1, "Power", AttrTypeDouble, 0}, {2, "Stages", AttrTypeInt, 2}, {3, "", AttrTypeString, 0}};
        return table;
    }
    static std::vector<FieldDefinition> const& fields() {
        static std::vector<FieldDefinition> const table{{0, "Motor", "ArrayContainer"}, {1, "Spare", ""}};
        return table;
    }

    /// Links that name a pump are persistent.
    using Hooked::inqObjPath;
    std::optional<std::string> inqObjPath() override { return "/pumps/" + getName(); }
    Attribute& nameless() { return attrAt<std::string>(3); }
    void initRead() override {
        ++numInitReads;
        Hooked::initRead();
    }
    int numInitReads = 0;
};

/// An object of an application's class that may refuse children and parents.
class Station final : public HookedObject<ApplicationClass<Station, Object>> {
public:
    static constexpr char classNameText[] = "Station";

    using HookedObject::HookedObject;
    static std::vector<AttrDefinition> const& attributes() {
        static std::vector<AttrDefinition> const table{{6, "Level", AttrTypeDouble, 0}};
        return table;
    }
    static std::vector<FieldDefinition> const& fields() {
        static std::vector<FieldDefinition> const table{{0, "Pump", "Pump"}};
        return table;
    }

    bool acceptChild(Object& child, int flags) override {
        return HookedObject::acceptChild(child, flags) && (!acceptsChild || acceptsChild(child, flags));
    }
    bool acceptParent(Object& parent) override {
        return HookedObject::acceptParent(parent) && (!acceptsParent || acceptsParent(parent));
    }

    std::function<bool(Object&, int)> acceptsChild;
    std::function<bool(Object&)> acceptsParent;
};

template <class T = AttrContainer>
std::shared_ptr<T> named(std::string const& name) {
    auto made = T::create();
    EXPECT_FALSE(made->setName(name, 0)) << name;
    return made;
}

using Names = std::vector<std::string>;

/// What a path leads to; none, if it is no container.
inline std::shared_ptr<AttrContainer> at(std::shared_ptr<AttrContainer> const& top, std::string const& path) {
    return std::dynamic_pointer_cast<AttrContainer>(top->inqObserver(path).lock());
}

/// The names of a container's fields in token order; "-" for an empty slot.
inline Names fieldNames(AttrContainer& container) {
    Names names;
    for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
        names.push_back(container.getField(token).expired() ? "-"
                                                            : container.getFieldName(token).value_or("?"));
    return names;
}

inline std::string joined(Names const& names) {
    std::string text;
    for (auto const& name : names)
        text += (text.empty() ? "" : " ") + name;
    return text;
}

} // namespace Zorvan::AttributeContainer::Testing
