// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>

#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

/// A container for elements of one kind, stored as ordinary fields, with two string attributes that describe
/// them.
class KX_ATTRIBUTECONTAINER_API ArrayContainer : public AttrContainer {
public:
    using OptionalSource = std::optional<std::reference_wrapper<ArrayContainer const>>;

    ArrayContainer(ConstructorProtector const& protector, CreateType type, OptionalSource source);
    ~ArrayContainer() override;

    static std::shared_ptr<ArrayContainer> create(CreateType type = CreateType::Deep,
                                                  OptionalSource source = std::nullopt);
    std::shared_ptr<AttrContainer> duplicate(CreateType type) override;
    /// "ArrayContainer".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    Attr<std::string>& Attr_contentType();
    Attr<std::string> const& Attr_contentType() const;
    std::string const& contentType() const;
    void contentType(std::string const& value);

    Attr<std::string>& Attr_selectedElement();
    Attr<std::string> const& Attr_selectedElement() const;
    std::string const& selectedElement() const;
    void selectedElement(std::string const& value);

    using AttrContainer::getAttrDefinition;
    using AttrContainer::getAttrName;
    using AttrContainer::getAttrToken;
    std::uint64_t getAttrToken(std::string const& attrName) const override;
    std::optional<std::string> getAttrName(std::uint64_t token) override;
    AttrDefinition const* getAttrDefinition(std::uint64_t token) const override;
    std::uint64_t lastAttrToken() const override;

protected:
    void init(CreateType type, OptionalSource source);
};

} // namespace Zorvan::AttributeContainer
