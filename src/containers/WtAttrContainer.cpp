// SPDX-License-Identifier: MIT
#include <AttributeContainer/WtAttrContainer.h>

#include "attributes/AttributeAccess.h"
#include "containers/ContainerAccess.h"
#include "containers/ContainerExtras.h"
#include "containers/DeferredRelease.h"
#include "containers/ObserverObservable.h"
#include "containers/TraversalPath.h"
#include "foundation/NeverDestroyed.h"
#include "foundation/PerThread.h"

#include <AttributeContainer/BlockUpdateObservers.h>
#include <AttributeContainer/FieldFactory.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

using DataStructures::KeyTable;
using DataStructures::KeyTableEntry;

constexpr short nameGuardPriority = 100;
constexpr std::uint64_t preNotifyToken = 1;

std::vector<AttrDefinition> const& attrDefinitions() {
    static auto const& definitions = *new std::vector<AttrDefinition>{{0, "Name", AttrTypeString, 4}};
    return definitions;
}

std::vector<KeyTableEntry> readWriteEntries() {
    static constexpr char const* typeNames[] = {"Attr<int>",
                                                "Attr<int8_t>",
                                                "Attr<uint8_t>",
                                                "Attr<int16_t>",
                                                "Attr<uint16_t>",
                                                "Attr<int32_t>",
                                                "Attr<uint32_t>",
                                                "Attr<int64_t>",
                                                "Attr<uint64_t>",
                                                "Attr<double>",
                                                "Attr<String>",
                                                "Attr<bool>",
                                                "Attr<Vec3dd>",
                                                "Attr<Vec3df>",
                                                "Attr<SVec3us>",
                                                "Attr<Vec4dd>",
                                                "Attr<Vec4df>",
                                                "Attr<SVec2dd>",
                                                "Attr<SVec2df>",
                                                "Attr<SVec2i>",
                                                "Attr<SVec2ui>",
                                                "Attr<StringArray>",
                                                "Attr<StringSet>",
                                                "Attr<StringMap>",
                                                "Attr<Mat4df>",
                                                "Attr<Mat4dd>",
                                                "Attr<DVector>",
                                                "Attr<Vec3ddVector>",
                                                "Attr<Vec3dfVector>",
                                                "Attr<Vec4ddVector>",
                                                "Attr<VecPoly3d>",
                                                "Attr<Vec2ddVector>",
                                                "Attr<Vec2dfVector>",
                                                "Attr<IntVector>",
                                                nullptr,
                                                "Attr<Int8Vector>",
                                                "Attr<UInt8Vector>",
                                                "Attr<Int16Vector>",
                                                "Attr<UInt16Vector>",
                                                "Attr<Int32Vector>",
                                                "Attr<UInt32Vector>",
                                                "Attr<Int64Vector>",
                                                "Attr<UInt64Vector>",
                                                "Attr<Vec2iVector>",
                                                "Attr<Vec2usVector>",
                                                "Attr<Mat4ddVector>",
                                                "Attr<Uuid>",
                                                "Attr<Vec3uiVector>",
                                                "Attr<UuidSet>",
                                                "Attr<ScanPt>",
                                                "Attr<ScanPtVector>",
                                                "Attr<UuidVector>",
                                                "Attr<BoolVector>",
                                                "Attr<Json::Value>"};
    std::vector<KeyTableEntry> entries;
    for (std::uint64_t token = 0; token < std::size(typeNames); ++token)
        if (typeNames[token])
            entries.push_back({token, typeNames[token]});
    for (auto const& keyword : {"AttrContainer", "Name", "SubContainer", "FieldHandle", "FieldToken",
                                "ReferenceToShared", "InstanceID", ""})
        entries.push_back(
            {entries.back().token + (entries.back().token == AttrTypeJsonValue ? 2 : 1), keyword});
    return entries;
}

constinit NeverDestroyed<std::vector<KeyTableEntry>> entriesStorage;
constinit NeverDestroyed<KeyTable> keyTableStorage;

