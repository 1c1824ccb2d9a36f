// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/AttrList.h>
#include <AttributeContainer/CreateType.h>
#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/KeyTable.h>
#include <AttributeContainer/Observer.h>
#include <AttributeContainer/Visitor.h>

#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

namespace Zorvan::AttributeContainer {

class ObserverRelationTableObserver;
class ReadContextBase;
class WriteContextBase;

/// A named node of a tree: it owns attributes (declared by its class, then custom ones) and fields
/// (containers under a name and a token). Made by `create` only, always owned by a `std::shared_ptr`.
///
///     auto pump = AttrContainer::create();
///     auto error = pump->setName("pump", 0); // InvalidName for "my pump"
///     pump->addAttribute(std::make_shared<CustAttr<int>>(3), "stages");
///     pump->addField(AttrContainer::create(), "motor", 0);
///     pump->getAttr("stages").lock()->getValueAsText(); // "3"
///
/// Members are addressed by tokens: declared attributes have those of their definitions ("Name" is 0), custom
/// ones follow; removing a custom member gives the last one its token. The all-ones token means that there is
/// none. Look-ups hand out weak references.
///
/// A tree, with all that is linked to it, is used by one thread at a time, for reading too: look-ups make
/// indexes, writing sets flags. It may go from one thread to another between two calls, by something that
/// orders the threads (a mutex, a join). References may be held anywhere; dropping the last one to a part is
/// a use of the tree.
class KX_ATTRIBUTECONTAINER_API AttrContainer : public Observer {
protected:
    /// Keeps constructors of containers to the class family; only `create` makes containers.
    struct ConstructorProtector {
        explicit ConstructorProtector() = default;
    };

public:
    using AttrType = AttributeContainer::AttrType;
    using OptionalSource = std::optional<std::reference_wrapper<AttrContainer const>>;

    /// The state bits of a container.
    struct Flags {
        std::uint16_t isSerialized : 1; ///< Written since a collection of shared instances was first in use.
    };

    /// Selects the tokens that `isEqualTo` compares.
    class CompareSelectTokens {
    public:
        virtual ~CompareSelectTokens() = default;
        virtual bool isAllSelected() const = 0;
        virtual bool isSelected(std::uint64_t token) const = 0;
        virtual bool isExcluded(std::uint64_t token) const = 0;
    };

    // --- Creation

    /// Sets up an empty object; `init` makes it usable.
    AttrContainer(ConstructorProtector const& protector, CreateType type, OptionalSource source);
    ~AttrContainer() override;
    AttrContainer(AttrContainer const&) = delete;
    AttrContainer& operator=(AttrContainer const&) = delete;

    /// A new container: a default instance named after its class, or a copy of `source`.
    static std::shared_ptr<AttrContainer> create(CreateType type = CreateType::Deep,
                                                 OptionalSource source = std::nullopt);
    /// A copy of this container by its own class; for `Blank` a default instance. Every class overrides it.
    /// A deep copy shares nothing: a field that stands in several places is copied for each of them, which is
    /// exponentially much where the members of every level are shared. Where a field is one of its own
    /// ancestors, the copy has an empty slot. Throws `std::length_error` for a tree of more than 512
    /// levels, as every walk does; documents nest to 256.
    virtual std::shared_ptr<AttrContainer> duplicate(CreateType type);
    /// The same as `duplicate`.
    virtual std::shared_ptr<AttrContainer> duplicateAll(CreateType type);

    /// "AttrContainer".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    // --- Names

    /// The value of the "Name" attribute.
    std::string getName() override;
    std::string getName() const;
    /// The same without a copy. Throws `std::out_of_range` when the container has no attributes yet.
    std::string const& name() const;
    /// Sets the "Name" attribute with notification; a name that the container does not accept is refused
    /// silently.
    void name(std::string const& newName);
    /// The "Name" attribute. Throws `std::out_of_range` when the container has no attributes yet.
    Attr<std::string>& Attr_name();
    Attr<std::string> const& Attr_name() const;
    /// Checks and sets the name, with this container as origin. `InvalidName` when `checkName` refuses it,
    /// the observer's error when a pre-observer refuses it; the name is unchanged then.
    [[nodiscard]] virtual Result setName(std::string const& newName, int mode);
    /// `InvalidName` with the info "CheckedName" unless `isNameValid`. The mode is for overrides.
    [[nodiscard]] virtual Result checkName(std::string const& newName, int mode) const;
    /// The name that users see and set: the name itself here.
    virtual std::string getDisplayName();
    [[nodiscard]] virtual Result setDisplayName(std::string const& newName);

