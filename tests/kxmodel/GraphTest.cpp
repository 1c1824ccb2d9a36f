// SPDX-License-Identifier: MIT
#include "Program.h"

#include <cstdlib>

using namespace kxmodel_test;
namespace fs = std::filesystem;

namespace {

class Graph : public Program {
protected:
    Graph() : searched_(std::getenv("PATH") ? std::getenv("PATH") : "") {}
    ~Graph() override { setVariable("PATH", searched_); }

    /// Makes the stand-in the only program that is called "dot".
    void makeDot() const {
        fs::path const program = pathOf(KX_DOT_PROGRAM);
        fs::create_directories(pathOf(path("bin")));
        fs::copy_file(program, pathOf(path("bin/dot")).replace_extension(program.extension()));
        setVariable("PATH", path("bin"));
    }

    std::string searched_;
};

std::string const tree = header +
                         object("ro\\\"ot", attribute("int", "n", "1",
                                                      link("PreObserver", "/A", 10, "PreNotify") +
                                                          link("PostObserver", "/Nobody", 7, "Acme.Log")) +
                                                field("Acme::Gauge", "g&", container("f"))) +
                         child("Object", "A", object("A"));

TEST_F(Graph, TreeAndLinksAreDrawn) {
    Ending const result = run({"graph", "-"}, tree);
    EXPECT_EQ(result.status, 0) << result.err;
    for (std::string const line : {"digraph kxmodel {", "n0 [label=\"ro\\\"ot\"+\"\\n\"+\"Object\"]",
                                   "n1 [label=\"f\"+\"\\n\"+\"Acme::Gauge (unknown class)\"]",
                                   "n0 -> n1 [style=dashed, label=\"g&amp;\"]", "n0 -> n2",
                                   "n0 -> n2 [label=\"n: PreNotify 10\", constraint=false, color=red]",
                                   "x0 [style=dotted, label=\"/Nobody\"]",
                                   "n0 -> x0 [label=\"n: Acme.Log 7\", constraint=false, color=blue]", "}"})
        EXPECT_NE(("\n" + result.out).find("\n" + line + "\n"), std::string::npos) << line << " in\n"
                                                                                   << result.out;
}

TEST_F(Graph, PicturesAreMadeByDot) {
    std::string const in = put("tree.model", tree), text = path("tree.dot"), picture = put("tree.SVG", "old");
    ASSERT_EQ(run({"graph", in, "-o", text}).status, 0);

    makeDot();
    setVariable("KX_DOT", "good");
    EXPECT_EQ(run({"graph", in, "-o", picture}).status, 0);
    std::string const content = contentOf(picture);
    std::string drawn = content;
    std::erase(drawn, '\r'); // the stand-in's standard output is one of texts
    expectSame(drawn, "-Tsvg\n" + contentOf(text));

    for (std::string const ending : {"failed", "killed"}) {
        SCOPED_TRACE(ending);
        setVariable("KX_DOT", ending);
        Ending const result = run({"graph", in, "-o", picture});
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(result.err.starts_with(picture + ": the picture needs Graphviz: \"dot\" ended"))
            << result.err;
    }
    setVariable("PATH", path("nowhere"));
    Ending const missing = run({"graph", in, "-o", picture});
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find("\"dot\" could not be started: "), std::string::npos) << missing.err;
    EXPECT_EQ(std::count(missing.err.begin(), missing.err.end(), '\n'), 1) << missing.err;
    expectSame(contentOf(picture), content);
    EXPECT_EQ(run({"graph", in, "-o", path("tree.png")}).status, 2);
    EXPECT_FALSE(fs::exists(pathOf(path("tree.png"))));
}

TEST_F(Graph, LargeTreesAreCut) {
    std::string large = object("root");
    for (int i = 0; i < 1000; ++i)
        large += child("Object", "c", object("c"));
    Ending const result = run({"graph", "-"}, large);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("n399 ["), std::string::npos);
    EXPECT_EQ(result.out.find("n400"), std::string::npos);
    EXPECT_NE(result.out.find("... 601 more"), std::string::npos);
    EXPECT_NE(result.err.find("note: only the 400"), std::string::npos) << result.err;
}

} // namespace
