// SPDX-License-Identifier: MIT
#include "Program.h"

#include <regex>

using namespace kxmodel_test;

namespace {

class Show : public Program {
protected:
    std::string document() const {
        return header +
               object("root",
                      attribute("String", "note", "\"a \\\"b\\\"\\n\"") +
                          attribute("int8_t", "small", "5", link("PostObserver", "/A", 10, "Notify")) +
                          field("Acme::Gauge", "gauge",
                                container("g", attribute("DVector", "marks", longVector())))) +
               child("Object", "A", object("A") + child("Acme::Blob", "blob", "\nData 1"));
    }
    static std::string longVector() {
        std::string text = "{ ";
        for (int i = 100; i < 140; ++i)
            text += std::to_string(i) + " ";
        return text + "} ";
    }
};

TEST_F(Show, WholeTreeIsShown) {
    Ending const result = run({"show", put("document", document())});
    EXPECT_EQ(result.status, 0) << result.err;
    std::string const marks = longVector().substr(0, longVector().size() - 1);
    std::string const objectLines =
        "  String Action = \"\"\n  String Event = \"\"\n  uint16_t MajorVersion = 0\n"
        "  uint16_t MinorVersion = 0\n  Uuid UUID = 00000000-0000-0000-0000-000000000000\n";
    EXPECT_EQ(result.out, "Object \"root\"\n  String Name = \"root\"\n" + objectLines +
                              "  String note = \"a \\\"b\\\"\\n\"\n"
                              "  int8_t small = 5\n"
                              "  field gauge: Acme::Gauge (unknown class) \"g\"\n"
                              "    String Name = \"g\"\n"
                              "    DVector marks = " +
                              marks.substr(0, 72) + "... (" + std::to_string(marks.size()) +
                              " characters)\n"
                              "  child Object \"A\"\n" +
                              "    String Name = \"A\"\n" +
                              std::regex_replace(objectLines, std::regex("  (.*\n)"), "    $1") +
                              "    child Acme::Blob (unknown class) \"blob\", 7 bytes kept as text\n");
}

TEST_F(Show, OptionsChooseWhatIsShown) {
    std::string const file = put("document", document());
    using Texts = std::vector<std::string>;
    std::tuple<Texts, Texts, Texts> const rows[] = {
        // Options, what is shown, what is not.
        {{"--full"}, {"marks = " + longVector().substr(0, longVector().size() - 1) + "\n"}, {"characters)"}},
        {{"--no-values"}, {"  String note\n", "  int8_t small\n", "    DVector marks\n"}, {" = "}},
        {{"--depth", "0"},
         {"Object \"root\"\n", "  int8_t small = 5\n", "  ... 1 field\n  ... 1 child\n"},
         {"gauge", "\"A\""}},
        {{"--depth", "1"}, {"field gauge", "child Object \"A\"", "    ... 1 child\n"}, {"blob"}},
        {{"--links"}, {"    post-observer \"/A\", action \"Notify\", priority 10\n"}, {"PreNotify"}},
        {{}, {}, {"post-observer"}},
    };
    for (auto const& [options, shown, hidden] : rows) {
        Texts arguments = {"show", file};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Ending const result = run(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        for (std::string const& text : shown)
            EXPECT_NE(result.out.find(text), std::string::npos) << text << " in:\n" << result.out;
        for (std::string const& text : hidden)
            EXPECT_EQ(result.out.find(text), std::string::npos) << text << " in:\n" << result.out;
    }
}

TEST_F(Show, SharedContainersAreShownOnce) {
    std::string const inner =
        container("y", field("AttrContainer", "up", "\nInstanceID 7\nReferenceToShared "));
    std::string const outer = container("x", field("AttrContainer", "b", "\nInstanceID 8" + inner));
    Ending const result =
        run({"show", "-"}, container("root", field("AttrContainer", "a", "\nInstanceID 7" + outer)));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.out.ends_with("      field up: AttrContainer \"x\" (shown above)\n")) << result.out;
}

TEST_F(Show, FailuresEndWithStatusTwo) {
    EXPECT_EQ(run({"show", path("missing")}).status, 2);
    EXPECT_EQ(run({"show", "-"}, "nonsense").status, 2);
}

} // namespace
