// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/FallbackObject.h>
#include <AttributeContainer/Object.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

/// What the library's own readers, writers, visitors and copies know of containers beyond the public
/// interface.
class ContainerAccess {
public:
    static std::vector<std::shared_ptr<Attribute>> const& declared(AttrContainer const& container) {
        return container.attributes_.attributes();
    }
    static CustAttrList* custom(AttrContainer const& container) { return container.customAttributes_.get(); }
    static FieldList* fields(AttrContainer const& container) { return container.fields_.get(); }
    template <class List>
    static DataStructures::KeyTable const& names(List const& list) {
        return list.names_;
    }
    /// The slots of a list, in the order of their tokens.
    template <class T>
    static std::vector<std::shared_ptr<T>> const& elements(GenAttrList<T> const& list) {
        return list.elements_;
    }
    /// Makes room for so many elements.
    template <class T>
    static void reserve(GenAttrList<T>& list, std::uint64_t size) {
        list.elements_.reserve(size);
    }
    static FieldList& makeFields(AttrContainer& container);
    static DataStructures::KeyTable keyTableOf(std::vector<AttrDefinition> const& definitions) {
        return AttrContainer::createKeyTableFromAttrDefinitions(definitions);
    }
    static std::map<std::uint64_t const, AttrDefinition const*>
    definitionMapOf(std::vector<AttrDefinition> const& definitions) {
        return AttrContainer::createAttrDefMapFromAttrDefinitions(definitions);
    }
    /// The container's own observable when there is one; it is made on first use.
    static Observable* observable(AttrContainer const& container);
    static void copyObservable(AttrContainer& container, AttrContainer const& source);

    static bool isSerialized(AttrContainer const& container) { return container.flags_.isSerialized != 0; }
    /// Whether the running copy is to update the links of the container.
    static bool isEnlisted(AttrContainer const& container) { return container.isEnlisted_; }
    static void setEnlisted(AttrContainer& container, bool on) { container.isEnlisted_ = on; }
    static void nameStored(AttrContainer& container) { container.nameStored(); }
    static void forgetNames(AttrContainer& container) { container.forgetNames(); }
    /// The shared pointer that owns a container, typed. Throws `std::bad_weak_ptr` without one.
    static std::shared_ptr<AttrContainer> shared(AttrContainer& container) {
        return std::static_pointer_cast<AttrContainer>(container.shared_from_this());
    }
    static std::shared_ptr<AttrContainer const> shared(AttrContainer const& container) {
        return std::static_pointer_cast<AttrContainer const>(container.shared_from_this());
    }
    /// Adds a custom attribute whatever its name, for documents that have names which are not valid here.
    static std::weak_ptr<Attribute> addAttributeUnchecked(AttrContainer& container,
                                                          std::shared_ptr<Attribute> const& attribute,
                                                          std::string const& name);
    /// Removes the custom attribute of a token that the container's list has.
    static void removeCustomAttribute(AttrContainer& container, std::uint64_t token);
    /// The attribute of a token, owned; empty when there is none.
    static std::shared_ptr<Attribute> attribute(AttrContainer const& container, std::uint64_t token) {
        return attributeSlot(container, token);
    }
    /// Where the container holds it.
    static std::shared_ptr<Attribute> const& attributeSlot(AttrContainer const& container,
                                                           std::uint64_t token);

    /// The first declared attribute, else the first custom one; empty when there is none.
    static std::shared_ptr<Attribute> firstAttribute(AttrContainer const& container);

    static Result readField(AttrContainer& container, std::istream& in,
                            std::shared_ptr<ReadContextBase const> const& context) {
        return container.readField(in, context);
    }
    static Result writeField(AttrContainer& container, std::ostream& out, std::uint64_t index,
                             std::shared_ptr<WriteContextBase const> const& context) {
        return container.writeField(out, index, context);
    }
    static Result readChild(Object& object, std::istream& in,
                            std::shared_ptr<ReadContextBase const> const& context) {
        return object.readChild(in, context);
    }
    static ChildList& children(Object& object) { return object.children_; }
};

} // namespace Zorvan::AttributeContainer