// Nothing passes out of a destructor.
void informOfEnd(AttrContainer& field) noexcept {
    try {
        field.informParentRemoved(nullptr);
    } catch (...) {
    }
}

[[gnu::init_priority(101)]] NeverDestroyedFill const fillTables([] {
    entriesStorage.emplace(readWriteEntries());
    keyTableStorage.emplace(entriesStorage.get());
});

} // namespace

constinit std::vector<KeyTableEntry> const& AttrContainer::readWriteKeyTable = entriesStorage.get();
constinit KeyTable const& AttrContainer::keyTable = keyTableStorage.get();

// --- Creation

AttrContainer::AttrContainer(ConstructorProtector const&, CreateType, OptionalSource)
    : Observer(std::nullopt), attributes_(*this) {}

AttrContainer::~AttrContainer() {
    rmAttrContInfo();
    // Taken out first: the hooks are foreign code, and find nothing left to change. There is no shared
    // pointer to this container any more, so the fields are told of an empty parent.
    auto const fields = std::move(fields_);
    std::uint64_t const numFields = fields ? fields->size() : 0;
    for (std::uint64_t i = 0; i < numFields; ++i)
        if (auto const& field = fields->getElement(fields->getFirstToken() + i))
            informOfEnd(*field);
    // Attributes may outlive their container.
    for (auto const& attribute : attributes_.attributes())
        if (auto* binding = AttributeAccess::binding(attribute.get()))
            AttributeAccess::bindMember(*binding, nullptr);
    rmAllCustomAttributes();
    for (std::uint64_t i = 0; i < numFields; ++i)
        DeferredRelease::release(fields->exchange(i, nullptr));
}

std::shared_ptr<AttrContainer> AttrContainer::create(CreateType type, OptionalSource source) {
    // Hooks of copied fields may let go of the source.
    auto const held = source ? ObservationAccess::hold(source->get()) : nullptr;
    auto container = std::make_shared<AttrContainer>(ConstructorProtector(), type, source);
    container->init(type, source);
    return container;
}

std::shared_ptr<AttrContainer> AttrContainer::duplicate(CreateType type) {
    return create(type, type == CreateType::Blank ? std::nullopt : OptionalSource(*this));
}

std::shared_ptr<AttrContainer> AttrContainer::duplicateAll(CreateType type) { return duplicate(type); }

void AttrContainer::init(CreateType type, OptionalSource source) {
    if (attributes_.attributes().empty()) {
        if (source) {
            BlockUpdateObservers const scope(ContainerAccess::shared(*this));
            TraversalPath const path(TraversalPath::copying(), &source->get());
            ContainerAccess::copyObservable(*this, source->get());
            createAttributes(attrDefinitions(), type, source);
            copyCustomAttributes(type, source->get());
            if (auto* sourceFields = source->get().fields_.get())
                ContainerAccess::makeFields(*this).createAttrContainer(*this, *sourceFields, type);
            copyFrom(source->get());
        } else {
            createAttributes(attrDefinitions(), type, source);
            static_cast<void>(
                setName(getClassName(), 5)); // A class whose name is no valid name starts without one.
        }
    }
    Attribute& nameAttribute = declaredAttribute(0);
    AttributeAccess::setTellsOwner(nameAttribute);
    nameAttribute.addPreObserver(*this, nameGuardPriority, preNotifyToken, true);
}

