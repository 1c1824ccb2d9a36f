// SPDX-License-Identifier: MIT
#include "Program.h"
#include "RandomTree.h"

using namespace kxmodel_test;

namespace {

class Diff : public Program {
protected:
    using Lines = std::vector<std::string>;

    static Lines linesOf(std::string const& text) {
        Lines lines;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }
};

std::string const summaryTail = "; observer links were not compared";

TEST_F(Diff, EveryKindOfDifferenceIsListed) {
    auto const n = [](std::string const& value) { return attribute("int", "n", value); };
    auto const pump = [&](std::string const& value) {
        return object("r") + child("Acme::Pump", "p", "\nSerial 1" + object("p", n(value)));
    };
    auto const withUuid = [](std::string name) {
        std::string text = object(name);
        return child("Object", name,
                     text.insert(text.find("\"UUID\"") + 6, "\nValue 11111111-2222-3333-4444-555555555555"));
    };
    std::string const withLink = n("1" + link("PostObserver", "/A", 1, "Notify"));
    struct Row {
        std::string first, second;
        std::vector<std::string> options;
        Lines lines;
    };
    Row const rows[] = {
        {container("r"), container("r"), {}, {}},
        {container("r"), container("s"), {}, {"/Name: changed, String: \"r\" -> \"s\""}},
        {container("r", n("1")), container("r", n("2")), {}, {"/n: changed, int: 1 -> 2"}},
        {container("r", n("1") + n("5")),
         container("r", n("1") + n("6")),
         {},
         {"/n[2]: changed, int: 5 -> 6"}},
        {container("r", n("1")),
         container("r", attribute("double", "n", "1")),
         {},
         {"/n: type-changed, int -> double: 1 -> 1"}},
        {container("r", n("1")), container("r"), {}, {"/n: only-first, int: 1"}},
        {container("r", n("1")), container("r"), {"--only-in", "second"}, {}},
        {container("r"), container("r", n("1")), {"--only-in", "second"}, {"/n: only-second, int: 1"}},
        {container("r", n("1")), container("r", n("2")), {"--categories", "63"}, {}},
        {container("r", n("1")), container("r", n("2")), {"--ignore", "m", "--ignore", "n"}, {}},
        {container("r", attribute("double", "d", "1.000001")),
         container("r", attribute("double", "d", "1.000004") + n("0")),
         {"--approx"},
         {"/n: only-second, int: 0"}},
        {container("r", field("AttrContainer", "f", container("own")) +
                            field("AttrContainer", "f", container("own", n("1")))),
         container("r", field("AttrContainer", "f", container("own")) +
                            field("Object", "f", object("own", n("2")))),
         {"--only-in", "first"},
         {"/f[2]: class-changed, AttrContainer -> Object", "/f[2]/n: changed, int: 1 -> 2"}},
        {object("r") + withUuid("a") + child("Object", "b", object("b", n("3"))),
         object("r") + child("Object", "b", object("b", n("4"))) + withUuid("z"),
         {},
         {"/a/Name: changed, String: \"a\" -> \"z\"", "/b/n: changed, int: 3 -> 4"}},
        {object("r") + child("Object", "a/=[", object("a/=[", n("3"))),
         object("r"),
         {"--ignore", "UUID", "--categories", "64"},
         {"/a\\/\\=\\[/n: only-first, int: 3"}},
        {pump("1"), pump("1"), {}, {}},
        {object("r") + child("Acme::Blob", "b", "\nBits 1"),
         object("r") + child("Acme::Blob", "b", "\nBits 2"),
         {},
         {"/b: content, Acme::Blob: Bits 1 -> Bits 2"}},
        {object("r"),
         object("r") + child("Object", "o", object("o")),
         {"--categories", "64"},
         {"/o: only-second, Object"}},
        {container("r", n("1") + field("Acme::X", "f", container("f"))),
         container("r", n("1") + field("Acme::Y", "f", container("f"))),
         {},
         {"/f: class-changed, Acme::X -> Acme::Y"}},
        {container("r", withLink), container("r", n("1")), {}, {}},
        {container("r", withLink),
         container("r", n("1")),
         {"--links"},
         {"/n: links, int: post-observer \"/A\", action \"Notify\", priority 1 -> (none)"}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.first + "\n== and ==" + row.second);
        std::vector<std::string> call{"diff", put("first", row.first), put("second", row.second)};
        call.insert(call.end(), row.options.begin(), row.options.end());
        Ending const result = run(call);
        EXPECT_EQ(result.status, row.lines.empty() ? 0 : 1) << result.err;
        auto lines = linesOf(result.out);
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back().ends_with(summaryTail), row.options != std::vector<std::string>{"--links"});
        lines.pop_back();
        EXPECT_EQ(lines, row.lines);
        call.push_back("--quiet");
        Ending const quiet = run(call);
        EXPECT_TRUE(quiet.status == result.status && quiet.out.empty());
        std::string const other = put("other", converted(row.first, "xml"));
        EXPECT_EQ(run({"diff", path("first"), other, "--links"}).status, 0) << "renderings do not differ";
    }
}

