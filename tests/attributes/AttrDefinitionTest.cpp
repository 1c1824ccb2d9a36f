// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <vector>

using namespace Zorvan;
using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;
using DataStructures::KeyTable;

namespace {

/// A container with attributes of definitions that a test chooses.
class Declaring : public AttrContainer {
public:
    explicit Declaring(std::vector<AttrDefinition> const& definitions)
        : AttrContainer(ConstructorProtector(), CreateType::Deep, std::nullopt), definitions_(definitions) {}

    static std::shared_ptr<Declaring> create(std::vector<AttrDefinition> const& definitions,
                                             OptionalSource source = std::nullopt) {
        auto made = std::make_shared<Declaring>(definitions);
        made->AttrContainer::init(CreateType::Deep, source);
        made->isMade = made->createAttributes(made->definitions_, CreateType::Deep, source);
        made->names = createKeyTableFromAttrDefinitions(made->definitions_);
        made->byToken = createAttrDefMapFromAttrDefinitions(made->definitions_);
        return made;
    }
    std::optional<std::string> getAttrName(std::uint64_t token) override {
        return token == 0 ? AttrContainer::getAttrName(token) : names.getName(token);
    }
    AttrDefinition const* getAttrDefinition(std::uint64_t token) const override {
        auto const found = byToken.find(token);
        return found != byToken.end() ? found->second : AttrContainer::getAttrDefinition(token);
    }

