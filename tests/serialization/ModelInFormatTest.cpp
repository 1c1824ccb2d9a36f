// SPDX-License-Identifier: MIT
#include <AttributeContainer/ModelInFormat.h>

#include "DataFile.h"
#include "ReaderFixture.h"
#include "serialization/ModelInFormatAccess.h"

#include <functional>

namespace Zorvan::AttributeContainer {
namespace {

using Access = ModelInFormatAccess;
using Keywords = std::vector<std::string>;

Keywords keywordsOf(ModelInFormat& imf) {
    Keywords keywords;
    for (; imf.getKeyword(); imf.nextKeyword())
        keywords.push_back(*imf.getKeyword());
    return keywords;
}

TEST(ModelInFormat, KeywordsAreSplitByTheRulesOfTheRendering) {
    for (auto const& row : dataRows("serialization/keywords.txt")) {
        Document document(formatOf(row[0]), row[1]);
        std::string found;
        for (auto const& keyword : keywordsOf(document.imf))
            found += "[" + keyword + "]";
        EXPECT_EQ(row[2], found) << row.place;
        EXPECT_EQ(row[3] == "lost", Access::wordLost(document.imf)) << row.place;
    }
}

TEST(ModelInFormat, RenderingsAndHeadersOfOtherWritersAreRead) {
    for (auto const& row : dataRows("serialization/headers.txt")) {
        if (row.section == "rendering") {
            std::istringstream in(row[0]);
            EXPECT_EQ(formatOf(row[1]), ModelInFormat(in).determineFormat()) << row.place;
            EXPECT_EQ(row[2], restOf(in)) << row.place;
            continue;
        }
        Document document(XML, row[0]);
        std::string title;
        document.imf.readHeader(title);
        EXPECT_EQ(row[1], title) << row.place;
        EXPECT_EQ(row[2], restOf(document.in)) << row.place;
    }
}

struct Reader {
    std::shared_ptr<std::istringstream> in;
    std::unique_ptr<ReadFromScope> scope;
};

/// What a reader answers to a step; some steps are those of the thread and need no reader.
std::string answerOf(Reader& reader, std::string const& step, std::string const& argument) {
    auto* const imf = reader.scope ? &reader.scope->getImf() : nullptr;
    auto const is = [](bool answer) -> std::string { return answer ? "yes" : "no"; };
    auto const current = [&] { return imf->getKeyword().value_or("end"); };
    auto const byte = [](int read) { return read < 0 ? "end" : std::string(1, static_cast<char>(read)); };
    std::map<std::string, std::function<std::string()>> const steps{
        {"close", [&] { return reader.scope.reset(), ""; }},
        {"consume", [&] { return Access::consumeOfKeyword(*imf, std::stoul(argument)), ""; }},
        {"current", current},
        {"fails", [&] { return is(reader.in->fail()); }},
        {"handOn", [&] { return ModelInFormat::setPropagateKeyword(argument), ""; }},
        {"hasEnded", [&] { return is(Access::ended(*imf)); }},
        {"isBlockEnd", [&] { return is(Access::isBlockEnd(*imf)); }},
        {"isHandedOn", [&] { return is(Access::isPropagated()); }},
        {"isOutermost", [&] { return is(Access::isOutermost(*imf)); }},
        {"isVoxaOpen", [&] { return is(Access::voxaOpen(*imf)); }},
        {"next", [&] { return imf->nextKeyword(), current(); }},
        {"rawPeek", [&] { return byte(imf->rawRead(false)); }},
        {"rawRead", [&] { return byte(imf->rawRead(true)); }},
        {"readBeforeBuf", [&] { return imf->readBeforeBuf(), ""; }},
        {"readVoxaEnd", [&] { return is(imf->readVoxaEnd()); }},
        {"readVoxaStart", [&] { return is(imf->readVoxaStart()); }},
        {"rest", [&] { return restOf(*reader.in); }},
        {"skipRestOfLine", [&] { return is(imf->skipRestOfLine()); }},
        {"skipToEndOfBlock", [&] { return is(imf->skipToEndOfBlock()); }},
        {"takeHandedOn", [&] { return is(Access::takePropagated(*imf)); }}};
    return steps.at(step)();
}

TEST(ModelInFormat, ReadersAnswerStepByStepAsTheirFileSays) {
    std::map<std::string, Reader> readers;
    std::string section;
    for (auto const& row : dataRows("serialization/reader-steps.txt")) {
        if (std::exchange(section, row.section) != row.section)
            readers.clear();
        Reader& reader = readers[row[1]];
        if (bool const isNew = row[2] == "open"; isNew || row[2] == "within") {
            reader.in = isNew ? std::make_shared<std::istringstream>(row[4]) : readers.at(row[4]).in;
            reader.scope = std::make_unique<ReadFromScope>(*reader.in, readContext(formatOf(row[3])));
        } else {
            std::string const answer = answerOf(reader, row[2], row[3]);
            EXPECT_TRUE(row[0].empty() || row[0] == answer) << answer << " from " << row.place;
        }
    }
}

} // namespace
} // namespace Zorvan::AttributeContainer