TEST_F(Diff, JsonIsOneObjectWhateverTheValuesHold) {
    if (!hasPosixFiles)
        GTEST_SKIP() << "no file has such a name here";
    std::string const first =
        put("a\xff\xc3\xa9", container("r", attribute("String", "s", "\"\\uFFC3 \\\\\"")));
    std::string const second = put("b\"", container("r", field("Acme::X", "f", "\nBits \xc3\xa9 \xe9\t1")));
    std::string const start = "{\"format\":1,\"first\":\"" + path("a\\\\uFFFF\xc3\xa9") + "\",\"second\":\"";
    EXPECT_EQ(
        run({"diff", first, second, "--format", "json"}).out,
        start + path("b\\\"") +
            "\",\"equal\":false,\"summary\":{\"changed\":0,\"only_first\":1,\"only_second\":1},"
            "\"differences\":[\n"
            R"({"path":"/s","kind":"only-first","type":"String","first":"\"\\uFFC3 \\\\\"","second":null},)"
            "\n"
            R"({"path":"/f","kind":"only-second","type":"Acme::X","first":null,)"
            "\"second\":\"Bits \xc3\xa9 \\\\uFFE9\\u00091\"}]}\n");
    EXPECT_EQ(run({"diff", first, first, "--format", "json"}).out,
              start + path("a\\\\uFFFF\xc3\xa9") +
                  "\",\"equal\":true,\"summary\":{\"changed\":0,\"only_first\":0,\"only_second\":0},"
                  "\"differences\":[]}\n");
}

TEST_F(Diff, LongValuesAreCutAroundTheirFirstDifference) {
    std::string const same(200, 'x');
    std::string const first =
        put("a", container("r", attribute("String", "s", '"' + same + "A" + same + '"')));
    std::string const second =
        put("b", container("r", attribute("String", "s", '"' + same + "B" + same + '"')));
    std::string const before = "..." + same.substr(0, 24),
                      behind = same.substr(0, 47) + "... (403 characters)";
    EXPECT_EQ(linesOf(run({"diff", first, second}).out)[0],
              "/s: changed, String: " + before + "A" + behind + " -> " + before + "B" + behind);
    EXPECT_NE(run({"diff", first, second, "--full"}).out.find(same + "B" + same), std::string::npos);
}

TEST_F(Diff, TroubleEndsWithStatusTwoAndWarningsDoNot) {
    std::string const good = put("good", container("r")), missing = path("missing");
    std::string const odd = put("odd", container("r", "\nFoo 1")), cut = put("cut", container("r", "\n{"));
    std::string const kept = put("kept", doublingDocument("Acme::X"));
    std::string const shared = put("shared", doublingDocument("AttrContainer"));
    std::tuple<std::vector<std::string>, int, std::string> const rows[] = {
        {{shared, shared}, 0, ""},
        {{kept, kept}, 2, kept + " and " + kept + ": \"level\" of the unknown class"},
        {{odd, good}, 0, odd + ":7:4: warning: UnknownContent"},
        {{good, odd}, 0, odd + ":7:4: warning: UnknownContent"},
        {{good, missing}, 2, missing + ": "},
        {{cut, good}, 2, cut + ":"},
        {{"-", "-"}, 2, "standard input: "},
        {{good}, 2, "B is required"},
        {{good, good, "--only-in", "third"}, 2, "--only-in"},
        {{good, good, "--format", "xml"}, 2, "--format"},
    };
    for (auto const& [arguments, status, message] : rows) {
        std::vector<std::string> call{"diff"};
        call.insert(call.end(), arguments.begin(), arguments.end());
        Ending const result = run(call);
        EXPECT_EQ(result.status, status) << message;
        EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
        EXPECT_EQ(result.out.empty(), status == 2);
    }
}

TEST_F(Diff, RandomEditsAreListedExactly) {
    auto const without = [](Lines const& from, Lines const& what) {
        Lines rest;
        std::set_difference(from.begin(), from.end(), what.begin(), what.end(), std::back_inserter(rest));
        return rest;
    };
    for (unsigned seed = 0; seed < 25; ++seed) {
        SCOPED_TRACE(seed);
        RandomTree random(seed);
        auto const tree = random.make();
        std::string const first = put("first", documentOf(*tree));
        if (seed % 8 != 0)
            random.edit(*tree);
        std::string const second = put("second", documentOf(*tree));
        Lines expected = random.expected();
        Ending const result = run({"diff", first, second});
        EXPECT_EQ(result.status, expected.empty() ? 0 : 1) << result.err;
        Lines lines = linesOf(result.out);
        ASSERT_FALSE(lines.empty());
        lines.pop_back();
        if (!lines.empty()) {
            std::string const& line = lines[lines.size() / 2];
            bool const isSecond = line.find(": only-second") != line.npos;
            std::string const path = line.substr(0, line.find(": "));
            EXPECT_EQ(run({"get", isSecond ? second : first, path}).status, 0) << path;
        }
        std::sort(lines.begin(), lines.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(without(lines, expected), Lines()) << "listed, but no edit";
        EXPECT_EQ(without(expected, lines), Lines()) << "edits that are not listed";
    }
}

} // namespace
