// SPDX-License-Identifier: MIT
#include <AttributeContainer/ArrayContainer.h>

#include "containers/ClassTables.h"
#include "observation/ObservationAccess.h"

#include <AttributeContainer/BlockUpdateObservers.h>

namespace Zorvan::AttributeContainer {

namespace {

enum Token : std::uint64_t { ContentTypeToken = 1, SelectedElementToken };

ClassTables const& tables() {
    static auto const& tables =
        *new ClassTables({{ContentTypeToken, "contentType", AttrTypeString, 18},
                          {SelectedElementToken, "selectedElement", AttrTypeString, 18}});
    return tables;
}

} // namespace

ArrayContainer::ArrayContainer(ConstructorProtector const& protector, CreateType type, OptionalSource source)
    : AttrContainer(protector, type, source ? AttrContainer::OptionalSource(source->get()) : std::nullopt) {}

ArrayContainer::~ArrayContainer() = default;

std::shared_ptr<ArrayContainer> ArrayContainer::create(CreateType type, OptionalSource source) {
    // Hooks of copied fields may let go of the source.
    auto const held = source ? ObservationAccess::hold(source->get()) : nullptr;
    auto container = std::make_shared<ArrayContainer>(ConstructorProtector(), type, source);
    container->init(type, source);
    return container;
}

std::shared_ptr<AttrContainer> ArrayContainer::duplicate(CreateType type) {
    return create(type, type == CreateType::Blank ? std::nullopt : OptionalSource(*this));
}

void ArrayContainer::init(CreateType type, OptionalSource source) {
    AttrContainer::OptionalSource const base =
        source ? AttrContainer::OptionalSource(source->get()) : std::nullopt;
    BlockUpdateObservers const scope(source ? ContainerAccess::shared(*this) : nullptr);
    AttrContainer::init(type, base);
    createAttributes(tables().definitions(), type, base);
    if (!source)
        static_cast<void>(
            setName(getClassName(), 0)); // A class whose name is no valid name starts without one.
}

std::string const& ArrayContainer::getStaticClassName() {
    static std::string const& name = *new std::string("ArrayContainer");
    return name;
}

std::string const& ArrayContainer::getClassName() const { return getStaticClassName(); }

Attr<std::string>& ArrayContainer::Attr_contentType() { return attrAt<std::string>(ContentTypeToken); }
Attr<std::string> const& ArrayContainer::Attr_contentType() const {
    return attrAt<std::string>(ContentTypeToken);
}
std::string const& ArrayContainer::contentType() const { return Attr_contentType().getValue(); }
void ArrayContainer::contentType(std::string const& value) { Attr_contentType().setValue(value); }

Attr<std::string>& ArrayContainer::Attr_selectedElement() {
    return attrAt<std::string>(SelectedElementToken);
}
Attr<std::string> const& ArrayContainer::Attr_selectedElement() const {
    return attrAt<std::string>(SelectedElementToken);
}
std::string const& ArrayContainer::selectedElement() const { return Attr_selectedElement().getValue(); }
void ArrayContainer::selectedElement(std::string const& value) { Attr_selectedElement().setValue(value); }

std::uint64_t ArrayContainer::getAttrToken(std::string const& attrName) const {
    std::uint64_t const token = tables().names().getToken(attrName);
    return token != DataStructures::KeyTable::noToken ? token : AttrContainer::getAttrToken(attrName);
}

std::optional<std::string> ArrayContainer::getAttrName(std::uint64_t token) {
    auto const* attrName = tables().names().findName(token);
    return attrName ? *attrName : AttrContainer::getAttrName(token);
}

AttrDefinition const* ArrayContainer::getAttrDefinition(std::uint64_t token) const {
    auto const* definition = tables().definition(token);
    return definition ? definition : AttrContainer::getAttrDefinition(token);
}

std::uint64_t ArrayContainer::lastAttrToken() const { return SelectedElementToken; }

} // namespace Zorvan::AttributeContainer
