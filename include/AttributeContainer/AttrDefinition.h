// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Attr.h>
#include <AttributeContainer/AttrType.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

/// Declares one attribute of a container class. The tokens of a class continue those of its base class
/// without gaps.
struct KX_ATTRIBUTECONTAINER_API AttrDefinition {
    std::uint64_t token; ///< Index in the container's attribute list.
    std::string name;    ///< Empty: the attribute cannot be found by name and is not written.
    AttrType type;       ///< The value type.
    /// A bit set: value 2 also sets the attribute's `categoryFlag`, 32 keeps it out of documents.
    std::int32_t category = 0;

    /// Makes the attribute: a HardCodedAttr bound to `owner`, or a CustAttr without one. With a source, takes
    /// its value (through text when the types differ) and copies of its persistent links (inactive). Empty
    /// for a type without an attribute class. `type` is not consulted.
    std::shared_ptr<Attribute>
    createAttr(CreateType type, std::optional<std::reference_wrapper<Attribute const>> source,
               std::optional<std::reference_wrapper<AttrContainer const>> owner) const;
};

/// Declares one field of a container class.
struct FieldDefinition {
    std::uint64_t token;   ///< Index in the container's field list.
    std::string name;      ///< Empty: the field cannot be found by name.
    std::string className; ///< Made through the FieldFactory; empty: the field is optional.
};

/// What HardCodedAttribute and CustomAttribute share: the way to the container, safe when the container goes
/// first.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): of the union one is
class KX_ATTRIBUTECONTAINER_API AttributeBinding {
public:
    AttributeBinding(AttributeBinding const&) = delete;
    AttributeBinding& operator=(AttributeBinding const&) = delete;

protected:
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): of the union one is
    AttributeBinding() = default;
    ~AttributeBinding() {
        if (isGuarded_)
            unbind();
    }
    AttrContainer const* container() const;

private:
    friend class AttributeAccess;

    friend class HardCodedAttribute;
    friend class CustomAttribute;

    struct Guarded;

    void unbind();

    union {
        AttrContainer const* container_ = nullptr;
        Guarded* guarded_;
    };
    std::uint32_t index_ = 0; ///< Where the container's list holds the attribute; a hint, verified on use.
    bool isMember_ = false;   ///< A container's list holds the attribute.
    bool isCustom_ = false;   ///< This is a CustomAttribute.
    /// The container does not know of this attribute, so that it cannot clear the pointer when it goes.
    bool isGuarded_ = false;
};

/// Names the container that makes an attribute for its own list of declared ones. Only the library has any.
class MemberOf {
    friend class AttributeAccess;
    friend class HardCodedAttribute;

    explicit MemberOf(AttrContainer const& owner) : owner_(owner) {}

    AttrContainer const& owner_;
};

/// The binding of an attribute that a container class declares.
class KX_ATTRIBUTECONTAINER_API HardCodedAttribute : public AttributeBinding {
public:
    explicit HardCodedAttribute(AttrContainer const& owner);
    explicit HardCodedAttribute(MemberOf const& owner);
};

/// The binding of an attribute that was added at run time.
class KX_ATTRIBUTECONTAINER_API CustomAttribute : public AttributeBinding {
public:
    CustomAttribute();

    /// Replaces the location; containers call it when they add or remove the attribute. A location alone does
    /// not make the attribute a member.
    void setLocation(std::optional<std::reference_wrapper<AttrContainer const>> location);
};

/// An attribute that a container class declares; it never leaves its container.
template <class T>
class KX_ATTRIBUTECONTAINER_API HardCodedAttr final : public Attr<T>, public HardCodedAttribute {
public:
    explicit HardCodedAttr(AttrContainer const& owner);
    explicit HardCodedAttr(MemberOf const& owner);
    ~HardCodedAttr() override;
    using Attr<T>::operator=;
    HardCodedAttr& operator=(HardCodedAttr const& source) {
        Attr<T>::operator=(static_cast<Attribute const&>(source));
        return *this;
    }

    using Attribute::getLocation;
    using Attribute::getName;
    using Attribute::getToken;
    std::string getName() override;
    std::optional<std::reference_wrapper<AttrContainer const>> getLocation() override;
    AttrDefinition const* getDefinition() const override;
    std::uint64_t getToken() override;

private:
    AttributeBinding* binding() override { return this; }
    void valueStored() override;
};

/// An attribute for `AttrContainer::addAttribute`, or one that stands alone.
///
///     auto weight = std::make_shared<CustAttr<double>>(71.5);
///     container->addAttribute(weight, "weight");
template <class T>
class KX_ATTRIBUTECONTAINER_API CustAttr final : public Attr<T>, public CustomAttribute {
public:
    CustAttr();
    explicit CustAttr(T const& value);
    ~CustAttr() override;
    using Attr<T>::operator=;
    CustAttr& operator=(CustAttr const& source) {
        Attr<T>::operator=(static_cast<Attribute const&>(source));
        return *this;
    }

