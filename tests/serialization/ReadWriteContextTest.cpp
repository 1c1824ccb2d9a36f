// SPDX-License-Identifier: MIT
#include "ReaderFixture.h"

#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WriteToScope.h>

namespace Zorvan::AttributeContainer {
namespace {

// Documents show what the other options do.
TEST(ReadWriteContext, OptionsThatChangeNoDocumentAreKept) {
    ReadContextBase reading;
    WriteContextBase writing;
    for (bool const value : {false, true}) {
        EXPECT_TRUE(reading.readDemandData() == value && reading.updateObject() == value);
        EXPECT_TRUE(writing.writeDemandData() == value && writing.writeEncrypted() == value);
        EXPECT_EQ(reading.readEncrypted(), value);
        reading.setReadDemandData(true);
        reading.setUpdateObject(true);
        reading.setReadEncrypted(true);
        writing.setWriteDemandData(true);
        writing.setWriteEncrypted(true);
    }
    EXPECT_FALSE(reading.readMarked() || writing.writeOnlyMarked() || writing.writeOnlyMarkedObjects());
    EXPECT_TRUE(reading.areUnknownContainersAccepted() && writing.writeChildren() && writing.writeFields());
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
    EXPECT_FALSE(context->getReferenceDictionary() || WriteContextBase(XML).getSharedInstances());

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
