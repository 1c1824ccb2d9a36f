// SPDX-License-Identifier: MIT
#include "Program.h"
#include "RandomTree.h"

using namespace kxmodel_test;

namespace {

class Merge : public Program {
protected:
    /// The result of a merge that must succeed.
    std::string merged(std::string const& target, std::string const& source, bool deletesSurplus) const {
        std::vector<std::string> call{"merge", target, source, "-o", "-"};
        if (deletesSurplus)
            call.push_back("--delete");
        Ending const result = run(call);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.out;
    }
};

std::string counters(char const* attributes, char const* members) {
    return std::string("attributes: ") + attributes + "; fields and children: " + members + "\n";
}

TEST_F(Merge, TargetTakesOverWhatTheSourceHas) {
    auto const n = [](std::string const& value) { return attribute("int", "n", value); };
    auto const pump = [&](std::string const& value) {
        return child("Acme::Pump", "p", object("p", n(value)));
    };
    auto const o = [&](std::string const& name, std::string const& content) {
        return child("Object", name, object(name, content));
    };
    std::string const withChild = object("f") + o("c", n("1"));
    struct Row {
        std::string target, source, kept, keptCounters, replaced, deletingCounters;
    };
    Row const rows[] = {
        {container("r", n("1") + attribute("int", "m", "5")),
         container("s", n("2") + attribute("int", "k", "7")),
         container("s", n("2") + attribute("int", "m", "5") + attribute("int", "k", "7")),
         counters("2 changed, 0 unchanged, 1 added, 0 removed", "0 added, 0 removed"),
         container("s", n("2") + attribute("int", "k", "7")),
         counters("2 changed, 0 unchanged, 1 added, 1 removed", "0 added, 0 removed")},
        // Children and what is below fields that are objects.
        {object("r") + o("a", n("1")) + o("b", ""),
         object("r", field("Object", "f", withChild)) + o("c", "") + o("a", n("2")),
         object("r", field("Object", "f", withChild)) + o("a", n("2")) + o("b", "") + o("c", ""),
         counters("1 changed, 12 unchanged, 0 added, 0 removed", "2 added, 0 removed"),
         object("r", field("Object", "f", withChild)) + o("a", n("2")) + o("c", ""),
         counters("1 changed, 12 unchanged, 0 added, 0 removed", "2 added, 1 removed")},
        {object("r", field("Object", "f", object("f"))), object("r", field("Object", "f", withChild)),
         object("r", field("Object", "f", withChild)),
         counters("0 changed, 12 unchanged, 0 added, 0 removed", "1 added, 0 removed"),
         object("r", field("Object", "f", withChild)),
         counters("0 changed, 12 unchanged, 0 added, 0 removed", "1 added, 0 removed")},
        // Placeholders and other classes are replaced in their places.
        {object("r") + pump("1") + pump("2") + o("z", ""), object("r") + pump("3") + pump("2"),
         object("r") + pump("3") + pump("2") + o("z", ""),
         counters("0 changed, 6 unchanged, 0 added, 0 removed", "1 added, 1 removed"),
         object("r") + pump("3") + pump("2"),
         counters("0 changed, 6 unchanged, 0 added, 0 removed", "1 added, 2 removed")},
        {container("r", field("Acme::X", "f", "\nBits 1" + container("f", n("1"))) +
                            field("AttrContainer", "g", container("g"))),
         container("r",
                   field("AttrContainer", "f", container("f", n("1"))) + field("Acme::X", "g", withChild)),
         container("r",
                   field("AttrContainer", "f", container("f", n("1"))) + field("Acme::X", "g", withChild)),
         counters("0 changed, 1 unchanged, 0 added, 0 removed", "2 added, 2 removed"),
         container("r",
                   field("AttrContainer", "f", container("f", n("1"))) + field("Acme::X", "g", withChild)),
         counters("0 changed, 1 unchanged, 0 added, 0 removed", "2 added, 2 removed")},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.target + "\n== and ==" + row.source);
        std::string const target = put("target", row.target), source = put("source", row.source);
        Ending const kept = run({"merge", target, source, "-o", "-"});
        EXPECT_EQ(kept.status, 0);
        expectSame(kept.out, row.kept);
        EXPECT_EQ(kept.err, target + ": " + row.keptCounters);
        Ending const replaced = run({"merge", target, source, "--delete", "-o", path("out")});
        EXPECT_EQ(replaced.status, 0);
        expectSame(contentOf(path("out")), row.replaced);
        EXPECT_EQ(replaced.err, target + ": " + row.deletingCounters);
        Ending const dry = run({"merge", target, source, "--delete", "--dry-run", "-o", target});
        EXPECT_EQ(dry.status, 0);
        EXPECT_EQ(dry.err, replaced.err);
        expectSame(contentOf(target), row.target);
    }
}

