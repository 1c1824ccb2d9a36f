// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>

#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

/// Stands in for a field whose class this program does not know. It keeps everything that the document says,
/// and is written back under the class name of the document.
class KX_ATTRIBUTECONTAINER_API UnknownAttrContainer : public AttrContainer {
public:
    using OptionalSource = std::optional<std::reference_wrapper<UnknownAttrContainer const>>;

    UnknownAttrContainer(ConstructorProtector const& protector, CreateType type, OptionalSource source);
    ~UnknownAttrContainer() override;

    static std::shared_ptr<UnknownAttrContainer> create(CreateType type = CreateType::Deep,
                                                        OptionalSource source = std::nullopt);
    std::shared_ptr<AttrContainer> duplicate(CreateType type) override;
    /// "UnknownAttrContainer".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    /// The class name that the document gave; empty for a new container. Copies keep it.
    std::string const& getTypeName() const { return typeName_; }
    void setTypeName(std::string const& typeName) { typeName_ = typeName; }

    /// The text of the block before its container part; all of it when there is no such part.
    std::string const& getTextBefore() const { return textBefore_; }
    /// The text of the block behind its container part.
    std::string const& getTextBehind() const { return textBehind_; }
    /// False when it was read from a block without a container part: its attributes are those of a new one.
    bool hasContainerPart() const { return hasContainerPart_; }

    /// Makes another unknown container, so that the whole unknown subtree survives.
    std::shared_ptr<AttrContainer> checkCreateChildField(std::string const& className,
                                                         std::string const& fieldName,
                                                         std::uint64_t* token) override;
    /// Reads the container part; what stands before and behind it in the block is kept as text.
    [[nodiscard]] Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) override;
    [[nodiscard]] Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) override;

protected:
    void init(CreateType type, OptionalSource source);

private:
    [[nodiscard]] Result readBlock(std::istream& in, std::shared_ptr<ReadContextBase const> const& context);
    bool needsContainerPart();

    std::string typeName_;
    std::string textBefore_; ///< Of the block, in the rendering textFormat_.
    std::string textBehind_;
    std::string nameWithoutPart_; ///< The name that it had when it was read from a block without such a part.
    int textFormat_ = 0;
    bool hasContainerPart_ = true; ///< False when it was read from a block that had none.
};

} // namespace Zorvan::AttributeContainer