    using AttrContainer::getAttrDefinition;
    using AttrContainer::getAttrName;
    bool isMade = false;
    KeyTable names;
    std::map<std::uint64_t const, AttrDefinition const*> byToken;

private:
    std::vector<AttrDefinition> definitions_;
};

TEST(AttrDefinition, TypesShareAClassOrMakeNone) {
    std::pair<int, std::string> const rows[] = {{5, "Attr<int>"},
                                                {39, "Attr<IntVector>"},
                                                {34, "Attr<UInt32Vector>"},
                                                {40, "Attr<UInt32Vector>"},
                                                {49, "none"},
                                                {50, "none"},
                                                {53, "none"},
                                                {54, "none"},
                                                {1000, "none"}};
    for (auto const& [type, className] : rows) {
        AttrDefinition const definition{0, "x", static_cast<AttrType>(type)};
        auto const made = definition.createAttr(CreateType::Deep, {}, {});
        EXPECT_EQ(made ? made->getClassName() : "none", className) << type;
    }
    EXPECT_EQ((Attr<ScanPtColor<Vec3d<float>>>::getStaticClassName()), "Attr<ScanPt>");
    EXPECT_EQ((Attr<std::vector<ScanPtColor<Vec3d<float>>>>::getStaticClassName()), "Attr<ScanPtVector>");
}

TEST(AttrDefinition, ASourceGivesValueLocationAndInactiveLinksButNoFlags) {
    Log log;
    auto const observer = RecordingObserver::make("o", log, "/o");
    auto const container = AttrContainer::create();
    auto const source = std::make_shared<CustAttr<int>>(7);
    container->addAttribute(source, "count");
    source->addObserver(*observer, 10, NOTIFY, false);
    source->setMarked(true);

    AttrDefinition const definition{3, "x", AttrTypeDouble, 2 | 32};
    auto const custom = definition.createAttr(CreateType::Blank, *source, {});
    auto const declared = definition.createAttr(CreateType::Deep, *source, *container);
    for (auto const& made : {custom, declared}) {
        EXPECT_EQ(made->getValueAsText(), "7");
        EXPECT_EQ(made->getFlags().categoryFlag, 1);
        EXPECT_FALSE(made->isMarked());
        ASSERT_EQ(made->getNumPostPaths(), 1u);
        EXPECT_FALSE(made->getPath(0).isActive());
        ASSERT_TRUE(made->getLocation());
        EXPECT_EQ(&made->getLocation()->get(), container.get());
        EXPECT_EQ(made->getToken(), KeyTable::noToken) << "a location is no membership";
        EXPECT_EQ(made->getName(), "");
    }
    EXPECT_NE(dynamic_cast<CustAttr<double>*>(custom.get()), nullptr);
    EXPECT_NE(dynamic_cast<HardCodedAttr<double>*>(declared.get()), nullptr);
    EXPECT_FALSE(container->addAttribute(custom, "other").expired());
    EXPECT_EQ(custom->getName(), "other");
}

TEST(AttrDefinition, DeclaredAttributesKnowTheirPlace) {
    auto const container = Declaring::create({{2, "second", AttrTypeBool, 0},
                                              {1, "first", AttrTypeInt, 2},
                                              {3, "", AttrTypeInt},
                                              {4, "none", AttrTypeScanPt}});
    ASSERT_TRUE(container->isMade);
    struct {
        std::uint64_t token;
        char const* name;
        int category;
    } const rows[] = {{0, "Name", 4}, {1, "first", 2}, {2, "second", 0}, {3, "", 64}};
    for (auto const& row : rows) {
        auto const attribute = container->getAttr(row.token).lock();
        ASSERT_NE(attribute, nullptr) << row.token;
        EXPECT_EQ(attribute->getToken(), row.token);
        EXPECT_EQ(attribute->getName(), row.name);
        EXPECT_EQ(container->getAttrCategory(*attribute), row.category);
        EXPECT_EQ(attribute->getFlags().categoryFlag, row.category == 2 ? 1 : 0);
        EXPECT_EQ(attribute->getDefinition() != nullptr, row.category != 64);
    }
    EXPECT_TRUE(container->getAttr(4).expired()) << "a type without a class leaves its slot empty";
    std::static_pointer_cast<Attr<int>>(container->getAttr(1).lock())->setValue(9);
    auto const copy = Declaring::create({{1, "first", AttrTypeString}}, *container);
    EXPECT_EQ(copy->getAttr(1).lock()->getValueAsText(), "9");
    EXPECT_THROW(Declaring::create({{1, "a", AttrTypeInt}}, *AttrContainer::create()), std::out_of_range);
}

TEST(AttrDefinition, WrongTokensMakeNoAttribute) {
    std::vector<AttrDefinition> const wrong[] = {
        {{2, "gap", AttrTypeInt}},
        {{0, "taken", AttrTypeInt}},
        {{1, "a", AttrTypeInt}, {1, "b", AttrTypeInt}},
        {{~std::uint64_t{0}, "far", AttrTypeInt}},
    };
    for (auto const& definitions : wrong) {
        auto const container = Declaring::create(definitions);
        EXPECT_FALSE(container->isMade) << definitions.front().name;
        EXPECT_EQ(container->getNumHardCodedAttributes(), 1u);
        EXPECT_EQ(container->getName(), "AttrContainer");
    }
}

TEST(AttrDefinition, TablesHoldNamedDefinitionsAndTheFirstOfAName) {
    auto const container =
        Declaring::create({{1, "same", AttrTypeInt}, {2, "same", AttrTypeInt}, {3, "", AttrTypeInt}});
    EXPECT_EQ(container->names.getToken("same"), 1u);
    EXPECT_EQ(container->names.getName(2), "same");
    EXPECT_EQ(container->names.size(), 2u);
    EXPECT_EQ(container->byToken.size(), 2u);
    std::pair<char const*, unsigned> const rows[] = {
        {"Attr<Vec3dd>", 12}, {"Attr<int32_t>", 5}, {"Name", 56}, {"", 62}, {"Attr<Foo>", 54}};
    for (auto const& [name, token] : rows)
        EXPECT_EQ(AttrContainer::getTypeFromString(name), token) << name;
}

TEST(CustomAttribute, AnAttributeWithoutAContainerHasNoPlace) {
    auto const attribute = std::make_shared<CustAttr<int>>();
    auto const expectAlone = [&](char const* when) {
        EXPECT_EQ(attribute->getName(), "") << when;
        EXPECT_EQ(attribute->getToken(), KeyTable::noToken) << when;
        EXPECT_FALSE(attribute->getLocation()) << when;
        EXPECT_FALSE(attribute->inqObjPath()) << when;
        EXPECT_FALSE(attribute->lookupObject()) << when;
    };
    expectAlone("at first");
    auto container = AttrContainer::create();
    container->addAttribute(attribute, "x");
    EXPECT_EQ(attribute->getToken(), 1u);
    EXPECT_TRUE(container->rmAttribute("x"));
    expectAlone("removed");
    container->addAttribute(attribute, "y");
    EXPECT_EQ(attribute->getName(), "y");
    container->rmAllCustomAttributes();
    expectAlone("all removed");
    container->addAttribute(attribute, "z");
    auto const name = container->getAttr(0).lock();
    auto const guarded = std::make_shared<HardCodedAttr<int>>(*container);
    attribute->setLocation(*container);
    container.reset();
    expectAlone("the container is gone");
    EXPECT_EQ(name->getName(), "");
    EXPECT_FALSE(guarded->getLocation());
    name->assignFrom("still an attribute", nullptr, nullptr, nullptr);
    EXPECT_EQ(name->getValueAsText(), "still an attribute");
}

TEST(CustomAttribute, AMemberStaysOneWhateverLocationItIsGiven) {
    auto const first = AttrContainer::create();
    auto const second = AttrContainer::create();
    auto const attribute = std::make_shared<CustAttr<int>>();
    first->addAttribute(attribute, "x");
    attribute->setLocation(*second);
    EXPECT_TRUE(second->addAttribute(attribute, "x").expired());
    EXPECT_EQ(attribute->getToken(), KeyTable::noToken) << "it is not in the list of its location";
    attribute->setLocation(std::nullopt);
    EXPECT_TRUE(second->addAttribute(attribute, "x").expired());
    EXPECT_TRUE(first->rmAttribute("x"));
    EXPECT_FALSE(second->addAttribute(attribute, "x").expired());
}

} // namespace