    /// Whether a name is not empty and holds only ASCII letters, digits, "_", "-" and ".".
    static bool isNameValid(std::string const& candidate);
    /// Replaces what is not alphanumeric, "_", "-" or "." by "_"; false for an empty name. Bytes of 0x80 and
    /// above may stay, so that the result is not always valid by `isNameValid`.
    static bool makeNameValid(std::string& candidate);
    /// Whether no field (or child, in an Object) has the name; attributes do not count.
    virtual bool isNameUnique(std::string const& candidate) const;
    /// `base`, or the class name when it is not valid, counted up at its end until it is unique here.
    virtual std::string generateUniqueName(std::string const& base);
    /// A name that passes `checkName`: invalid characters become "_"; "Object" when that does not help.
    std::string toCirroName(std::string const& candidate);

    // --- Attributes

    /// The token of this very attribute, or all ones.
    std::uint64_t getAttrToken(Attribute const& attribute) const;
    /// The token that a name means: the declared attribute's, else the oldest custom attribute's, else all
    /// ones.
    virtual std::uint64_t getAttrToken(std::string const& attrName) const;
    /// The name of a token; nothing when no attribute, or one without a name, has it.
    virtual std::optional<std::string> getAttrName(std::uint64_t token);
    std::optional<std::string> getAttrName(std::uint64_t token) const;
    /// The class's definition of a declared attribute, or null.
    virtual AttrDefinition const* getAttrDefinition(std::uint64_t token) const;
    AttrDefinition const* getAttrDefinition(Attribute const& attribute) const;
    /// The category of the attribute's definition, 64 without one.
    int getAttrCategory(Attribute const& attribute) const;
    int getAttrCategory(std::uint64_t token) const;
    /// The attribute of a token or a name; empty when there is none.
    std::weak_ptr<Attribute> getAttr(std::uint64_t token);
    std::weak_ptr<Attribute> getAttr(std::string const& attrName);
    std::weak_ptr<Attribute const> getAttr(std::uint64_t token) const;
    std::weak_ptr<Attribute const> getAttr(std::string const& attrName) const;
    /// Declared and custom attributes.
    std::uint64_t getNumAttributes() const;
    std::uint64_t getNumHardCodedAttributes() const;
    /// The last token of the class's own attribute definitions.
    virtual std::uint64_t lastAttrToken() const;

    /// Adds a custom attribute (a `CustAttr<T>`). Empty, and the attribute is not kept, when the name is not
    /// valid or taken by a field or child, or when the attribute belongs to a container already.
    std::weak_ptr<Attribute> addAttribute(std::shared_ptr<Attribute> attribute, std::string const& attrName);
    /// Removes the custom attribute of a name; false when there is none.
    bool rmAttribute(std::string const& attrName);
    /// Removes all custom attributes; true.
    bool rmAllCustomAttributes();

    // --- Fields

    /// The token of this very field, or all ones.
    std::uint64_t getFieldToken(AttrContainer const& field) const;
    /// The token that a name means, all ones when there is none.
    virtual std::uint64_t getFieldToken(std::string const& fieldName) const;
    /// The name of a field's slot; nothing for a token outside the list.
    virtual std::optional<std::string> getFieldName(std::uint64_t token);
    std::optional<std::string> getFieldName(std::uint64_t token) const;
    /// The field of a token or a name; empty when there is none.
    std::weak_ptr<AttrContainer> getField(std::uint64_t token);
    std::weak_ptr<AttrContainer> getField(std::string const& fieldName);
    std::weak_ptr<AttrContainer const> getField(std::uint64_t token) const;
    std::weak_ptr<AttrContainer const> getField(std::string const& fieldName) const;
    /// The number of field slots, empty ones included.
    std::uint64_t getNumFields() const;
    /// The last token of the class's own field definitions; 4294967295 when there are none.
    virtual std::uint64_t lastFieldToken() const;

    /// Adds a field under `fieldName`, or under its own name when that is empty. Mode bit 4: do not check the
    /// name; bit 16: find a unique name when it is taken. False for an empty field, a taken name, or this
    /// container itself.
    bool addField(std::shared_ptr<AttrContainer> field, std::string const& fieldName, int mode);
    /// Puts a field into a slot, which keeps its name. False for an empty field, this container itself, a
    /// token outside the list, or without a field list.
    bool setField(std::uint64_t token, std::shared_ptr<AttrContainer> field);
    /// Puts `newField` into the slot of `oldField`; false when that is no field of this container.
    bool replaceField(std::shared_ptr<AttrContainer> oldField, std::shared_ptr<AttrContainer> newField);
    /// Removes a field; the last custom field takes its token, a declared slot stays, empty. In destructors
    /// of derived classes, too: the field is told of an empty parent then.
    bool rmField(std::uint64_t token);
    bool rmField(std::string const& fieldName);
    bool rmField(std::shared_ptr<AttrContainer> field);
    /// Removes the fields behind `lastFieldToken`; true.
    bool rmAllCustomFields();