TEST_F(Merge, RenderingHeaderAndLinksOfTheTargetStay) {
    std::string const links =
        link("PreObserver", "~/Nowhere", 10, "Acme.Ask") + link("PostObserver", "/a", 1, "Notify");
    std::string const text = header + object("r", attribute("int", "n", "1", links) + links) +
                             child("Object", "a", object("a", links)) +
                             child("Acme::P", "p", object("p", links)) +
                             child("Object", "b", object("b", attribute("int", "m", "1", links)));
    std::string const source =
        put("source", object("r", attribute("int", "n", "2")) + child("Acme::P", "p", object("p", links)) +
                          child("Object", "c", object("c", attribute("int", "k", "1", links))));
    std::string const expected = header + object("r", attribute("int", "n", "2", links) + links) +
                                 child("Object", "a", object("a", links)) +
                                 child("Acme::P", "p", object("p", links)) +
                                 child("Object", "b", object("b", attribute("int", "m", "1", links))) +
                                 child("Object", "c", object("c", attribute("int", "k", "1", links)));
    expectSame(merged(put("target", text), source, false), expected);
    expectSame(merged(put("target", converted(text, "xml")), source, false), converted(expected, "xml"));
}

TEST_F(Merge, WhatDoesNotArriveIsSaid) {
    std::string const target =
        put("target", object("r", attribute("int", "n", "1")) + child("Object", "x", object("x")));
    std::string const source =
        put("source", object("r", attribute("String", "n", "\"t\"") + attribute("int", "x", "1")));
    Ending const result = run({"merge", target, source, "-o", "-"});
    EXPECT_EQ(result.status, 0);
    expectSame(result.out, object("r", attribute("int", "n", "")) + child("Object", "x", object("x")));
    std::string const start = target + ": warning: ";
    EXPECT_TRUE(result.err.starts_with(start +
                                       "/n has another type in the source (int -> String); \"t\" was taken "
                                       "over as 0\n" +
                                       start + "/x was not taken over from the source (only-second)\n"))
        << result.err;
}

TEST_F(Merge, RefusedMergesLeaveTheOldFile) {
    std::string const good = put("good", object("r")), plain = put("plain", container("r"));
    std::string const lossy = put("lossy", object("r", "\nFoo 1")),
                      family = put("family", object("r") + child("Object", "c", object("c")));
    std::string const out = put("out", "old");
    std::string const doubling = put("doubling", doublingDocument("AttrContainer"));
    std::pair<std::vector<std::string>, std::string> const rows[] = {
        {{good, doubling, "-o", out}, doubling + ": its shared instances"},
        {{good, lossy, "-o", out}, lossy + ":"},
        {{lossy, good, "-o", out}, lossy + ":"},
        {{good, path("missing"), "-o", out}, path("missing") + ": "},
        {{plain, family, "-o", out}, plain + ": the root"},
        {{"-", "-", "-o", out}, "standard input: "},
        {{good, good, "-o", path("no/out")}, path("no/out") + ": "},
        {{good, good}, "-o"},
        {{good, "-o", out}, "SOURCE is required"},
    };
    for (auto const& [arguments, message] : rows) {
        std::vector<std::string> call{"merge"};
        call.insert(call.end(), arguments.begin(), arguments.end());
        Ending const result = run(call);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
        EXPECT_EQ(contentOf(out), "old");
    }
}

TEST_F(Merge, RandomTreesBecomeEqualAndStaySo) {
    for (unsigned seed = 1; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        RandomTree random(seed, RandomTree::Types::Stay);
        auto const tree = random.make();
        std::string const target = put("target", documentOf(*tree));
        random.edit(*tree);
        std::string const source = put("source", documentOf(*tree));
        std::string const equal = put("equal", merged(target, source, true));
        Ending const difference = run({"diff", equal, source});
        EXPECT_EQ(difference.status, 0) << difference.out;
        std::string const united = put("united", merged(target, source, false));
        EXPECT_EQ(run({"diff", united, source, "--only-in", "second"}).out,
                  run({"diff", united, source, "--only-in", "none"}).out);
        expectSame(merged(equal, source, true), contentOf(equal));
        expectSame(merged(united, source, false), contentOf(united));
    }
}

} // namespace
