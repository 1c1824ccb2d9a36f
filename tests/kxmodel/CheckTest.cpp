// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

class Check : public Program {
protected:
    std::string good() const { return header + object("root") + child("Object", "c", object("c")); }
};

TEST_F(Check, StatusTellsHowTheDocumentWasRead) {
    struct Row {
        std::string text;
        int status;
        std::vector<std::string> messages; ///< Each stands on a line that begins with the file's name.
    };
    std::vector<Row> const rows = {
        {good(), 0, {}},
        {container("root"), 0, {}},
        {object("root") + child("Acme::Pump", "p", object("p")),
         1,
         {"warning: UnknownClass", "cause: ContentSkipped (FallbackObject:"}},
        {container("root", field("Acme::Gauge", "g", container("g"))),
         1,
         {"Failed to create container of type Acme::Gauge"}},
        {container("root", "\nFoo 1"),
         1,
         {"warning: UnknownContent (WtAttrContainer:1530)",
          "cause: UnknownKeyword (WtAttrContainer:", "Unknown Key: Foo Unknown type: AttrContainer"}},
        {container("root", link("PreObserver", "/A", 1, "Acme.Ask")),
         1,
         {"warning: ObserverUnresolved (Observable:674)"}},
        {object("root", "\nFoo 1"), 2, {"error: ObjectContentUnknown (Object:682)", "cause: UnknownContent"}},
        {container("root", attribute("ScanPt", "p", "1")), 2, {"error: AttributeNotCreated"}},
        {container("root", attribute("int", "n", "x")), 2, {"error: StreamFailure"}},
        {container("root") + "\nmore ", 2, {"content behind the root"}},
        {"", 2, {"empty"}},
        {"\"Title\"\n", 2, {"no container"}},
        {"\"Title\"\n\"WtLib\" x", 2, {"header"}},
        {"<html>", 2, {"neither"}},
        {std::string("\0\1\2\xff{}", 6), 2, {}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.text);
        std::string const file = put("document", row.text);
        Ending const result = run({"check", file});
        EXPECT_EQ(result.status, row.status) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.empty(), row.status == 0) << result.err;
        for (std::string const& message : row.messages)
            EXPECT_NE(result.err.find(message), std::string::npos) << message << " in:\n" << result.err;
        std::istringstream lines(result.err);
        for (std::string line; std::getline(lines, line);)
            EXPECT_TRUE(line.starts_with(file + ":")) << line;
    }
}

TEST_F(Check, MessagesNameTheLine) {
    // Lines of the content count from the third: the header has the first two, the block's start the third.
    std::string const text = "\"Title\"\n\"WtLib\" 9.1.0.0" + container("root", "\nFoo 1\nBar 2");
    Ending const result = run({"check", "-"}, text);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("standard input:8:"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("Unknown Key: Foo"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("Unknown Key: Bar"), std::string::npos) << result.err;
}

TEST_F(Check, WorstDocumentDecidesAndAllAreRead) {
    std::string const fine = put("fine", good());
    std::string const odd = put("odd", container("root", "\nFoo 1"));
    std::string const broken = put("broken", "nonsense");
    EXPECT_EQ(run({"check", fine, odd}).status, 1);
    Ending const result = run({"check", path("missing"), broken, odd, fine});
    EXPECT_EQ(result.status, 2);
    for (std::string const& file : {path("missing"), broken, odd})
        EXPECT_NE(result.err.find(file + ":"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find(fine), std::string::npos) << result.err;
}

TEST_F(Check, CutDocumentsAreReported) {
    std::string const text =
        good() + child("Acme::Pump", "p", object("p")) +
        child("Object", "d", object("d", attribute("StringArray", "a", "2 \"x\" \"y\"")));
    std::string const xml = converted(text, "xml");
    for (std::string const& document : {text, xml}) {
        for (std::size_t length = 0; length < document.size(); length += 3 + length % 11) {
            std::string const cut = document.substr(0, length);
            Ending const result = run({"check", "-"}, cut);
            // Only a text that ends exactly between two blocks of the top level is a document.
            std::size_t const next = length + (document[length] == '\n' ? 1 : 0);
            bool const isBetweenBlocks = cut.find_last_not_of('\n') == cut.rfind("\n}") + 1 &&
                                         document.substr(next).starts_with("Child {");
            if (isBetweenBlocks)
                EXPECT_LE(result.status, 1) << cut;
            else
                EXPECT_EQ(result.status, 2)
                    << length << " bytes: ..." << cut.substr(length - std::min<std::size_t>(length, 60));
            EXPECT_GE(result.status, 0);
        }
    }
}

TEST_F(Check, ChangedBytesDoNoHarm) {
    std::string const text =
        good() + child("Acme::Pump", "p", object("p", attribute("VecPoly3d", "v", "{ { 1 2 3 }  } ")));
    std::string const xml = converted(text, "xml");
    for (std::string const& document : {text, xml}) {
        for (std::size_t i = 0; i < document.size(); i += 7) {
            std::string changed = document;
            changed[i] = std::string("{}\"'<> \n0\xff")[i / 7 % 10];
            Ending const result = run({"check", "-"}, changed);
            EXPECT_TRUE(result.status >= 0 && result.status <= 2) << i << " in\n" << changed << result.err;
        }
    }
}

TEST_F(Check, DeepDocumentsEndClearly) {
    std::string deep, end;
    for (int i = 0; i < 100000; ++i) {
        deep += "\nSubContainer { \n\"AttrContainer\" \"f\"\nAttrContainer { ";
        end += "\n}\n}";
    }
    Ending const result = run({"check", "-"}, "\nAttrContainer { " + deep + end + "\n}");
    EXPECT_EQ(result.status, 2) << result.err.substr(0, 2000);
    EXPECT_NE(result.err.find("StreamFailure"), std::string::npos) << result.err.substr(0, 2000);
}

} // namespace
