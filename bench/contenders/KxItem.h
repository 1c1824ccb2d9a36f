// SPDX-License-Identifier: MIT
#pragma once

#include "Kx.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace bench {

/// The node of the tree as a class that declares its attributes. Children are child objects.
class KxItem : public kx::Object {
public:
    using OptionalSource = std::optional<std::reference_wrapper<KxItem const>>;

    enum Token : std::uint64_t { count = 6, length, label, isOpen, position, id, samples, tags };

    KxItem(ConstructorProtector const& protector, kx::CreateType type, OptionalSource source)
        : Object(protector, type, source) {}
    static std::shared_ptr<KxItem> create(kx::CreateType type = kx::CreateType::Deep,
                                          OptionalSource source = {}) {
        auto item = std::make_shared<KxItem>(ConstructorProtector(), type, source);
        item->init(type, source);
        return item;
    }
    std::shared_ptr<kx::AttrContainer> duplicate(kx::CreateType type) override {
        return type == kx::CreateType::Blank ? create(type) : create(type, *this);
    }
    static std::string const& getStaticClassName() {
        static std::string const name = "KxItem";
        return name;
    }
    std::string const& getClassName() const override { return getStaticClassName(); }

    template <class T>
    T const& get(Token token) const {
        return attrAt<T>(token).getValue();
    }
    template <class T>
    void set(Token token, T const& value) {
        attrAt<T>(token).setValue(value);
    }

    using Object::getAttrDefinition;
    using Object::getAttrName;
    using Object::getAttrToken;
    std::uint64_t getAttrToken(std::string const& name) const override {
        auto const token = tables().keys.getToken(name);
        return token != Zorvan::DataStructures::KeyTable::noToken ? token : Object::getAttrToken(name);
    }
    std::optional<std::string> getAttrName(std::uint64_t token) override {
        auto const name = tables().keys.getName(token);
        return name ? name : Object::getAttrName(token);
    }
    kx::AttrDefinition const* getAttrDefinition(std::uint64_t token) const override {
        auto const found = tables().definitions.find(token);
        return found != tables().definitions.end() ? found->second : Object::getAttrDefinition(token);
    }
    std::uint64_t lastAttrToken() const override { return tags; }

protected:
    void init(kx::CreateType type, OptionalSource source) {
        auto const self = std::static_pointer_cast<AttrContainer>(shared_from_this());
        kx::BlockUpdateObservers const scope(source ? self : nullptr);
        Object::init(type, source);
        createAttributes(attributes(), type, source);
    }

private:
    /// Without a category an attribute would not take part in comparisons.
    static constexpr std::int32_t category = 1;

    static std::vector<kx::AttrDefinition> const& attributes() {
        static std::vector<kx::AttrDefinition> const table{
            {count, "count", kx::AttrTypeInt, category},
            {length, "length", kx::AttrTypeDouble, category},
            {label, "label", kx::AttrTypeString, category},
            {isOpen, "isOpen", kx::AttrTypeBool, category},
            {position, "position", kx::AttrTypeVec3dd, category},
            {id, "id", kx::AttrTypeUuid, category},
            {samples, "samples", kx::AttrTypeDVector, category},
            {tags, "tags", kx::AttrTypeStringMap, category}};
        return table;
    }
    struct Tables {
        Zorvan::DataStructures::KeyTable keys = createKeyTableFromAttrDefinitions(attributes());
        std::map<std::uint64_t const, kx::AttrDefinition const*> definitions =
            createAttrDefMapFromAttrDefinitions(attributes());
    };
    static Tables const& tables() {
        static Tables const tables;
        return tables;
    }
};

} // namespace bench
