// SPDX-License-Identifier: MIT
// Reading a document and writing what was read takes time and memory in proportion to its size, whatever it
// says.
#include "CapturedLog.h"
#include "DataFile.h"
#include "Document.h"
#include "bounds/Usage.h"
#include "containers/DocumentFixture.h"

namespace Zorvan::AttributeContainer::Testing {

namespace {

std::vector<DataRow> const rows = dataRows("bounds/proportions.txt");

std::string repeated(std::string const& text, std::size_t count) {
    std::string result;
    std::size_t const number = text.find("$i");
    for (std::size_t i = 0; i < count; ++i) {
        result.append(text, 0, number);
        if (number != text.npos)
            result.append(std::to_string(i)).append(text, number + 2);
    }
    return result;
}

std::string textOf(DataRow const& row, std::size_t n) {
    std::string begin = row[2];
    if (std::size_t const at = begin.find("$n"); at != begin.npos)
        begin.replace(at, 2, std::to_string(n));
    return begin + repeated(row[3], n) + row[4] + repeated(row[5], n) + row[6];
}

class Proportion : public testing::TestWithParam<std::size_t> {
protected:
    CapturedLog const unheard{0};

    static Usage usageOf(std::string const& document) {
        return Usage::of([&] {
            kxmodel::Document const read = kxmodel::readDocument(document);
            Result why;
            if (read.root)
                kxmodel::writeDocument(read, read.rendering, why);
        });
    }
};

TEST_P(Proportion, OfTimeAndMemoryToTheSizeOfADocument) {
    DataRow const& row = rows[GetParam()];
    std::size_t const count = row.number(1) / (isWholeForm() ? 1 : 50);
    std::string const texts[] = {textOf(row, count / 4), textOf(row, count)};
    for (bool const isXml : {false, true}) {
        if (!isXml && texts[0].starts_with('<'))
            continue;
        SCOPED_TRACE(row.place + (isXml ? ", XML" : ""));
        std::string documents[2];
        for (std::size_t k : {0u, 1u})
            documents[k] = !isXml                      ? texts[k]
                           : texts[0].starts_with('<') ? xmlDocument(texts[k])
                                                       : xmlOf(texts[k]);
        // The best of several tries, because other programs run meanwhile.
        double seconds[] = {3600, 3600};
        for (int i = 0; i < 20 && (i == 0 || seconds[1] > 5 * seconds[0]); ++i)
            for (std::size_t k : {0u, 1u}) {
                Usage const usage = usageOf(documents[k]);
                seconds[k] = std::min(seconds[k], usage.seconds);
                // The smallest child, a dozen bytes, is an object.
                EXPECT_LE(usage.peak, 100 * documents[k].size() + 100'000);
            }
        EXPECT_LE(seconds[1], 5 * seconds[0]);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, Proportion, testing::Range<std::size_t>(0, rows.size()));

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
