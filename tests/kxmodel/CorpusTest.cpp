// SPDX-License-Identifier: MIT
// A folder of small documents, tests/corpus, each with its verdict beside it: a line that says what it shows,
// a line with the outcome, and what `check` says, without file name and lines of the sources. A document that
// is read without loss is written back as it is, or as the .written file beside it says.
#include "Program.h"

#include <regex>

using namespace kxmodel_test;

namespace {

class Corpus : public Program {
protected:
    std::string verdictOn(std::string const& document) const {
        Ending const result = run({"check", document});
        static constexpr char const* outcomes[] = {"read", "read with warnings", "refused"};
        std::string verdict = result.status >= 0 && result.status < 3 ? outcomes[result.status] : "failed";
        verdict += '\n';
        static std::regex const source(" \\((\\w+):\\d+\\)");
        for (std::string line : linesOf(result.err)) {
            EXPECT_TRUE(line.starts_with(document + ':')) << line;
            line.erase(0, document.size() + 1);
            verdict += std::regex_replace(line, source, " ($1)") + '\n';
        }
        return verdict;
    }
};

TEST_F(Corpus, DocumentsGetTheirVerdicts) {
    std::size_t numDocuments = 0;
    static std::regex const id("InstanceID \\d+");
    for (auto const& entry : std::filesystem::recursive_directory_iterator(KX_TEST_CORPUS_DIR)) {
        std::filesystem::path const file = entry.path();
        bool const isXml = file.extension() == ".xml";
        if ((!isXml && file.extension() != ".model") || file.stem().extension() == ".written")
            continue;
        ++numDocuments;
        std::string const expected = contentOf(std::filesystem::path(file).replace_extension(".verdict"));
        SCOPED_TRACE(file.string() + ": " + expected);
        EXPECT_EQ(verdictOn(file.string()), expected.substr(expected.find('\n') + 1));

        Ending const converted = run({"convert", file.string(), "-", "--to", isXml ? "xml" : "text"});
        if (converted.status != 0) {
            EXPECT_EQ(converted.out, "");
            continue;
        }
        std::filesystem::path const written =
            std::filesystem::path(file).replace_extension(".written" + file.extension().string());
        bool const isChanged = std::filesystem::exists(written);
        // Ids are new in each writing.
        expectSame(std::regex_replace(converted.out, id, "InstanceID 17"),
                   contentOf(isChanged ? written : file));
    }
    EXPECT_GT(numDocuments, 100u);
}

TEST_F(Corpus, SampleDocumentsConvertIntoEachOther) {
    std::string const sample = KX_SAMPLE_DATA_DIR "/world-110m.model", out = path("out");
    for (std::string const& in : {sample, sample + ".xml"})
        for (auto const& [rendering, expected] : {std::pair("text", sample), {"xml", sample + ".xml"}}) {
            SCOPED_TRACE(in + " to " + expected);
            Ending const result = run({"convert", in, out, "--to", rendering});
            EXPECT_EQ(result.status, 0) << result.err;
            EXPECT_EQ(result.out + result.err, "");
            EXPECT_TRUE(contentOf(out) == contentOf(expected));
        }
}

} // namespace