    /// Hooks by which a class makes a field of a class name itself: before the factory is asked, and after it
    /// failed.
    virtual std::shared_ptr<AttrContainer>
    checkCreateChildField(std::string const& className, std::string const& fieldName, std::uint64_t* token);
    virtual std::shared_ptr<AttrContainer> checkCreateDefaultChildField(std::string const& className,
                                                                        std::string const& fieldName,
                                                                        std::uint64_t* token);
    /// Hooks that tell a field that it was put into a container, or is taken out (`parent` is empty when that
    /// is going). A field stays in when the first one throws, and when the second one does; what that throws
    /// while the parent is going is dropped.
    virtual void informParentAdded(std::shared_ptr<AttrContainer> parent);
    virtual bool informParentRemoved(std::shared_ptr<AttrContainer> parent);
    /// The name of a field's registry key: its name here, its own name when that is empty.
    virtual std::optional<std::string> getFieldRegistryPrefix(AttrContainer const& field);
    /// Hooks for classes that address fields by pairs of numbers; (-1, -1), empty and all ones here.
    virtual SVec2d<int> lookupToken(AttrContainer* field);
    virtual std::weak_ptr<AttrContainer> lookupField(SVec2d<int> const& handle);
    virtual std::uint64_t convertToNewFieldToken(std::uint64_t token) const;

    // --- Observation

    /// What observers of the container itself register with. Never notified by the library; it carries links.
    /// Made on the first call and owned by the container; never null.
    std::shared_ptr<Observable> observable();

    std::weak_ptr<ObservingObject> inqObserver(std::optional<std::string const> const& path) override;
    /// The empty path names the container, a field's name the field; an attribute's name names no observer.
    std::weak_ptr<ObservingObject const>
    inqObserver(std::optional<std::string const> const& path) const override;
    /// Guards the name: refuses one that `checkName` does not accept, unless only its letter case changes.
    Action::ExecReturn toChangeNotify(Observable& observable,
                                      std::optional<std::reference_wrapper<ObservingObject>>& cause) override;
    Action::ExecReturn changedNotify(Observable& observable,
                                     std::optional<std::reference_wrapper<ObservingObject>>& cause) override;
    std::optional<std::reference_wrapper<Observer>> lookupSelf() override;
    /// Redirects and activates the links of this container's attributes, and its own, after a copy.
    virtual void updateObservers(ObserverRelationTableObserver& table);

    // --- Traversal

    /// Walks this container and its fields. `mode & 3`: 0 visits after the subtree, 1 before it, 2 and 3
    /// before it with `visitDone` after it. A container that is on the walk's path already is not entered
    /// again; one that is shared is visited in each of its places. This and the other walks throw
    /// `std::length_error` beyond 512 levels.
    virtual VisitorCore::VisitResult fieldVisitor(GeneralVisitor<AttrContainer&>& visitor, int mode);
    /// The same; derived classes may add their structure.
    virtual VisitorCore::VisitResult fieldAndStructureVisitor(GeneralVisitor<AttrContainer&>& visitor,
                                                              int mode);
    /// Passes itself (and, with `recurse`, its fields) as observers.
    virtual VisitorCore::VisitResult observerVisitor(ObserverVisitor& visitor, bool recurse);
    /// Passes itself and its attributes, then (with `recurse`) its fields.
    virtual VisitorCore::VisitResult attributeVisitor(AttributeVisitor& visitor, bool recurse);
    /// Compares the attributes token by token. With `diffTokens` all differing tokens are appended, otherwise
    /// the first difference ends the comparison. Both pointers may be null.
    virtual bool isEqualTo(AttrContainer const& other, std::vector<std::uint64_t>* diffTokens,
                           CompareSelectTokens const* select) const;

    // --- Documents

