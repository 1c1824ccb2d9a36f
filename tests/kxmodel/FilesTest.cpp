// SPDX-License-Identifier: MIT
// What scripts cannot say: devices, folders, links, permissions and other programs.
#include "Program.h"

#include <cstdlib>

using namespace kxmodel_test;
namespace fs = std::filesystem;

namespace {

class Files : public Program {
protected:
    Files() : searched_(std::getenv("PATH") ? std::getenv("PATH") : "") {}
    ~Files() override { setVariable("PATH", searched_); }

    /// Makes the stand-in the only program that is called "dot".
    void makeDot() const {
        fs::path const program = pathOf(KX_DOT_PROGRAM);
        fs::create_directories(pathOf(path("bin")));
        fs::copy_file(program, pathOf(path("bin/dot")).replace_extension(program.extension()));
        setVariable("PATH", path("bin"));
    }

    std::string searched_;
};

TEST_F(Files, ThoseThatCannotBeReadOrWrittenAreNamed) {
    std::string const in = put("in", container("root"));
    fs::create_directory(path("folder"));
    std::vector<std::string> outputs = {path("missing/out"), path("folder"), path("in/out")};
    if (hasPosixFiles) {
        fs::create_symlink("loop", path("loop"));
        outputs.insert(outputs.end(), {path("loop"), "/dev/full"});
    }
    for (std::string const& out : outputs) {
        Ending const result = run({"convert", in, out, "--to", "text"});
        EXPECT_EQ(result.status, 2) << out;
        EXPECT_TRUE(result.err.starts_with(out + ": ")) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    for (std::string const& missing : {path("missing"), path("folder")})
        EXPECT_TRUE(run({"convert", missing, in, "--to", "xml"}).err.starts_with(missing + ": "));
    EXPECT_EQ(contentOf(in), container("root"));
    EXPECT_EQ(numFiles(), hasPosixFiles ? 3 : 2) << "in, folder and loop";

    if (!hasPosixFiles)
        return;
    Ending const full = runWithOutput({"convert", in, "-", "--to", "text"}, "/dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_TRUE(full.err.starts_with("standard output: ")) << full.err;
}

TEST_F(Files, PicturesAreMadeByDot) {
    std::string const in = put("tree.model", container("root")), text = path("tree.dot"),
                      picture = put("tree.SVG", "old");
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

TEST_F(Files, BashCompletesFromTheGeneratedFile) {
    if (!hasPosixFiles)
        GTEST_SKIP() << "there is no shell here";
    std::string const bash = put("bash", run({"--manual", "bash"}).out);
    EXPECT_EQ(std::system(("bash -c '. " + bash +
                           "; COMP_WORDS=(kxmodel convert --to x) COMP_CWORD=3; _kxmodel; "
                           "[[ ${COMPREPLY[*]} == xml ]]'")
                              .c_str()),
              0);
}

} // namespace
