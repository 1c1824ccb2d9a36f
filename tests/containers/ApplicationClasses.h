// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/BlockUpdateObservers.h>
#include <AttributeContainer/FieldFactory.h>
#include <AttributeContainer/Object.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer::Testing {

constexpr std::uint64_t noToken = DataStructures::KeyTable::noToken;

/// What an application class does beyond its base `Base`: `Self` gives its name
/// and its tables.
template <class Self, class Base>
class ApplicationClass : public Base {
public:
    using OptionalSource = std::optional<std::reference_wrapper<Self const>>;

    ApplicationClass(typename Base::ConstructorProtector const& protector, CreateType type,
                     typename Base::OptionalSource source)
        : Base(protector, type, source) {}
    static std::shared_ptr<Self> create(CreateType type = CreateType::Deep, OptionalSource source = {}) {
        auto made = std::make_shared<Self>(typename Base::ConstructorProtector(), type, source);
        made->init(type, source);
        return made;
    }
    std::shared_ptr<AttrContainer> duplicate(CreateType type) override {
        auto& self = static_cast<Self&>(*this);
        return create(type, type == CreateType::Blank ? std::nullopt : OptionalSource(self));
    }
    static std::string const& getStaticClassName() {
        static std::string const name = Self::classNameText;
        return name;
    }
    std::string const& getClassName() const override { return getStaticClassName(); }

    using Base::getAttrDefinition;
    using Base::getAttrName;
    using Base::getAttrToken;
    std::uint64_t getAttrToken(std::string const& name) const override {
        auto const token = tables().attributeNames.getToken(name);
        return token != noToken ? token : Base::getAttrToken(name);
    }
    std::optional<std::string> getAttrName(std::uint64_t token) override {
        auto name = tables().attributeNames.getName(token);
        return name ? name : Base::getAttrName(token);
    }
    AttrDefinition const* getAttrDefinition(std::uint64_t token) const override {
        auto const found = tables().definitions.find(token);
        return found != tables().definitions.end() ? found->second : Base::getAttrDefinition(token);
    }
    std::uint64_t lastAttrToken() const override { return Self::attributes().back().token; }
    using Base::getFieldName;
    using Base::getFieldToken;
    std::uint64_t getFieldToken(std::string const& name) const override {
        auto const token = tables().fieldNames.getToken(name);
        return token != noToken ? token : Base::getFieldToken(name);
    }
    std::optional<std::string> getFieldName(std::uint64_t token) override {
        auto name = tables().fieldNames.getName(token);
        return name ? name : Base::getFieldName(token);
    }
    std::uint64_t lastFieldToken() const override { return Self::fields().back().token; }

    void informParentAdded(std::shared_ptr<AttrContainer> parent) override {
        if (added)
            added(parent);
    }
    bool informParentRemoved(std::shared_ptr<AttrContainer> parent) override {
        if (removed)
            removed(parent);
        return true;
    }

    std::function<void(std::shared_ptr<AttrContainer> const&)> added;
    std::function<void(std::shared_ptr<AttrContainer> const&)> removed;

protected:
    void init(CreateType type, OptionalSource source) {
        BlockUpdateObservers const scope(
            source ? std::static_pointer_cast<AttrContainer>(this->shared_from_this()) : nullptr);
        Base::init(type, source);
        this->createAttributes(Self::attributes(), type, source);
        this->createFields(Self::fields(), type, source);
    }

private:
    struct Tables {
        DataStructures::KeyTable attributeNames = Base::createKeyTableFromAttrDefinitions(Self::attributes());
        DataStructures::KeyTable fieldNames = Base::createKeyTableFromFieldDefinitions(Self::fields());
        std::map<std::uint64_t const, AttrDefinition const*> definitions =
            Base::createAttrDefMapFromAttrDefinitions(Self::attributes());
    };
    static Tables const& tables() {
        static Tables const tables;
        return tables;
    }
};

/// A field of an application's class, with a declared field, an optional one,
/// and an attribute without a name.
class Pump final : public ApplicationClass<Pump, AttrContainer> {
public:
    static constexpr char classNameText[] = "Pump";

    using ApplicationClass::ApplicationClass;
    static std::vector<AttrDefinition> const& attributes() {
        static std::vector<AttrDefinition> const table{
            {1, "Power", AttrTypeDouble, 0}, {2, "Stages", AttrTypeInt, 2}, {3, "", AttrTypeString, 0}};
        return table;
    }
    static std::vector<FieldDefinition> const& fields() {
        static std::vector<FieldDefinition> const table{{0, "Motor", "ArrayContainer"}, {1, "Spare", ""}};
        return table;
    }

    double power() const { return attrAt<double>(1).getValue(); }
    /// Links that name a pump are persistent.
    using ApplicationClass::inqObjPath;
    std::optional<std::string> inqObjPath() override { return "/pumps/" + getName(); }
    Attribute& nameless() { return attrAt<std::string>(3); }
    void initRead() override {
        ++numInitReads;
        AttrContainer::initRead();
    }
    int numInitReads = 0;
};

/// An object of an application's class that may refuse children and parents.
class Station final : public ApplicationClass<Station, Object> {
public:
    static constexpr char classNameText[] = "Station";

    using ApplicationClass::ApplicationClass;
    static std::vector<AttrDefinition> const& attributes() {
        static std::vector<AttrDefinition> const table{{6, "Level", AttrTypeDouble, 0}};
        return table;
    }
    static std::vector<FieldDefinition> const& fields() {
        static std::vector<FieldDefinition> const table{{0, "Pump", "Pump"}};
        return table;
    }

    bool acceptChild(Object& child, int flags) override {
        return !acceptsChild || acceptsChild(child, flags);
    }
    bool acceptParent(Object& parent) override { return !acceptsParent || acceptsParent(parent); }

    std::function<bool(Object&, int)> acceptsChild;
    std::function<bool(Object&)> acceptsParent;
};

template <class T = AttrContainer>
std::shared_ptr<T> named(std::string const& name) {
    auto made = T::create();
    EXPECT_FALSE(made->setName(name, 0)) << name;
    return made;
}

/// The names of a container's fields in token order; "-" for an empty slot.
inline std::vector<std::string> fieldNames(AttrContainer& container) {
    std::vector<std::string> names;
    for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
        names.push_back(container.getField(token).expired() ? "-"
                                                            : container.getFieldName(token).value_or("?"));
    return names;
}

using Names = std::vector<std::string>;

} // namespace Zorvan::AttributeContainer::Testing
