// SPDX-License-Identifier: MIT
#include "Program.h"

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

std::string const objectLines = "  String Action = \"\"\n"
                                "  String Event = \"\"\n"
                                "  uint16_t MajorVersion = 0\n"
                                "  uint16_t MinorVersion = 0\n"
                                "  Uuid UUID = 00000000-0000-0000-0000-000000000000\n";

TEST_F(Show, WholeTreeIsShown) {
    Ending const result = run({"show", put("document", document())});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    std::string inner;
    std::istringstream lines(objectLines);
    for (std::string line; std::getline(lines, line);)
        inner += "  " + line + "\n";
    std::string const marks = longVector().substr(0, longVector().size() - 1);
    EXPECT_EQ(result.out, "Object \"root\"\n"
                          "  String Name = \"root\"\n" +
                              objectLines +
                              "  String note = \"a \\\"b\\\"\\n\"\n"
                              "  int8_t small = 5\n"
                              "  field gauge: Acme::Gauge (unknown class) \"g\"\n"
                              "    String Name = \"g\"\n"
                              "    DVector marks = " +
                              marks.substr(0, 72) + "... (" + std::to_string(marks.size()) +
                              " characters)\n"
                              "  child Object \"A\"\n"
                              "    String Name = \"A\"\n" +
                              inner +
                              "    child Acme::Blob (unknown class) \"blob\", 7 bytes kept as text\n");
}

TEST_F(Show, OptionsChooseWhatIsShown) {
    std::string const file = put("document", document());
    struct Row {
        std::vector<std::string> options;
        std::vector<std::string> shown;
        std::vector<std::string> hidden;
    };
    std::vector<Row> const rows = {
        {{"--full"}, {"marks = " + longVector().substr(0, longVector().size() - 1) + "\n"}, {"characters)"}},
        {{"--no-values"}, {"  String note\n", "  int8_t small\n", "    DVector marks\n"}, {" = "}},
        {{"--depth", "0"},
         {"Object \"root\"\n", "  int8_t small = 5\n", "  ... 1 field\n  ... 1 child\n"},
         {"gauge", "\"A\""}},
        {{"--depth", "1"}, {"field gauge", "child Object \"A\"", "    ... 1 child\n"}, {"blob"}},
        {{"--links"}, {"    post-observer \"/A\", action \"Notify\", priority 10\n"}, {"PreNotify"}},
        {{}, {}, {"post-observer"}},
    };
    for (Row const& row : rows) {
        std::vector<std::string> arguments = {"show", file};
        arguments.insert(arguments.end(), row.options.begin(), row.options.end());
        Ending const result = run(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        for (std::string const& text : row.shown)
            EXPECT_NE(result.out.find(text), std::string::npos) << text << " in:\n" << result.out;
        for (std::string const& text : row.hidden)
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
    EXPECT_EQ(result.out, "AttrContainer \"root\"\n"
                          "  String Name = \"root\"\n"
                          "  field a: AttrContainer \"x\"\n"
                          "    String Name = \"x\"\n"
                          "    field b: AttrContainer \"y\"\n"
                          "      String Name = \"y\"\n"
                          "      field up: AttrContainer \"x\" (shown above)\n");
}

TEST_F(Show, FailuresEndWithStatusTwo) {
    std::string const file = put("document", document());
    EXPECT_EQ(run({"show", path("missing")}).status, 2);
    EXPECT_EQ(run({"show", "-"}, "nonsense").status, 2);
    Ending const full = runWithOutput({"show", file}, "/dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_TRUE(full.err.starts_with("standard output: ")) << full.err;
}

} // namespace
