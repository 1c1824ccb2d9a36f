// SPDX-License-Identifier: MIT
#include "ReaderFixture.h"

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

template <class Context>
void checkOptions(std::initializer_list<Option<Context>> options) {
    for (auto const& changed : options) {
        Context context;
        for (bool const value : {!changed.initially, changed.initially}) {
            (context.*changed.set)(value);
            for (auto const& option : options)
                EXPECT_EQ((context.*option.get)(), option.get == changed.get ? value : option.initially);
        }
        EXPECT_EQ(context.getFormat(), ModelFormat::Text);
    }
}

TEST(ReadWriteContext, OptionsAreIndependent) {
    using Read = ReadContextBase;
    checkOptions<Read>({{&Read::readDemandData, &Read::setReadDemandData, false},
                        {&Read::readMarked, &Read::setReadMarked, false},
                        {&Read::updateObject, &Read::setUpdateObject, false},
                        {&Read::readEncrypted, &Read::setReadEncrypted, false},
                        {&Read::areUnknownContainersAccepted, &Read::setAreUnknownContainersAccepted, true}});
    using Write = WriteContextBase;
    checkOptions<Write>({{&Write::writeOnlyMarked, &Write::setWriteOnlyMarked, false},
                         {&Write::writeOnlyMarkedObjects, &Write::setWriteOnlyMarkedObjects, false},
                         {&Write::writeDemandData, &Write::setWriteDemandData, false},
                         {&Write::writeDefaultValues, &Write::setWriteDefaultValues, false},
                         {&Write::createObjectUuid, &Write::setCreateObjectUuid, false},
                         {&Write::writeChildren, &Write::setWriteChildren, true},
                         {&Write::writeFields, &Write::setWriteFields, true},
                         {&Write::writeEncrypted, &Write::setWriteEncrypted, false}});
}

TEST(ReadWriteContext, HooksDoNothingUnlessTheyAreOverridden) {
    struct Asked : ReadContextBase {
        std::string names;
        std::shared_ptr<AttrContainer> createObject(std::string const& typeName) override {
            names += typeName;
            return {};
        }
    } asked;
    EXPECT_FALSE(static_cast<ReadContextBase const&>(asked).createObject("Y"));
    EXPECT_EQ(asked.names, "Y");
    ReadContextBase const base;
    EXPECT_FALSE(base.createObject("X") || base.getReferenceDictionary());
    EXPECT_FALSE(WriteContextBase(XML).getSharedInstances());
}

TEST(ReadWriteContext, ScopesFollowTheFormatOfTheirContextAndMakeOneWhenThereIsNone) {
    auto const context = std::make_shared<ReadContextBase>();
    std::istringstream in("<A> <B> ");
    ReadFromScope reading(in, context);
    EXPECT_EQ(reading.getImf().getKeyword(), "<A>");
    context->setFormat(XML);
    reading.getImf().nextKeyword();
    EXPECT_EQ(reading.getImf().getKeyword(), "B");
    EXPECT_TRUE(ReadFromScope(in).getReadContext() && ReadFromScope(in, nullptr).getReadContext());

    std::ostringstream out;
    WriteToScope(out, nullptr).getMof().startBlock("A");
    auto const writeContext = std::make_shared<WriteContextBase>();
    WriteToScope writing(out, writeContext);
    writeContext->setFormat(XML);
    writing.getMof().startBlock("A");
    EXPECT_EQ(out.str(), "\nA { <A>\n");
    EXPECT_TRUE(writing.getWriteContext() == writeContext && reading.getReadContext() == context);
}

} // namespace
} // namespace Zorvan::AttributeContainer
