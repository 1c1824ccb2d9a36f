// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// Keeps more tokens for its class than it declares attributes.
class Wider final : public AttrContainer {
public:
    using AttrContainer::AttrContainer;
    static std::shared_ptr<Wider> create(AttrContainer const& source) {
        auto made = std::make_shared<Wider>(ConstructorProtector(), CreateType::Deep, source);
        made->init(CreateType::Deep, source);
        return made;
    }
    std::uint64_t lastAttrToken() const override { return 3; }
};

/// The custom attributes: what stands at which token, and what is found by its name.
std::string customOf(AttrContainer const& container, std::uint64_t firstToken) {
    std::string text;
    for (std::uint64_t token = firstToken; auto const attribute = container.getAttr(token).lock(); ++token) {
        std::string const name = const_cast<AttrContainer&>(container).getAttrName(token).value_or("(none)");
        text += name + "=" + attribute->getValueAsText() + "@" +
                std::to_string(container.getAttrToken(name) - firstToken) + " ";
    }
    return text;
}

TEST(Creation, CopiesHaveTheAttributesOfTheSourceInItsOrder) {
    for (int const size : {1, 4, 8, 9, 40})
        for (std::string const how : {"plain", "removed", "wider"}) {
            SCOPED_TRACE(how + " " + std::to_string(size));
            auto const source = AttrContainer::create();
            for (int i = 0; i < size; ++i)
                source->addAttribute(std::make_shared<CustAttr<int>>(i), "a" + std::to_string(i));
            if (how == "removed")
                source->rmAttribute("a" + std::to_string(size / 3));
            std::uint64_t const firstToken = how == "wider" ? 4 : 1;
            std::shared_ptr<AttrContainer> const copy =
                how == "wider" ? Wider::create(*source) : source->duplicate(CreateType::Deep);
            EXPECT_EQ(customOf(*copy, firstToken), customOf(*source, 1));
            for (auto const& one : {source, copy}) {
                one->rmAttribute("a0");
                one->addAttribute(std::make_shared<CustAttr<int>>(-2), "later");
            }
            EXPECT_EQ(customOf(*copy, firstToken), customOf(*source, 1)) << "from now on they change alike";
        }
}

/// Declares attributes or fields that have no place.
class Misdeclared final : public AttrContainer {
public:
    using AttrContainer::AttrContainer;
    static std::shared_ptr<Misdeclared> create() {
        auto made = std::make_shared<Misdeclared>(ConstructorProtector(), CreateType::Deep, std::nullopt);
        made->init(CreateType::Deep, std::nullopt);
        return made;
    }
    bool declare(std::vector<AttrDefinition> const& attributes) {
        return createAttributes(attributes, CreateType::Deep, std::nullopt);
    }
    bool declareFields(std::vector<FieldDefinition> const& fields, OptionalSource source = std::nullopt) {
        return createFields(fields, CreateType::Deep, source);
    }
    Attr<double>& asDouble(std::uint64_t token) { return attrAt<double>(token); }
    std::shared_ptr<AttrContainer> checkCreateChildField(std::string const& className, std::string const&,
                                                         std::uint64_t*) override {
        return className == "mine" ? Pump::create() : nullptr;
    }
    std::shared_ptr<AttrContainer> checkCreateDefaultChildField(std::string const& className,
                                                                std::string const&, std::uint64_t*) override {
        return className == "last" ? named("askedLast") : nullptr;
    }
    std::uint64_t lastAttrToken() const override { return getNumHardCodedAttributes() - 1; }
};

TEST(Creation, RejectsDefinitionsWithoutASlot) {
    auto const container = Misdeclared::create();
    EXPECT_FALSE(container->declare({{0, "taken", AttrTypeInt, 0}}));
    EXPECT_FALSE(container->declare({{2, "gap", AttrTypeInt, 0}}));
    EXPECT_FALSE(container->declare({{1, "one", AttrTypeInt, 0}, {1, "twice", AttrTypeInt, 0}}));
    EXPECT_EQ(1U, container->getNumAttributes());
    EXPECT_TRUE(container->declare(
        {{2, "second", AttrTypeInt32, 0}, {1, "first", AttrTypeDouble, 0}, {3, "none", AttrTypeScanPt, 0}}));
    EXPECT_EQ(4U, container->getNumAttributes());
    EXPECT_EQ("Attr<int>", container->getAttr(2).lock()->getClassName());
    EXPECT_TRUE(container->getAttr(3).expired()) << "a type without a class leaves its slot empty";
    EXPECT_NO_THROW(container->asDouble(1));
    for (std::uint64_t token : {2, 3, 4})
        EXPECT_THROW(container->asDouble(token), std::out_of_range) << token;
    EXPECT_TRUE(container->duplicate(CreateType::Deep)) << "by the base, which this class leaves it to";
}

TEST(Creation, FindsDeclaredFieldsInTheirOrderOfSources) {
    auto const container = Misdeclared::create();
    EXPECT_FALSE(container->declareFields(
        {{0, "a", "mine"}, {1, "b", "Object"}, {2, "c", "last"}, {3, "d", ""}, {4, "e", "nobody"}}));
    EXPECT_EQ((Names{"?", "?", "?", "-", "-"}), fieldNames(*container)) << "the class has no names for them";
    EXPECT_EQ("Pump", container->getField(0).lock()->getClassName());
    EXPECT_EQ("Pump", container->getField(0).lock()->getName()) << "what a hook makes keeps its name";
    EXPECT_EQ("b", container->getField(1).lock()->getName());
    EXPECT_EQ("askedLast", container->getField(2).lock()->getName());

    auto const copy = Misdeclared::create();
    EXPECT_TRUE(container->setField(4, named("given")));
    EXPECT_TRUE(copy->declareFields({{1, "b", "Object"}, {4, "e", "nobody"}}, *container));
    EXPECT_NE(container->getField(1).lock(), copy->getField(1).lock());
    EXPECT_EQ("given", copy->getField(4).lock()->getName());
}

} // namespace