void AttrContainer::copyCustomAttributes(CreateType type, AttrContainer const& source) {
    if (!source.customAttributes_)
        return;
    // Observers are asked for their paths when links are copied, and may change the source meanwhile.
    std::uint64_t const firstToken = source.customAttributes_->getFirstToken();
    auto const originals = ContainerAccess::elements(*source.customAttributes_);
    KeyTable names = source.customAttributes_->names_;
    customAttributes_ = std::make_unique<CustAttrList>(lastAttrToken() + 1);
    ContainerAccess::reserve(*customAttributes_, originals.size());
    for (auto const& original : originals) {
        auto copy = original->duplicate(type, std::nullopt);
        customAttributes_->addElement(copy, std::string());
        AttributeAccess::bindMember(*AttributeAccess::binding(copy.get()), this);
    }
    if (firstToken == customAttributes_->getFirstToken()) {
        customAttributes_->names_ = std::move(names);
        return;
    }
    for (std::uint64_t i = 0; i < originals.size(); ++i)
        if (auto const* name = names.findName(firstToken + i))
            customAttributes_->names_.add(customAttributes_->getFirstToken() + i, *name);
}

std::string const& AttrContainer::getStaticClassName() {
    static std::string const& name = *new std::string("AttrContainer");
    return name;
}

std::string const& AttrContainer::getClassName() const { return getStaticClassName(); }

bool AttrContainer::createAttributes(std::vector<AttrDefinition> const& definitions, CreateType type,
                                     OptionalSource source) {
    return attributes_.createAttributes(definitions, type, source ? &source->get().attributes_ : nullptr);
}

bool AttrContainer::createFields(std::vector<FieldDefinition> const& definitions, CreateType type,
                                 OptionalSource source) {
    FieldList& fields = ContainerAccess::makeFields(*this);
    std::uint64_t capacity = fields.getMinCapacity();
    for (auto const& definition : definitions)
        capacity = std::max(capacity, definition.token + 1);
    fields.setMinCapacity(capacity);
    return fields.createFields(*this, definitions, type, source);
}

KeyTable AttrContainer::createKeyTableFromAttrDefinitions(std::vector<AttrDefinition> const& definitions) {
    KeyTable table;
    for (auto const& definition : definitions)
        if (!definition.name.empty())
            table.add(definition.token, definition.name);
    return table;
}

KeyTable AttrContainer::createKeyTableFromFieldDefinitions(std::vector<FieldDefinition> const& definitions) {
    KeyTable table;
    for (auto const& definition : definitions)
        if (!definition.name.empty())
            table.add(definition.token, definition.name);
    return table;
}

std::map<std::uint64_t const, AttrDefinition const*>
AttrContainer::createAttrDefMapFromAttrDefinitions(std::vector<AttrDefinition> const& definitions) {
    std::map<std::uint64_t const, AttrDefinition const*> map;
    for (auto const& definition : definitions)
        if (!definition.name.empty())
            map.emplace(definition.token, &definition);
    return map;
}

// --- Observation

std::shared_ptr<Observable> AttrContainer::observable() {
    auto& own = extras().observable;
    if (!own)
        own = std::make_shared<ObserverObservable>(ContainerAccess::shared(*this));
    return own;
}

Observable* ContainerAccess::observable(AttrContainer const& container) {
    return container.extras_ ? container.extras_->observable.get() : nullptr;
}

void ContainerAccess::copyObservable(AttrContainer& container, AttrContainer const& source) {
    if (auto const* original = observable(source))
        container.observable()->copyFrom(*original);
}

std::weak_ptr<ObservingObject> AttrContainer::inqObserver(std::optional<std::string const> const& path) {
    return std::const_pointer_cast<ObservingObject>(std::as_const(*this).inqObserver(path).lock());
}

std::weak_ptr<ObservingObject const>
AttrContainer::inqObserver(std::optional<std::string const> const& path) const {
    if (!path || path->empty())
        return Observer::inqObserver(path);
    // A field is found also when an attribute has the same name; else nobody could name it, or see its name
    // taken.
    if (auto const field = getField(*path).lock())
        return field;
    if (getAttrToken(*path) != KeyTable::noToken)
        return {};
    return Observer::inqObserver(path);
}

std::optional<std::reference_wrapper<Observer>> AttrContainer::lookupSelf() { return *this; }

