// SPDX-License-Identifier: MIT
#include <AttributeContainer/SharedInstanceCollection.h>

#include "ReaderFixture.h"
#include "serialization/ModelInFormatAccess.h"

#include <AttributeContainer/WriteContextBase.h>

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer {
namespace {

std::vector<std::uint64_t> idsOf(SharedInstanceCollection const& collection) {
    std::vector<std::uint64_t> ids = {99};
    collection.copyToVector(ids);
    return ids;
}

TEST(SharedInstanceCollection, IsWrittenAsABlockWithOneSet) {
    SharedInstanceCollection collection;
    std::ostringstream out;
    auto const text = std::make_shared<WriteContextBase>();
    EXPECT_FALSE(collection.writeTo(out, text));
    EXPECT_EQ(out.str(), "\nSharedInstanceCollection { \nInstances { { } \n}\n}");
    for (std::uint64_t const id : {42, 17, 42})
        collection.insert(id);
    EXPECT_EQ(idsOf(collection), (std::vector<std::uint64_t>{17, 42}));
    out.str("");
    EXPECT_FALSE(collection.writeTo(out, std::make_shared<WriteContextBase>(ModelFormat::XmlV2)));
    EXPECT_EQ(
        out.str(),
        "<SharedInstanceCollection>\n<Instances>\n{ 17 42 } </Instances>\n</SharedInstanceCollection>\n");

    out.setstate(std::ios_base::badbit);
    auto const failed = collection.writeTo(out, text);
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->getCode(), StreamFailure);
    EXPECT_EQ(failed->getLine(), 96);
    EXPECT_EQ(failed->getFile(), "SharedInstanceCollection");
}

TEST(SharedInstanceCollection, ComesBackAndLeavesItsEndCurrent) {
    for (auto const format : {ModelFormat::Text, ModelFormat::XmlV2}) {
        for (bool const openerConsumed : {false, true}) {
            SharedInstanceCollection written;
            written.insert(17);
            written.insert(~std::uint64_t{0});
            std::stringstream stream;
            ASSERT_FALSE(written.writeTo(stream, std::make_shared<WriteContextBase>(format)));
            stream << (format == ModelFormat::Text ? "\nNext { " : "<Next>");

            ReadFromScope scope(stream, readContext(format));
            ModelInFormat& imf = scope.getImf();
            imf.nextKeyword();
            if (openerConsumed) {
                imf.nextKeyword();
                imf.nextKeyword();
            }
            SharedInstanceCollection read;
            read.insert(1);
            EXPECT_FALSE(read.readFrom(stream, readContext(format)));
            EXPECT_EQ(idsOf(read), idsOf(written));
            EXPECT_TRUE(ModelInFormatAccess::isBlockEnd(imf));
            imf.nextKeyword();
            EXPECT_EQ(imf.getKeyword(), "Next");
        }
    }
}

TEST(SharedInstanceCollection, BadInputIsAnErrorAndKeepsTheIds) {
    struct Row {
        char const* text;
        ErrorCode code;
    };
    for (Row const row : {Row{"", StreamFailure}, Row{"SharedInstanceCollection { ", StreamFailure},
                          Row{"SharedInstanceCollection { Instances { { 1 ", StreamFailure},
                          Row{"SharedInstanceCollection { Instances { { 1 x } } }", StreamFailure},
                          Row{"SharedInstanceCollection { Instances { { 2 3 } ", StreamFailure},
                          Row{"SharedInstanceCollection Instances ", UnknownKeyword},
                          Row{"SharedInstanceCollection { Other { } }", UnknownKeyword},
                          Row{"\"Instances\" { { 1 } } }", UnknownKeyword}}) {
        std::istringstream in(row.text);
        SharedInstanceCollection collection;
        auto const error = collection.readFrom(in, readContext(ModelFormat::Text));
        ASSERT_TRUE(error) << row.text;
        EXPECT_EQ(error->getCode(), row.code) << row.text;
        EXPECT_EQ(error->getFile(), "SharedInstanceCollection");
        if (row.code == UnknownKeyword) {
            EXPECT_EQ(error->getLine(), 148);
        }
    }
}

TEST(SharedInstanceCollection, NeedsAContext) {
    std::stringstream stream("SharedInstanceCollection { ");
    SharedInstanceCollection collection;
    for (auto const& error :
         {collection.readFrom(stream, nullptr).release(), collection.writeTo(stream, nullptr).release()}) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->getCode(), NoContext);
        delete error;
    }
    EXPECT_EQ(stream.str(), "SharedInstanceCollection { ");
    EXPECT_EQ(stream.tellg(), 0);
}

} // namespace
} // namespace Zorvan::AttributeContainer
