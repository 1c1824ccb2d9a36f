// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ChildList.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

/// The version of the class that wrote an object.
struct ClassVersion {
    std::uint32_t major;
    std::uint32_t minor;
};

/// A container that stands in a tree of objects: it owns child objects, knows its parent, carries a UUID and
/// a class version, and is addressed by paths ("/A/B" from the root, "~" for the parent).
///
///     auto root = Object::create();
///     auto child = Object::create();
///     auto error = child->setName("A", 0);
///     root->addChild(child, 0);
///     child->inqObjPath();        // "/A"
///     root->inqObject("/a");      // child: names of children are found whatever their letter case
class KX_ATTRIBUTECONTAINER_API Object : public AttrContainer {
public:
    using OptionalSource = std::optional<std::reference_wrapper<Object const>>;

    Object(ConstructorProtector const& protector, CreateType type, OptionalSource source);
    ~Object() override;

    /// A new object: a default instance, or a copy of `source` without its children.
    static std::shared_ptr<Object> create(CreateType type = CreateType::Deep,
                                          OptionalSource source = std::nullopt);
    std::shared_ptr<AttrContainer> duplicate(CreateType type) override;
    /// "Object".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    // --- Declared attributes

    Attr<std::string>& Attr_Action();
    Attr<std::string> const& Attr_Action() const;
    std::string const& Action() const;
    void Action(std::string const& value);

    Attr<std::string>& Attr_Event();
    Attr<std::string> const& Attr_Event() const;
    std::string const& Event() const;
    void Event(std::string const& value);

    Attr<unsigned short>& Attr_MajorVersion();
    Attr<unsigned short> const& Attr_MajorVersion() const;
    unsigned short const& MajorVersion() const;
    void MajorVersion(unsigned short const& value);

    Attr<unsigned short>& Attr_MinorVersion();
    Attr<unsigned short> const& Attr_MinorVersion() const;
    unsigned short const& MinorVersion() const;
    void MinorVersion(unsigned short const& value);

    Attr<uuids::uuid>& Attr_UUID();
    Attr<uuids::uuid> const& Attr_UUID() const;
    uuids::uuid const& UUID() const;
    void UUID(uuids::uuid const& value);

    /// The UUID; a nil one is first replaced by a new random one, with notification.
    uuids::uuid getUuid();
    /// The UUID as stored; nil when it was never set.
    uuids::uuid getUuid() const;
    void setUuid(uuids::uuid const& value);
    /// The class version; an attribute that is missing counts as 0.
    ClassVersion getStoredClassVersion() const;
    /// Stores the low 16 bits of both numbers.
    void setClassVersion(ClassVersion const& version);

    // --- Children

    /// Appends a child. Flag 4: do not check its name; 16: rename it when the name is taken. False for an
    /// empty child, one that has a parent, one that is not accepted, a taken name, this object or one of its
    /// ancestors.
    bool addChild(std::shared_ptr<Object> child, int flags);
    /// Removes this very child; false when it is none. The `int` is for overrides.
    virtual bool rmChild(Object& child, int mode);
    /// Removes the child at an index; false at or beyond the count.
    virtual bool rmChild(std::uint64_t index, int mode);
    ChildList const& children() const { return children_; }
    /// Hooks: whether this object takes a child, or goes below a parent. True here.
    virtual bool acceptChild(Object& child, int flags);
    virtual bool acceptParent(Object& parent);
    /// Whether no content of an unknown class is kept in this object. True here.
    virtual bool hasNothingPreserved();

    // --- The tree

    /// The object that holds this one as a child; empty for a root.
    std::shared_ptr<Object> getParent() const;
    /// The topmost ancestor; the object itself without a parent.
    std::shared_ptr<Object> findRoot();
    std::shared_ptr<Object const> findRoot() const;
    using Observer::inqObjPath;
    /// The path from the root: "/" for the root itself, "/A/B" below it.
    std::optional<std::string> inqObjPath() override;
    std::optional<std::string> inqObjPath() const;
    /// The path from `base` to this object; "~" steps to a parent.
    std::optional<std::string> inqObjPath(Object const& base);
    std::weak_ptr<ObservingObject> inqObserver(std::optional<std::string const> const& path) override;
    /// Resolves a path: "/..." from the root, "~" and "~/..." from the parent, a child's name, then as a
    /// container.
    std::weak_ptr<ObservingObject const>
    inqObserver(std::optional<std::string const> const& path) const override;
    /// The object that a path names; empty when it names no Object.
    std::shared_ptr<Object> inqObject(std::optional<std::string> const& path);
    std::shared_ptr<Object const> inqObject(std::optional<std::string> const& path) const;
    /// Walks this object and its children; `mode` as in `fieldVisitor`.
    virtual VisitorCore::VisitResult structureVisitor(GeneralVisitor<Object&>& visitor, int mode);
    VisitorCore::VisitResult structureVisitor(GeneralVisitor<Object const&>& visitor, int mode) const;

    // --- Members

    using AttrContainer::getAttrDefinition;
    using AttrContainer::getAttrName;
    using AttrContainer::getAttrToken;
    std::uint64_t getAttrToken(std::string const& attrName) const override;
    std::optional<std::string> getAttrName(std::uint64_t token) override;
    AttrDefinition const* getAttrDefinition(std::uint64_t token) const override;
    std::uint64_t lastAttrToken() const override;

    // --- Documents

    /// Reads the object's container part and its children, up to the enclosing "}" or the end of the
    /// document. Results as in AttrContainer; children that no object can be made for end the read.
    [[nodiscard]] Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) override;
    [[nodiscard]] Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) override;

protected:
    void init(CreateType type, OptionalSource source);
    /// Reads the content of one "Child" block.
    [[nodiscard]] virtual Result readChild(std::istream& in, std::shared_ptr<ReadContextBase const> context);

private:
    friend class ChildList;
    friend class ContainerAccess;

    void nameStored() override;
    bool removeChild(std::shared_ptr<Object> const& child);

    std::uint32_t nameHash_ = 0; ///< By which the parent's list finds this object.
    std::weak_ptr<Object> parent_;
    ChildList children_;
    std::size_t childSlot_ = 0; ///< Where the parent's list holds this object.
};

} // namespace Zorvan::AttributeContainer
