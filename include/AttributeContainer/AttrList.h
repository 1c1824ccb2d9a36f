// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/CreateType.h>
#include <AttributeContainer/Export.h>
#include <AttributeContainer/KeyTable.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

struct AttrDefinition;
struct FieldDefinition;
class Attribute;
class AttrContainer;

/// The attributes that a container's classes declare; the index is the token. Slots may be empty.
class KX_ATTRIBUTECONTAINER_API AttrList {
public:
    explicit AttrList(AttrContainer& owner);
    ~AttrList();
    AttrList(AttrList const&) = delete;
    AttrList& operator=(AttrList const&) = delete;

    /// The attributes in token order.
    std::vector<std::shared_ptr<Attribute>> const& attributes() const { return attributes_; }

private:
    friend class AttrContainer;

    bool createAttributes(std::vector<AttrDefinition> const& definitions, CreateType type,
                          AttrList const* source);

    AttrContainer& owner_;
    std::vector<std::shared_ptr<Attribute>> attributes_;
};

/// A list of members addressed by tokens: the element at index i has the token first + i. The list owns its
/// elements; slots may be empty. The all-ones token means that there is no such member.
template <class T>
class KX_ATTRIBUTECONTAINER_API GenAttrList {
public:
    explicit GenAttrList(std::uint64_t firstToken);
    virtual ~GenAttrList();
    GenAttrList(GenAttrList const&) = delete;
    GenAttrList& operator=(GenAttrList const&) = delete;

    /// The lowest token of this very element, or all ones. Constant time on average.
    virtual std::uint64_t getToken(T const& element) const;
    /// False and no effect here: only field lists have a minimum capacity.
    virtual bool setMinCapacity(std::uint64_t capacity);
    virtual std::uint64_t getMinCapacity() const;
    /// Appends `element`; the name is ignored here.
    virtual std::weak_ptr<T> addElement(std::shared_ptr<T>& element, std::string const& name);
    /// Replaces the element in a slot; false outside the list.
    virtual bool setElement(std::uint64_t token, std::shared_ptr<T>& element, std::string const& name);
    /// Releases the element; with `compact`, later elements move down by one. False outside the list.
    virtual bool rmElement(std::uint64_t token, bool compact);
    /// The same for this very element; false when it is not in the list.
    virtual bool rmElement(std::shared_ptr<T const>& element, bool compact);

    std::uint64_t getFirstToken() const { return firstToken_; }
    /// The number of slots.
    std::uint64_t size() const { return elements_.size(); }
    /// The element of a token; a static empty pointer outside the list.
    std::shared_ptr<T> const& getElement(std::uint64_t token) const;

protected:
    bool contains(std::uint64_t token) const;
    void append(std::shared_ptr<T> element);
    /// Exchanges the content of a slot and hands out what was there, so that callers release it last.
    std::shared_ptr<T> exchange(std::uint64_t index, std::shared_ptr<T> element);
    void grow(std::uint64_t slots);
    /// Moves the last slot into `index` and drops it.
    void moveLastTo(std::uint64_t index);

private:
    friend class ContainerAccess;

    void indexAdded(T const* element, std::uint64_t index) noexcept;
    void indexRemoved(T const* element, std::uint64_t index) noexcept;
    std::uint64_t findIndex(T const* element) const;

    std::vector<std::shared_ptr<T>> elements_;
    std::uint64_t firstToken_;
    struct Index;
    /// Where each element is, made by the first look-up in a long list.
    mutable std::unique_ptr<Index> index_;
};

extern template class KX_ATTRIBUTECONTAINER_API GenAttrList<Attribute>;
extern template class KX_ATTRIBUTECONTAINER_API GenAttrList<AttrContainer>;

/// The attributes that were added to a container at run time. Removing one gives the last one the removed
/// token.
class KX_ATTRIBUTECONTAINER_API CustAttrList : public GenAttrList<Attribute> {
public:
    explicit CustAttrList(std::uint64_t firstToken);
    ~CustAttrList() override;