    /// Reads the container's block (with or without its "AttrContainer" opener) up to its "}". Nobody can
    /// refuse the values; observers are told of each, and what they throw ends the read. Null when everything
    /// was understood. A warning, `ObserverUnresolved`, `TargetMissing` and
    /// `ObjectContentUnknown` tell, with more of the kind nested in them, what was passed over or kept as it
    /// is; any other error (`StreamFailure`, `AttributeNotCreated`, `ObjectNotCreated`, `NoContext`) has
    /// ended the read. In all cases what was read is there.
    [[nodiscard]] virtual Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context);
    /// Writes the container's block. Null on success; `StreamFailure` when the stream fails, or the tree is
    /// deeper than documents nest; `NoContext`. What was written until then stays in the stream.
    [[nodiscard]] virtual Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context);
    /// A hook for applications: passed on to every field.
    virtual void initRead();
    /// Marks the container as written, or not, for the detection of shared instances; see
    /// WriteContextBase::getSharedInstances.
    void setIsSerialized(bool isSerialized);
    /// A number that no other living container has.
    std::uint64_t getInstanceIdentifier() const;
    /// The type of a name in the key table, `AttrTypeUnknown` (54) for a name that is not in it.
    static AttrType getTypeFromString(std::string const& typeName);
    /// The type names (tokens 0 to 53) and the keywords of a container body (55 to 62).
    static DataStructures::KeyTable const& keyTable;

    // --- Info container

    /// Attaches another container, weakly, to this one on the calling thread; an empty pointer detaches it.
    void addAttrContInfo(std::shared_ptr<AttrContainer> info);
    /// The one that the calling thread attached; empty when there is none, or it has gone.
    std::weak_ptr<AttrContainer> lookupAttrContInfo();
    /// Detaches what the calling thread attached.
    void rmAttrContInfo();

protected:
    /// Builds the object; derived classes call their base's first. Throws `std::bad_weak_ptr` without a
    /// shared owner.
    void init(CreateType type, OptionalSource source);

    /// Makes the attributes of a class's definitions; with a source, with its values. False when a token has
    /// no slot.
    bool createAttributes(std::vector<AttrDefinition> const& definitions, CreateType type,
                          OptionalSource source);
    /// Makes the fields of a class's definitions, see FieldList::createFields.
    bool createFields(std::vector<FieldDefinition> const& definitions, CreateType type,
                      OptionalSource source);
    /// The tables of a class, from its definitions; entries without a name are left out.
    static DataStructures::KeyTable
    createKeyTableFromAttrDefinitions(std::vector<AttrDefinition> const& definitions);
    static DataStructures::KeyTable
    createKeyTableFromFieldDefinitions(std::vector<FieldDefinition> const& definitions);
    static std::map<std::uint64_t const, AttrDefinition const*>
    createAttrDefMapFromAttrDefinitions(std::vector<AttrDefinition> const& definitions);

    /// A declared attribute of value type `T`. Throws `std::out_of_range` ("invalid vector subscript") when
    /// the slot is missing or holds no attribute of that type.
    template <class T>
    Attr<T>& attrAt(std::uint64_t token) const {
        Attribute& attribute = declaredAttribute(token);
        if (typeid(attribute) == typeid(HardCodedAttr<T>))
            return static_cast<HardCodedAttr<T>&>(attribute);
        auto* typed = dynamic_cast<Attr<T>*>(&attribute);
        if (!typed)
            throwMissingAttribute();
        return *typed;
    }

    /// Reads the content of one "SubContainer" block.
    [[nodiscard]] virtual Result readField(std::istream& in, std::shared_ptr<ReadContextBase const> context);
    /// Writes one field as a "SubContainer" block; `TargetMissing` for an empty slot.
    [[nodiscard]] virtual Result writeField(std::ostream& out, std::uint64_t fieldIndex,
                                            std::shared_ptr<WriteContextBase const> context);

    static constexpr Flags nullFlags{0};
    static std::vector<DataStructures::KeyTableEntry> const& readWriteKeyTable;

private:
    friend class ContainerAccess;
    struct Extras;

    Attribute& declaredAttribute(std::uint64_t token) const;
    [[noreturn]] static void throwMissingAttribute();
    void copyCustomAttributes(CreateType type, AttrContainer const& source);
    Extras& extras();
    void forgetNames();
    /// The name was stored, or the container is told so by its "Name" attribute.
    virtual void nameStored();

    AttrList attributes_;
    std::unique_ptr<CustAttrList> customAttributes_;
    std::unique_ptr<FieldList> fields_;
    std::unique_ptr<Extras> extras_; ///< What few containers need.
    Flags flags_ = nullFlags;
    bool isEnlisted_ = false; ///< A copy that runs on the thread updates the links when it ends.
};

} // namespace Zorvan::AttributeContainer
