// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttributeContainer.h>

#include <functional>
#include <map>

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
        // Observers that are asked for their paths, and hooks of fields, may let go of the source.
        auto const held = source ? source->get().weak_from_this().lock() : nullptr;
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

} // namespace Zorvan::AttributeContainer::Testing
