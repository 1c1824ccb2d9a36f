// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

class CommandLine : public Program {};

char const* const verbs[] = {"show", "convert", "check", "diff", "merge", "export", "get", "set", "graph"};

TEST_F(CommandLine, WrongCallsEndWithStatusTwo) {
    std::string const file = put("document", container("root"));
    std::vector<std::string> const calls[] = {{},
                                              {"explain", file},
                                              {"show"},
                                              {"show", file, "--depth", "-1"},
                                              {"show", file, "--unknown"},
                                              {"convert", file, path("out")},
                                              {"convert", file, path("out"), "--to", "pdf"},
                                              {"check"},
                                              {"diff", file},
                                              {"merge", file, file},
                                              {"export", file},
                                              {"get", file},
                                              {"set", file},
                                              {"graph", file, "-o"}};
    for (auto const& call : calls) {
        Ending const result = run(call);
        EXPECT_EQ(result.status, 2) << (call.empty() ? "" : call.back());
        EXPECT_TRUE(!result.err.empty() && result.out.empty());
    }
    EXPECT_EQ(numFiles(), 1);
}

TEST_F(CommandLine, HelpIsGivenWithAnExample) {
    EXPECT_NE(run({"--help"}).out.find("Usage"), std::string::npos);
    for (std::string const verb : verbs) {
        Ending const result = run({verb, "--help"});
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find("Usage"), std::string::npos) << result.out;
        EXPECT_NE(result.out.find("\nExample: kxmodel " + verb + " "), std::string::npos) << result.out;
    }
}

TEST_F(CommandLine, EveryVerbEndsWithEachOfItsStatuses) {
    std::string const good =
        put("good", object("root", attribute("int", "n", "1")) + child("Object", "A", object("A")));
    std::string const other = put("other", object("root", attribute("int", "n", "2")));
    std::string const odd = put("odd", container("root", "\nFoo 1"));
    std::string const doubling = put("doubling", doublingDocument("AttrContainer"));
    std::string const bad = put("bad", "nonsense"), missing = path("missing");
    std::string const out = path("out"), dot = path("out.dot"), away = path("missing/out");
    std::pair<std::vector<std::string>, int> const rows[] = {
        {{"show", good}, 0},
        {{"show", bad}, 2},
        {{"show", missing}, 2},
        {{"show", doubling}, 0},
        {{"convert", good, out, "--to", "xml"}, 0},
        {{"convert", bad, out, "--to", "xml"}, 2},
        {{"convert", missing, out, "--to", "xml"}, 2},
        {{"convert", good, away, "--to", "xml"}, 2},
        {{"check", good, other}, 0},
        {{"check", good, odd}, 1},
        {{"check", odd, bad}, 2},
        {{"check", missing, good}, 2},
        {{"diff", good, good}, 0},
        {{"diff", good, other}, 1},
        {{"diff", good, bad}, 2},
        {{"diff", missing, good}, 2},
        {{"merge", good, other, "-o", out}, 0},
        {{"merge", good, bad, "-o", out}, 2},
        {{"merge", missing, other, "-o", out}, 2},
        {{"merge", good, other, "-o", away}, 2},
        {{"export", good, out}, 0},
        {{"export", odd, out}, 2},
        {{"export", doubling, out}, 2},
        {{"export", bad, out}, 2},
        {{"export", missing, out}, 2},
        {{"export", good, away}, 2},
        {{"get", good, "/n"}, 0},
        {{"get", good, "/m"}, 2},
        {{"get", bad, "/n"}, 2},
        {{"get", missing, "/n"}, 2},
        {{"set", good, "/n=1", "-o", out}, 0},
        {{"set", good, "/n=x", "-o", out}, 2},
        {{"set", doubling, "/b/a/b/Name=x", "-o", out}, 0},
        {{"set", odd, "/Name=n", "-o", out}, 2},
        {{"set", missing, "/n=1", "-o", out}, 2},
        {{"set", good, "/n=1", "-o", away}, 2},
        {{"graph", good, "-o", dot}, 0},
        {{"graph", doubling, "-o", dot}, 0},
        {{"graph", bad, "-o", dot}, 2},
        {{"graph", missing, "-o", dot}, 2},
        {{"graph", good, "-o", away + ".dot"}, 2}};
    for (auto const& [call, status] : rows) {
        SCOPED_TRACE(call[0] + " " + call[1] + " " + call.back());
        put("out", "old");
        put("out.dot", "old");
        Ending const result = run(call);
        EXPECT_EQ(result.status, status) << result.err;
        EXPECT_TRUE(status != 2 || !result.err.empty());
        bool const writes = status == 0 && (call.back() == out || call.back() == dot || call[0] == "convert");
        EXPECT_EQ(contentOf(out) + contentOf(dot) != "oldold", writes);
        EXPECT_EQ(numFiles(), 7) << "nothing is left beside them";
    }
}

TEST_F(CommandLine, ManualsShowEveryVerb) {
    for (std::string const form : {"man", "bash", "fish", "zsh"}) {
        Ending const result = run({"--manual", form});
        EXPECT_EQ(result.status, 0);
        for (std::string const verb : verbs)
            EXPECT_NE(result.out.find(verb), std::string::npos) << form << " " << verb;
    }
    EXPECT_EQ(run({"--manual", "csh"}).status, 2);

    if (!hasPosixFiles)
        return;
    std::string const bash = put("bash", run({"--manual", "bash"}).out);
    EXPECT_EQ(std::system(("bash -c '. " + bash +
                           "; COMP_WORDS=(kxmodel convert --to x) COMP_CWORD=3; _kxmodel; "
                           "[[ ${COMPREPLY[*]} == xml ]]'")
                              .c_str()),
              0);
}

} // namespace