void AttrContainer::updateObservers(ObserverRelationTableObserver& table) {
    UpdateObserver update(table);
    attributeVisitor(update, false);
    if (auto const own = extras_ ? extras_->observable : nullptr) {
        update.exchange(*own);
        own->updateObserverLists(true);
    }
}

Action::ExecReturn AttrContainer::changedNotify(Observable&,
                                                std::optional<std::reference_wrapper<ObservingObject>>&) {
    return Action::ExecNotHandled;
}

// --- Info container

namespace {

/// The owner tells a container from an earlier one at the same address.
struct InfoEntry {
    std::weak_ptr<ObservingObject> owner;
    std::weak_ptr<AttrContainer> info;
};

using InfoTable = std::unordered_map<AttrContainer const*, InfoEntry>;

bool isSameOwner(std::weak_ptr<ObservingObject> const& a, std::weak_ptr<ObservingObject> const& b) {
    return !a.owner_before(b) && !b.owner_before(a);
}

} // namespace

void AttrContainer::addAttrContInfo(std::shared_ptr<AttrContainer> info) {
    if (info)
        PerThread<InfoTable>::get()[this] = InfoEntry{weak_from_this(), info};
    else
        rmAttrContInfo();
}

std::weak_ptr<AttrContainer> AttrContainer::lookupAttrContInfo() {
    auto const* table = PerThread<InfoTable>::peek();
    if (!table)
        return {};
    auto const found = table->find(this);
    if (found == table->end() || !isSameOwner(found->second.owner, weak_from_this()))
        return {};
    return found->second.info;
}

void AttrContainer::rmAttrContInfo() {
    if (auto* table = PerThread<InfoTable>::peek())
        table->erase(this);
}

// --- Small services

bool AttrContainer::isEqualTo(AttrContainer const& other, std::vector<std::uint64_t>* diffTokens,
                              CompareSelectTokens const* select) const {
    if (&other == this)
        return true;
    std::uint64_t const count = getNumAttributes();
    if (!diffTokens && !select && count != other.getNumAttributes())
        return false;
    bool isEqual = true;
    for (std::uint64_t token = 0; token < count; ++token) {
        if (!isEqual && !diffTokens)
            return false;
        if (select && ((!select->isAllSelected() && !select->isSelected(token)) || select->isExcluded(token)))
            continue;
        auto const mine = ContainerAccess::attribute(*this, token);
        auto const others = ContainerAccess::attribute(other, token);
        if (mine && others && mine->isEqual(*others))
            continue;
        isEqual = false;
        if (diffTokens)
            diffTokens->push_back(token);
    }
    return isEqual;
}

void AttrContainer::initRead() {
    static char const reading = 0;
    TraversalPath const self(&reading, this);
    for (std::uint64_t i = 0; fields_ && i < fields_->size(); ++i)
        if (auto const field = fields_->getElement(fields_->getFirstToken() + i)) {
            TraversalPath const path(&reading, field.get());
            if (path.isEntered())
                field->initRead();
        }
}

void AttrContainer::setIsSerialized(bool isSerialized) { flags_.isSerialized = isSerialized ? 1 : 0; }

std::uint64_t AttrContainer::getInstanceIdentifier() const { return reinterpret_cast<std::uintptr_t>(this); }

AttrContainer::AttrType AttrContainer::getTypeFromString(std::string const& typeName) {
    std::uint64_t const token = keyTableStorage.get().getToken(typeName);
    return token == KeyTable::noToken ? AttrTypeUnknown : static_cast<AttrType>(token);
}

SVec2d<int> AttrContainer::lookupToken(AttrContainer*) { return {-1, -1}; }

std::weak_ptr<AttrContainer> AttrContainer::lookupField(SVec2d<int> const&) { return {}; }

std::uint64_t AttrContainer::convertToNewFieldToken(std::uint64_t) const { return KeyTable::noToken; }

AttrContainer::Extras& AttrContainer::extras() {
    if (!extras_)
        extras_ = std::make_unique<Extras>();
    return *extras_;
}

} // namespace Zorvan::AttributeContainer