    using Attribute::getLocation;
    using Attribute::getName;
    using Attribute::getToken;
    std::string getName() override;
    std::optional<std::reference_wrapper<AttrContainer const>> getLocation() override;
    AttrDefinition const* getDefinition() const override;
    std::uint64_t getToken() override;

private:
    AttributeBinding* binding() override { return this; }
};

// The closed set of attribute types; their work is compiled in the library.
#define KX_ATTR_IN_LIBRARY(...)                                                                              \
    extern template class KX_ATTRIBUTECONTAINER_API Attr<__VA_ARGS__>;                                       \
    extern template class KX_ATTRIBUTECONTAINER_API HardCodedAttr<__VA_ARGS__>;                              \
    extern template class KX_ATTRIBUTECONTAINER_API CustAttr<__VA_ARGS__>;

KX_ATTR_IN_LIBRARY(int)
KX_ATTR_IN_LIBRARY(signed char)
KX_ATTR_IN_LIBRARY(unsigned char)
KX_ATTR_IN_LIBRARY(short)
KX_ATTR_IN_LIBRARY(unsigned short)
KX_ATTR_IN_LIBRARY(unsigned int)
KX_ATTR_IN_LIBRARY(std::int64_t)
KX_ATTR_IN_LIBRARY(std::uint64_t)
KX_ATTR_IN_LIBRARY(double)
KX_ATTR_IN_LIBRARY(std::string)
KX_ATTR_IN_LIBRARY(bool)
KX_ATTR_IN_LIBRARY(Vec3d<double>)
KX_ATTR_IN_LIBRARY(Vec3d<float>)
KX_ATTR_IN_LIBRARY(SVec3d<unsigned short>)
KX_ATTR_IN_LIBRARY(Vec4d<double>)
KX_ATTR_IN_LIBRARY(Vec4d<float>)
KX_ATTR_IN_LIBRARY(SVec2d<double>)
KX_ATTR_IN_LIBRARY(SVec2d<float>)
KX_ATTR_IN_LIBRARY(SVec2d<int>)
KX_ATTR_IN_LIBRARY(SVec2d<unsigned int>)
KX_ATTR_IN_LIBRARY(std::vector<std::string>)
KX_ATTR_IN_LIBRARY(std::set<std::string>)
KX_ATTR_IN_LIBRARY(std::map<std::string, std::string>)
KX_ATTR_IN_LIBRARY(Mat4d<float>)
KX_ATTR_IN_LIBRARY(Mat4d<double>)
KX_ATTR_IN_LIBRARY(std::vector<double>)
KX_ATTR_IN_LIBRARY(std::vector<Vec3d<double>>)
KX_ATTR_IN_LIBRARY(std::vector<Vec3d<float>>)
KX_ATTR_IN_LIBRARY(std::vector<Vec4d<double>>)
KX_ATTR_IN_LIBRARY(std::vector<std::vector<Vec3d<double>>>)
KX_ATTR_IN_LIBRARY(std::vector<SVec2d<double>>)
KX_ATTR_IN_LIBRARY(std::vector<SVec2d<float>>)
KX_ATTR_IN_LIBRARY(std::vector<int>)
KX_ATTR_IN_LIBRARY(std::vector<signed char>)
KX_ATTR_IN_LIBRARY(std::vector<unsigned char>)
KX_ATTR_IN_LIBRARY(std::vector<short>)
KX_ATTR_IN_LIBRARY(std::vector<unsigned short>)
KX_ATTR_IN_LIBRARY(std::vector<unsigned int>)
KX_ATTR_IN_LIBRARY(std::vector<std::int64_t>)
KX_ATTR_IN_LIBRARY(std::vector<std::uint64_t>)
KX_ATTR_IN_LIBRARY(std::vector<SVec2d<int>>)
KX_ATTR_IN_LIBRARY(std::vector<SVec2d<unsigned short>>)
KX_ATTR_IN_LIBRARY(std::vector<Mat4d<double>>)
KX_ATTR_IN_LIBRARY(uuids::uuid)
KX_ATTR_IN_LIBRARY(std::vector<SVec3d<unsigned int>>)
KX_ATTR_IN_LIBRARY(std::set<uuids::uuid>)
KX_ATTR_IN_LIBRARY(std::vector<uuids::uuid>)
KX_ATTR_IN_LIBRARY(std::vector<bool>)
KX_ATTR_IN_LIBRARY(ScanPtColor<Vec3d<float>>)
KX_ATTR_IN_LIBRARY(std::vector<ScanPtColor<Vec3d<float>>>)

#undef KX_ATTR_IN_LIBRARY

} // namespace Zorvan::AttributeContainer
