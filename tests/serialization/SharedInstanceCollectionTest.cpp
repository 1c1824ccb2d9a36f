// SPDX-License-Identifier: MIT
#include <AttributeContainer/SharedInstanceCollection.h>

#include "ReaderFixture.h"
#include "serialization/ModelInFormatAccess.h"

#include <AttributeContainer/WriteContextBase.h>

namespace Zorvan::AttributeContainer {
namespace {

TEST(SharedInstanceCollection, IsWrittenAsABlockWithOneSetAndReadUpToItsEnd) {
    for (auto const& [format, expected] :
         {std::pair(TEXT, "\nSharedInstanceCollection { \nInstances { { 17 42 } \n}\n}"),
          std::pair(XML, "<SharedInstanceCollection>\n<Instances>\n{ 17 42 } "
                         "</Instances>\n</SharedInstanceCollection>\n")})
        for (int const keywordsConsumed : {1, 3}) {
            SharedInstanceCollection written, read;
            for (std::uint64_t const id : {42, 17, 42})
                written.insert(id);
            std::stringstream stream;
            EXPECT_FALSE(written.writeTo(stream, std::make_shared<WriteContextBase>(format)));
            EXPECT_EQ(stream.str(), expected);
            stream << (format == TEXT ? "\nNext { " : "<Next>");
            ReadFromScope scope(stream, readContext(format));
            ModelInFormat& imf = scope.getImf();
            for (int i = 0; i < keywordsConsumed; ++i)
                imf.nextKeyword();
            read.insert(1);
            EXPECT_FALSE(read.readFrom(stream, readContext(format)));
            std::vector<std::uint64_t> ids = {99};
            read.copyToVector(ids);
            EXPECT_EQ(ids, (std::vector<std::uint64_t>{17, 42}));
            EXPECT_TRUE(ModelInFormatAccess::isBlockEnd(imf));
            imf.nextKeyword();
            EXPECT_EQ(imf.getKeyword(), "Next");
        }
}

TEST(SharedInstanceCollection, BadStreamsAndInputsAreErrorsOfTheirPlace) {
    SharedInstanceCollection collection;
    std::ostringstream bad;
    bad.setstate(std::ios_base::badbit);
    auto const failed = collection.writeTo(bad, std::make_shared<WriteContextBase>(TEXT));
    EXPECT_EQ(failed->getCode(), StreamFailure);
    EXPECT_EQ(failed->getFile() + std::to_string(failed->getLine()), "SharedInstanceCollection96");
    using Row = std::pair<std::string, ErrorCode>;
    for (auto const& [text, code] :
         {Row{"", StreamFailure}, Row{"{ ", StreamFailure}, Row{"{ Instances { { 1 ", StreamFailure},
          Row{"{ Instances { { 1 x } } }", StreamFailure}, Row{"{ Instances { { 2 3 } ", StreamFailure},
          Row{"Instances ", UnknownKeyword}, Row{"{ Other { } }", UnknownKeyword},
          Row{"\"{\" Instances { { 1 } } }", UnknownKeyword}}) {
        std::istringstream in("SharedInstanceCollection " + text);
        auto const error = collection.readFrom(in, readContext(TEXT));
        ASSERT_TRUE(error) << text;
        EXPECT_EQ(error->getCode(), code) << text;
        EXPECT_EQ(error->getLine() == 148, code == UnknownKeyword) << text;
    }
}

} // namespace
} // namespace Zorvan::AttributeContainer
