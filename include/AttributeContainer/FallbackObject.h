// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Object.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

/// What stands in for an object of an unknown class.
class KX_ATTRIBUTECONTAINER_API IFallbackObject {
public:
    virtual ~IFallbackObject();
    virtual void setFallbackClassName(std::string const& className) = 0;
    /// The class name that the document gave.
    virtual std::string const& getFallbackClassName() const = 0;
};

/// Stands in for a child object whose class this program does not know.
///
/// Its content is either parsed (an ordinary object with attributes, fields and children, to be edited like
/// any) or kept as text, with nothing of its own but name and UUID; either way it is written back under the
/// class name of the document, and nothing is lost.
class KX_ATTRIBUTECONTAINER_API FallbackObject : public IFallbackObject, public Object {
public:
    FallbackObject(ConstructorProtector const& protector, CreateType type, OptionalSource source);
    ~FallbackObject() override;

    /// With a FallbackObject as source, copies its kept content too.
    static std::shared_ptr<FallbackObject> create(CreateType type = CreateType::Deep,
                                                  OptionalSource source = std::nullopt);
    std::shared_ptr<AttrContainer> duplicate(CreateType type) override;
    /// "FallbackObject".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    void setFallbackClassName(std::string const& className) override;
    std::string const& getFallbackClassName() const override;

    /// The text of the block before its container part.
    std::string const& getHeaderText() const { return headerText_; }
    /// The text of the container part, empty when it was parsed.
    std::string const& getBodyText() const { return bodyText_; }
    bool isBodyParsed() const { return bodyParsed_; }
    /// True when there is neither kept text nor a parsed body.
    bool hasNothingPreserved() override;

    /// Reads the object's block, from behind its "{" to its "}". The warning `ContentSkipped`, with what the
    /// reading of a parsed body reported nested in it; `StreamFailure` when the input ends in the block.
    [[nodiscard]] Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) override;
    /// Writes the kept text, translated when it was read in the other rendering, and the parsed body.
    /// `StreamFailure` too when the text has no form in the rendering that is written.
    [[nodiscard]] Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) override;
    void initRead() override;

protected:
    virtual void init(CreateType type, OptionalSource source);

private:
    [[nodiscard]] Result parseBody(std::shared_ptr<ReadContextBase const> const& context,
                                   std::int64_t offset);
    void takeBack(std::string const& nameBefore);
    static void removePersistentLinks(Observable& observable);

    std::string fallbackClassName_;
    std::string headerText_;
    std::string bodyText_;
    int textFormat_ = 0; ///< The rendering of the kept texts.
    bool bodyParsed_ = false;
};

} // namespace Zorvan::AttributeContainer
