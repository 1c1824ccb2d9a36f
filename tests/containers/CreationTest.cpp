// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

#include <AttributeContainer/ArrayContainer.h>
#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/UnknownAttrContainer.h>

#include <stdexcept>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// A pump with changed values, a custom attribute, a changed declared field and
/// a custom one.
std::shared_ptr<Pump> changedPump() {
    auto const pump = named<Pump>("changed");
    pump->getAttr("Power").lock()->assignFrom("2.5", nullptr, nullptr, nullptr);
    pump->addAttribute(std::make_shared<CustAttr<std::string>>("note"), "remark");
    std::static_pointer_cast<ArrayContainer>(pump->getField("Motor").lock())->contentType("coils");
    EXPECT_TRUE(pump->addField(named("inner"), "custom", 0));
    return pump;
}

TEST(Creation, CopiesWhatTheTypeSays) {
    for (auto const type :
         {CreateType::Deep, CreateType::ShareFields, CreateType::ShareFieldsAlt, CreateType::Blank}) {
        bool const hasValues = type != CreateType::Blank,
                   sharesFields = hasValues && type != CreateType::Deep;
        auto const source = changedPump();
        for (bool const all : {false, true}) {
            auto const copy =
                std::dynamic_pointer_cast<Pump>(all ? source->duplicateAll(type) : source->duplicate(type));
            ASSERT_TRUE(copy);
            EXPECT_EQ(hasValues ? "changed" : "Pump", copy->getName());
            EXPECT_EQ(hasValues ? 2.5 : 0.0, copy->power());
            EXPECT_EQ(hasValues ? 5U : 4U, copy->getNumAttributes());
            auto const motor = std::static_pointer_cast<ArrayContainer>(copy->getField("Motor").lock());
            EXPECT_EQ(sharesFields, motor == source->getField(0).lock());
            EXPECT_EQ(hasValues ? "coils" : "", motor->contentType());
            EXPECT_EQ(hasValues ? (Names{"Motor", "-", "custom"}) : (Names{"Motor", "-"}), fieldNames(*copy));
            if (hasValues) {
                auto const remark = copy->getAttr("remark").lock();
                EXPECT_EQ("note", remark->getValueAsText());
                EXPECT_EQ(copy.get(), &remark->getLocation()->get());
                EXPECT_EQ("inner", copy->getField("custom").lock()->getName());
            }
        }
    }
}

TEST(Creation, WithABlankSourceKeepsDeclaredValuesOnly) {
    auto const copy = Pump::create(CreateType::Blank, *changedPump());
    EXPECT_EQ(2.5, copy->power());
    EXPECT_EQ("", copy->getAttr("remark").lock()->getValueAsText());
    EXPECT_EQ("AttrContainer", copy->getField("custom").lock()->getName());
    EXPECT_EQ("", std::static_pointer_cast<ArrayContainer>(copy->getField(0).lock())->contentType());
}

TEST(Creation, KeepsTheClassOfEachFieldAndTheOrderOfAttributes) {
    auto const root = AttrContainer::create();
    std::vector<std::shared_ptr<AttrContainer>> const fields{
        AttrContainer::create(), ArrayContainer::create(), UnknownAttrContainer::create(),
        Object::create(),        Pump::create(),           Station::create()};
    for (auto const& field : fields)
        EXPECT_TRUE(root->addField(field, "", 0));
    for (int i = 0; i < 40; ++i)
        root->addAttribute(std::make_shared<CustAttr<int>>(i), "a" + std::to_string(i % 30));
    root->rmAttribute("a7");
    auto const copy = root->duplicate(CreateType::Deep);
    EXPECT_TRUE(root->isEqualTo(*copy, nullptr, nullptr));
    for (std::uint64_t token = 1; token < root->getNumAttributes(); ++token)
        EXPECT_EQ(root->getAttrName(token), copy->getAttrName(token));
    for (std::uint64_t i = 0; i < fields.size(); ++i) {
        auto const field = copy->getField(i).lock();
        EXPECT_NE(fields[i], field);
        EXPECT_EQ(fields[i]->getClassName(), field->getClassName());
        EXPECT_EQ(fields[i]->lastAttrToken() + 1, field->getNumAttributes());
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
    EXPECT_EQ(5U, container->getNumFields());
    EXPECT_EQ("Pump", container->getField(0).lock()->getClassName());
    EXPECT_EQ("Pump", container->getField(0).lock()->getName()) << "what a hook makes keeps its name";
    EXPECT_EQ("b", container->getField(1).lock()->getName());
    EXPECT_EQ("askedLast", container->getField(2).lock()->getName());
    EXPECT_TRUE(container->getField(3).expired());
    EXPECT_TRUE(container->getField(4).expired());

    auto const copy = Misdeclared::create();
    EXPECT_TRUE(container->setField(4, named("given")));
    EXPECT_TRUE(copy->declareFields({{1, "b", "Object"}, {4, "e", "nobody"}}, *container));
    EXPECT_NE(container->getField(1).lock(), copy->getField(1).lock());
    EXPECT_EQ("given", copy->getField(4).lock()->getName());
}

} // namespace
