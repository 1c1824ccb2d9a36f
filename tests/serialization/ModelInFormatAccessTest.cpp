// SPDX-License-Identifier: MIT
#include "serialization/ModelInFormatAccess.h"

#include "DataFile.h"
#include "ReaderFixture.h"

namespace Zorvan::AttributeContainer {
namespace {

using Access = ModelInFormatAccess;

TEST(ModelInFormatAccess, EntriesAreSkippedOrCapturedAsTheyStand) {
    for (auto const& row : dataRows("serialization/unknown-entries.txt"))
        for (bool const capture : {false, true}) {
            SCOPED_TRACE(row.place);
            bool const isWhole = row.section == "whole", isComplete = isWhole || row[2] == "complete";
            Document document(formatOf(row[0]), isWhole ? row[1] + row[2] : row[1]);
            std::string kept = "kept:";
            document.imf.nextKeyword();
            EXPECT_EQ(isComplete,
                      capture ? Access::captureEntry(document.imf, kept) : Access::skipEntry(document.imf));
            if (isWhole) {
                EXPECT_EQ(capture ? "kept:" + row[1] : "kept:", kept);
                EXPECT_EQ(row[3], document.current());
                continue;
            }
            EXPECT_EQ(!isComplete, document.in.fail());
            EXPECT_EQ(row[3] == "lost", Access::wordLost(document.imf));
            EXPECT_EQ("<end>", document.current());
        }
}

TEST(ModelInFormatAccess, EveryPrefixIsPassedInSteps) {
    std::string const text = "A{ B \"}\" { } \"x\\\"\"=>\"{\" }\n} C{}{ D }\n\"E\" 1\n{ 2 }";
    std::string const xml =
        "<A x=\"y\" value=\"1\"/>z<B><C></D>< <!-- - --->\"/>\"><E type=\"f\"><?g?></E></VOXA>";
    for (auto const& [format, whole] : {std::pair(TEXT, text), std::pair(XML, xml)}) {
        for (std::size_t begin = 0; begin < whole.size(); ++begin) {
            for (std::size_t end = begin; end <= whole.size(); ++end) {
                Document document(format, whole.substr(begin, end - begin));
                std::string kept;
                std::size_t steps = 0;
                while (document.imf.getKeyword() && steps++ < 200)
                    Access::captureEntry(document.imf, kept);
                EXPECT_LE(steps, end - begin);
                EXPECT_LE(kept.size(), end - begin);
            }
        }
    }
}

} // namespace
} // namespace Zorvan::AttributeContainer
