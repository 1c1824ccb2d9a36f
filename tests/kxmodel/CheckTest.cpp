// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

class Check : public Program {};

std::string const good = header + object("root") + child("Object", "c", object("c"));

TEST_F(Check, StatusTellsHowTheDocumentWasRead) {
    // Each message stands on a line that begins with the file's name.
    std::tuple<std::string, int, std::vector<std::string>> const rows[] = {
        {good, 0, {}},
        {container("root"), 0, {}},
        {object("root") + child("Acme::Pump", "p", object("p")),
         1,
         {"warning: UnknownClass", "cause: ContentSkipped (FallbackObject:"}},
        {container("root", "\nFoo 1\nBar 2"),
         1,
         {":7:4: warning: UnknownContent (WtAttrContainer:1530)",
          ":7:4:   cause: UnknownKeyword (WtAttrContainer:", "Unknown Key: Foo Unknown type: AttrContainer",
          "Unknown Key: Bar"}},
        {container("root", link("PreObserver", "/A", 1, "Acme.Ask")),
         1,
         {"warning: ObserverUnresolved (Observable:674)"}},
        {object("root", "\nFoo 1"), 2, {"error: ObjectContentUnknown (Object:682)", "cause: UnknownContent"}},
        {container("root", attribute("ScanPt", "p", "1")), 2, {"error: AttributeNotCreated"}},
        {container("root", attribute("int", "n", "x")), 2, {"error: StreamFailure"}},
        {container("root") + "\nmore ", 2, {"content behind the root"}},
        {"", 2, {"empty"}},
        {"\"Title\"\n\"WtLib\" x", 2, {"header"}},
        {"<html>", 2, {"neither"}},
        {std::string("\0\1\2\xff{}", 6), 2, {}},
    };
    for (auto const& [text, status, messages] : rows) {
        SCOPED_TRACE(text);
        std::string const file = put("document", text);
        Ending const result = run({"check", file});
        EXPECT_EQ(result.status, status) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.empty(), status == 0) << result.err;
        for (std::string const& message : messages)
            EXPECT_NE(result.err.find(message), std::string::npos) << message << " in:\n" << result.err;
        std::istringstream lines(result.err);
        for (std::string line; std::getline(lines, line);)
            EXPECT_TRUE(line.starts_with(file + ":")) << line;
    }
}

TEST_F(Check, WorstDocumentDecidesAndAllAreRead) {
    std::string const fine = put("fine", good), odd = put("odd", container("root", "\nFoo 1"));
    std::string const broken = put("broken", "nonsense"), missing = path("missing");
    EXPECT_EQ(run({"check", fine, odd}).status, 1);
    Ending const result = run({"check", missing, broken, odd, fine});
    EXPECT_EQ(result.status, 2);
    for (std::string const& file : {missing, broken, odd})
        EXPECT_NE(result.err.find(file + ":"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find(fine), std::string::npos) << result.err;
}

TEST_F(Check, CutDocumentsAreReportedAndChangedBytesDoNoHarm) {
    std::string const text =
        good + child("Acme::Pump", "p", object("p", attribute("VecPoly3d", "v", "{ { 1 2 3 }  } "))) +
        child("Object", "d", object("d", attribute("StringArray", "a", "2 \"x\" \"y\"")));
    for (std::string const& document : {text, converted(text, "xml")}) {
        std::vector<std::string> checkOfChanged{"check"};
        for (std::size_t length = 0; length < document.size(); length += 9 + length % 23) {
            std::string const cut = document.substr(0, length);
            Ending const result = run({"check", "-"}, cut);
            // Only a text that ends exactly between two blocks of the top level is a document.
            std::size_t const next = length + (document[length] == '\n' ? 1 : 0);
            bool const isBetweenBlocks = cut.find_last_not_of('\n') == cut.rfind("\n}") + 1 &&
                                         document.substr(next).starts_with("Child {");
            EXPECT_TRUE(isBetweenBlocks ? result.status == 0 || result.status == 1 : result.status == 2)
                << result.status << " for:\n"
                << cut;

            std::string changed = document;
            changed[length] = std::string("{}\"'<> \n0\xff")[length % 10];
            checkOfChanged.push_back(put(std::to_string(length), changed));
        }
        int const status = run(checkOfChanged).status;
        EXPECT_TRUE(status >= 0 && status <= 2) << status;
    }
}

} // namespace