    using GenAttrList<Attribute>::getToken;
    std::uint64_t getToken(Attribute const& element) const override;
    /// The token that the name means (the oldest that has it), or all ones.
    virtual std::uint64_t getToken(std::string const& name) const;
    /// The name of a token, or nothing.
    virtual std::optional<std::string> getElementName(std::uint64_t token);
    /// The same without a copy; null when the token has no name.
    std::string const* findElementName(std::uint64_t token) const;
    /// Whether every attribute has a name, and no two have the same.
    bool hasDistinctNames() const;

    std::weak_ptr<Attribute> addElement(std::shared_ptr<Attribute>& element,
                                        std::string const& name) override;
    /// Replaces the attribute in a slot and its name; false outside the list. Should memory run short, the
    /// slot keeps its attribute, but may have lost its name.
    bool setElement(std::uint64_t token, std::shared_ptr<Attribute>& element,
                    std::string const& name) override;
    bool rmElement(std::uint64_t token, bool compact) override;
    using GenAttrList<Attribute>::rmElement;

private:
    friend class AttrContainer;
    friend class ContainerAccess;

    void noteIndex(std::uint64_t index) const;
    std::shared_ptr<Attribute> takeOut(std::uint64_t token);

    DataStructures::KeyTable names_;
};

// FieldList takes fields by value and hides the by-reference forms of its base: overloads would be ambiguous.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"

/// The fields of a container. Slots below the minimum capacity are declared by the class and never compacted.
class KX_ATTRIBUTECONTAINER_API FieldList : public GenAttrList<AttrContainer> {
public:
    explicit FieldList(std::uint64_t firstToken);
    ~FieldList() override;

    std::uint64_t getToken(AttrContainer const& element) const override;
    /// The token that the name means; all ones for declared slots, which the class's own table names.
    virtual std::uint64_t getToken(std::string const& name) const;
    /// The name of a token, or nothing.
    virtual std::optional<std::string> getElementName(std::uint64_t token);
    /// The same without a copy; null when the token has no name.
    std::string const* findElementName(std::uint64_t token) const;
    /// Whether every slot behind the declared ones has a name that is not empty, and no two have the same.
    bool hasDistinctNames() const;

    bool setMinCapacity(std::uint64_t capacity) override;
    std::uint64_t getMinCapacity() const override;
    /// Appends a field under `name`. True.
    virtual bool addElement(std::shared_ptr<AttrContainer> field, std::string const& name);
    /// Puts a field into a slot, which keeps its name; false outside the list.
    virtual bool setElement(std::uint64_t token, std::shared_ptr<AttrContainer> field);
    /// The same; the name is not stored.
    virtual bool setElement(std::uint64_t token, std::shared_ptr<AttrContainer> field,
                            std::string const& name);
    bool rmElement(std::uint64_t token, bool compact) override;
    virtual bool rmElement(std::shared_ptr<AttrContainer const> field, bool compact);
    /// Puts `newField` into the slot of `oldField`; false when that is not in the list.
    bool replaceField(std::shared_ptr<AttrContainer const> oldField, std::shared_ptr<AttrContainer> newField);

    /// Makes the fields that a class declares. False when a token is not below the minimum capacity or a
    /// field with a class name could not be made; fields made before stay. A slot that is filled already is
    /// left alone.
    bool createFields(AttrContainer& container, std::vector<FieldDefinition> const& definitions,
                      CreateType type, std::optional<std::reference_wrapper<AttrContainer const>> source);
    /// Fills this new list from another container's: shared or duplicated fields, as `type` says.
    bool createAttrContainer(AttrContainer& owner, FieldList& source, CreateType type);

private:
    friend class AttrContainer;
    friend class ContainerAccess;

    std::shared_ptr<AttrContainer> takeOut(std::uint64_t token, bool compact);

    std::uint64_t minCapacity_ = 0;
    DataStructures::KeyTable names_;
};

#pragma GCC diagnostic pop

} // namespace Zorvan::AttributeContainer
