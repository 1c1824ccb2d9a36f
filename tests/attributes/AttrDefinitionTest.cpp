// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

namespace Zorvan::AttributeContainer::Testing {

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
        EXPECT_EQ(&made->getLocation().value().get(), container.get());
        EXPECT_EQ(made->getToken(), DataStructures::KeyTable::noToken) << "a location is no membership";
    }
    EXPECT_TRUE(dynamic_cast<CustAttr<double>*>(custom.get()));
    EXPECT_TRUE(dynamic_cast<HardCodedAttr<double>*>(declared.get()));
}

TEST(CustomAttribute, IsInOneContainerWhateverLocationItIsGiven) {
    auto const first = AttrContainer::create();
    auto second = AttrContainer::create();
    auto const attribute = std::make_shared<CustAttr<int>>();
    first->addAttribute(attribute, "x");
    attribute->setLocation(*second);
    EXPECT_TRUE(second->addAttribute(attribute, "x").expired());
    EXPECT_EQ(attribute->getToken(), DataStructures::KeyTable::noToken) << "it is not in that list";
    attribute->setLocation(std::nullopt);
    EXPECT_FALSE(attribute->getLocation());
    attribute->setLocation(*second);
    EXPECT_EQ(&attribute->getLocation()->get(), second.get());
    second.reset();
    EXPECT_FALSE(attribute->getLocation() || attribute->lookupObject() || attribute->inqObjPath());
}

} // namespace Zorvan::AttributeContainer::Testing
