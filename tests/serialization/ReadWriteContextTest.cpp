// SPDX-License-Identifier: MIT
#include "ReaderFixture.h"

#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WriteToScope.h>

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer {
namespace {

/// Each option is named by its getter and setter; exactly those of `on` are set at first, and each changes
/// alone.
template <class Context>
struct Option {
    bool (Context::*get)() const;
    void (Context::*set)(bool);
    bool initially;
};

template <class Context, std::size_t N>
void checkOptions(Option<Context> const (&options)[N]) {
    for (std::size_t changed = 0; changed < N; ++changed) {
        Context context;
        (context.*options[changed].set)(!options[changed].initially);
        for (std::size_t i = 0; i < N; ++i)
            EXPECT_EQ((context.*options[i].get)(), options[i].initially != (i == changed))
                << changed << " " << i;
        (context.*options[changed].set)(options[changed].initially);
        EXPECT_EQ((context.*options[changed].get)(), options[changed].initially);
        EXPECT_EQ(context.getFormat(), ModelFormat::Text);
    }
}

TEST(ReadContextBase, OptionsAreIndependentAndOnlyUnknownContainersAreAcceptedAtFirst) {
    using Context = ReadContextBase;
    checkOptions<Context>(
        {{&Context::readDemandData, &Context::setReadDemandData, false},
         {&Context::readMarked, &Context::setReadMarked, false},
         {&Context::updateObject, &Context::setUpdateObject, false},
         {&Context::readEncrypted, &Context::setReadEncrypted, false},
         {&Context::areUnknownContainersAccepted, &Context::setAreUnknownContainersAccepted, true}});
}

TEST(WriteContextBase, OptionsAreIndependentAndChildrenAndFieldsAreWrittenAtFirst) {
    using Context = WriteContextBase;
    checkOptions<Context>({{&Context::writeOnlyMarked, &Context::setWriteOnlyMarked, false},
                           {&Context::writeOnlyMarkedObjects, &Context::setWriteOnlyMarkedObjects, false},
                           {&Context::writeDemandData, &Context::setWriteDemandData, false},
                           {&Context::writeDefaultValues, &Context::setWriteDefaultValues, false},
                           {&Context::createObjectUuid, &Context::setCreateObjectUuid, false},
                           {&Context::writeChildren, &Context::setWriteChildren, true},
                           {&Context::writeFields, &Context::setWriteFields, true},
                           {&Context::writeEncrypted, &Context::setWriteEncrypted, false}});
}

TEST(ReadContextBase, HooksDoNothingUnlessTheyAreOverridden) {
    struct Counting : ReadContextBase {
        using ReadContextBase::createObject;
        std::shared_ptr<AttrContainer> createObject(std::string const& typeName) override {
            asked += typeName;
            return {};
        }
        std::string asked;
    };
    auto const base = std::make_shared<ReadContextBase const>();
    EXPECT_FALSE(base->createObject("X"));
    base->idle();
    EXPECT_EQ(base->getReferenceDictionary(), nullptr);
    EXPECT_EQ(base->getClassName(), "ReadContextBase");

    auto const counting = std::make_shared<Counting>();
    std::shared_ptr<ReadContextBase const> const handedAround = counting;
    EXPECT_FALSE(handedAround->createObject("Y"));
    EXPECT_EQ(counting->asked, "Y");
}

TEST(WriteContextBase, HasNoCollectionUnlessOverridden) {
    WriteContextBase const context(ModelFormat::XmlV2);
    EXPECT_EQ(context.getFormat(), ModelFormat::XmlV2);
    EXPECT_EQ(context.getSharedInstances(), nullptr);
    EXPECT_EQ(context.getClassName(), "WriteContextBase");
}

TEST(ReadFromScope, FollowsTheFormatOfItsContext) {
    auto const context = std::make_shared<ReadContextBase>();
    std::istringstream in("<A> <B> ");
    ReadFromScope scope(in, context);
    EXPECT_EQ(scope.getReadContext(), context);
    EXPECT_EQ(scope.getImf().getKeyword(), "<A>");
    context->setFormat(ModelFormat::XmlV2);
    scope.getImf().nextKeyword();
    EXPECT_EQ(scope.getImf().getKeyword(), "B");
}

TEST(ReadFromScope, MakesAContextWhenThereIsNone) {
    std::istringstream in;
    ReadFromScope const withNone(in);
    ReadFromScope const withNull(in, nullptr);
    for (auto const* scope : {&withNone, &withNull}) {
        ASSERT_TRUE(const_cast<ReadFromScope*>(scope)->getReadContext());
        EXPECT_TRUE(const_cast<ReadFromScope*>(scope)->getReadContext()->areUnknownContainersAccepted());
    }
}

TEST(WriteToScope, FollowsTheFormatOfItsContextAndWritesTextWithoutOne) {
    std::ostringstream out;
    WriteToScope without(out, nullptr);
    without.getMof().startBlock("A");
    EXPECT_EQ(out.str(), "\nA { ");
    EXPECT_TRUE(without.getWriteContext()->writeFields());

    auto const context = std::make_shared<WriteContextBase>();
    WriteToScope scope(out, context);
    context->setFormat(ModelFormat::XmlV2);
    out.str("");
    scope.getMof().startBlock("A");
    EXPECT_EQ(out.str(), "<A>\n");
    EXPECT_EQ(scope.getWriteContext(), context);
}

} // namespace
} // namespace Zorvan::AttributeContainer
