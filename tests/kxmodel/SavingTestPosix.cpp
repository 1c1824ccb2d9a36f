// SPDX-License-Identifier: MIT
// Files are saved whole or not at all, whatever call of the system fails, and whenever the program is killed.
#include "Program.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

using namespace kxmodel_test;
namespace fs = std::filesystem;

namespace {

std::string documentOf(std::string const& value) {
    return container("root", attribute("String", "Value", '"' + value + '"'));
}

class Saving : public Program {
protected:
    /// A way to save a file: one that was there is replaced by the new content.
    struct Way {
        std::string file;
        std::vector<std::string> arguments;
        std::string oldContent, newContent; ///< Without an old content the file is not there.
    };

    Saving() {
        std::string const value(40000, 'v');
        std::string const in = put("in", documentOf(value)), before = put("before", documentOf("old"));
        std::string const hive = path("hive"), out = path("out");
        auto const registry = [&](std::string const& document) {
            return std::vector<std::string>{"registry", "save", document, "--key", "HKCU\\X", "--hive", hive};
        };
        EXPECT_EQ(run(registry(before)).status, 0);
        std::vector<std::string> const convert = {"convert", in, out, "--to", "text"};
        ways_ = {{out, convert, documentOf("old"), ""},
                 {out, convert, "", ""},
                 {hive, registry(path("few")), contentOf(hive), ""}};
        put("few", documentOf(std::string(400, 'f')));
        for (Way& way : ways_) {
            prepare(way);
            EXPECT_EQ(run(way.arguments).status, 0);
            way.newContent = contentOf(way.file);
            EXPECT_NE(way.newContent, way.oldContent);
        }
    }
    ~Saving() override { setFailure("", ""); }

    void prepare(Way const& way) const {
        fs::remove(way.file + ".kx-saving");
        fs::remove(way.file + ".lock");
        fs::remove(way.file);
        if (!way.oldContent.empty())
            std::ofstream(way.file, std::ios::binary) << way.oldContent;
        numFilesBefore_ = numFiles();
    }

    void setFailure(std::string const& call, std::string const& how) const {
        fs::remove(log());
        setVariable("KX_FAIL_CALL", call);
        setVariable("KX_FAIL_HOW", how);
        setVariable("KX_FAIL_LOG", log().string());
        setVariable("LD_PRELOAD", call.empty() ? "" : KX_FAILING_CALLS);
    }
    /// Runs it while a call fails, and gives that call's name, or none when it does not come to that.
    std::string runFailing(Way const& way, std::string const& call, std::string const& how,
                           Ending& result) const {
        prepare(way);
        setFailure(call, how);
        result = run(way.arguments);
        std::string failed = contentOf(log());
        setFailure("", "");
        return failed;
    }

    /// What is true whatever happens: the old content or the new one is there, a program that comes to an end
    /// says which, and one that was killed leaves nothing but what the next one removes.
    void expectWhole(Way const& way, Ending const& result, std::string const& call) const {
        std::string const content = contentOf(way.file);
        if (result.status != 0)
            EXPECT_TRUE(content == way.oldContent || (result.status == -1 && content == way.newContent))
                << content.size() << " bytes";
        else
            EXPECT_TRUE(content == way.newContent) << content.size() << " bytes";
        if (result.status == 2) {
            EXPECT_TRUE(result.err.starts_with(way.file + ": ")) << result.err;
            EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        }
        if (result.status == -1 || call == "unlink" || call == "flock") {
            EXPECT_LE(numFiles(), numFilesBefore_ + 3);
            EXPECT_EQ(run(way.arguments).status, 0);
            EXPECT_TRUE(contentOf(way.file) == way.newContent);
        }
        EXPECT_EQ(numFiles(), numFilesBefore_ + (way.oldContent.empty() && fs::exists(way.file) ? 1 : 0));
    }

    fs::path log() const { return logs_.path / "log"; }

    ScratchFolder const logs_;
    std::vector<Way> ways_;
    mutable std::ptrdiff_t numFilesBefore_ = 0;
};

TEST_F(Saving, AnyCallMayFail) {
    std::set<std::string> failed;
    for (Way const& way : ways_)
        for (std::string const& how : {std::to_string(ENOSPC), std::to_string(EACCES), std::to_string(EINTR),
                                       std::string("kill"), "dead " + std::to_string(EIO)}) {
            Ending result;
            std::string call;
            for (int number = 1; !(call = runFailing(way, std::to_string(number), how, result)).empty();
                 ++number) {
                SCOPED_TRACE(way.arguments[0] + " (" + std::to_string(way.oldContent.size()) +
                             " bytes before): call " + std::to_string(number) + ", " + call + ": " + how);
                failed.insert(call);
                ASSERT_NE(result.status == -1, how != "kill");
                bool const isInterrupt = how == std::to_string(EINTR) && call != "rename" && call != "unlink";
                EXPECT_TRUE(result.status == 0 || !isInterrupt) << result.err;
                // A process that can do nothing any more removes nothing, but what it leaves is in nobody's
                // way.
                expectWhole(way, result, how.starts_with("dead") ? "unlink" : call);
                if (HasFailure())
                    return;
            }
            EXPECT_EQ(result.status, 0);
        }
    EXPECT_EQ(failed, (std::set<std::string>{"close", "fchmod", "fchown", "flock", "fsync", "open", "read",
                                             "rename", "unlink", "write"}));
}

TEST_F(Saving, CallsThatFailEachTime) {
    struct Row {
        std::string call, how;
        int status;
        unsigned mode;
        char const* reason;
    };
    std::string const permission = std::to_string(EPERM);
    for (Row const& row :
         {Row{"write", "short", 0, 0664, ""},
          {"write", "torn", -1, 0664, ""},
          {"write", std::to_string(EDQUOT), 2, 0664, "out: cannot write the file: "},
          {"fsync", std::to_string(ENOSPC), 2, 0664, "out: cannot write the file: No space left on device"},
          {"open", std::to_string(EROFS), 2, 0664, "out: cannot write the file: Read-only file system"},
          {"flock", std::to_string(ENOLCK), 0, 0664, ""},
          {"fchmod", permission, 0, 0600, ""},
          // The group is not that of before: it has the rights of everybody.
          {"fchown", permission, 0, 0644, ""}}) {
        SCOPED_TRACE(row.call + ": " + row.how);
        Way const& way = ways_[0];
        prepare(way);
        ASSERT_EQ(::chmod(way.file.c_str(), 0664), 0);
        setFailure(row.call, row.how);
        Ending const result = run(way.arguments);
        setFailure("", "");
        EXPECT_EQ(result.status, row.status);
        EXPECT_NE(result.err.find(row.reason), std::string::npos) << result.err;
        EXPECT_EQ(static_cast<unsigned>(fs::status(way.file).permissions()), row.mode);
        expectWhole(way, result, row.call);
    }
}

/// KX_KILLS says how many times.
TEST_F(Saving, ProgramMayBeKilledAtAnyMoment) {
    char const* const asked = std::getenv("KX_KILLS");
    int const kills = asked ? std::atoi(asked) : 50;
    std::mt19937 random(1);
    int numWithRemains = 0;
    for (Way const& way : {ways_[0], ways_[2]}) {
        prepare(way);
        auto const begin = std::chrono::steady_clock::now();
        ASSERT_EQ(run(way.arguments).status, 0);
        auto const life =
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
        std::uniform_int_distribution<long long> moment(1, life.count());
        for (int i = 0; i < kills / 2; ++i) {
            prepare(way);
            setVariable("KX_KILL_AFTER", std::to_string(moment(random)));
            setVariable("LD_PRELOAD", KX_FAILING_CALLS);
            Ending const result = run(way.arguments);
            setVariable("KX_KILL_AFTER", "");
            setFailure("", "");
            numWithRemains += fs::exists(way.file + ".kx-saving") ? 1 : 0;
            expectWhole(way, result, "");
            if (HasFailure())
                return;
        }
    }
    RecordProperty("killed_while_writing", numWithRemains);
    EXPECT_TRUE(kills < 1000 || numWithRemains > 0);
}

TEST_F(Saving, WritersAtOnceWaitForOneAnother) {
    std::vector<std::string> ins, contents;
    for (int i = 0; i < 4; ++i) {
        contents.push_back(documentOf(std::string(100000 * (i + 1), static_cast<char>('a' + i))));
        ins.push_back(put("in" + std::to_string(i), contents.back()));
    }
    std::string const out = path("out"), hive = path("shared");
    std::atomic<int> failures{0}, holders{0};
    std::vector<std::thread> threads;
    for (std::string const& in : ins)
        threads.emplace_back([&, in] {
            std::string const key = "HKCU\\" + fs::path(in).filename().string();
            for (int i = 0; i < 10; ++i) {
                failures += run({"convert", in, out, "--to", "text"}).status != 0;
                // The registry's file is read and written: who comes second does not wait, but is told so.
                Ending const saved = run({"registry", "save", path("few"), "--key", key, "--hive", hive});
                if (saved.status == 0)
                    ++holders;
                else
                    failures += saved.err.find("another process holds the file") == std::string::npos;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
    EXPECT_GT(holders, 0);
    EXPECT_EQ(std::count(contents.begin(), contents.end(), contentOf(out)), 1);
    EXPECT_EQ(run({"registry", "list", "--key", "HKCU\\", "--hive", hive}).status, 0);
    EXPECT_FALSE(fs::exists(out + ".kx-saving") || fs::exists(hive + ".kx-saving") ||
                 fs::exists(hive + ".lock"));
}

TEST_F(Saving, NamesHoldAnyBytes) {
    for (std::string const& name :
         {std::string(" two  blanks "), std::string("'\"`$x\\"), std::string("line\nend\t"),
          std::string("-o"), std::string("--"), std::string("\xFF\xC3"), std::string("*?[a]"),
          std::string(255, 'n'), std::string("x.kx-saving")}) {
        SCOPED_TRACE(name);
        std::string const file = put(name, documentOf("old"));
        auto const before = numFiles();
        fs::current_path(fs::path(file).parent_path());
        EXPECT_EQ(run({"set", "--", name, "/Value=new"}).status, 0);
        EXPECT_EQ(run({"get", "--", name, "/Value"}).out, "new\n");
        fs::current_path("/");
        EXPECT_EQ(numFiles(), before);
    }
    std::string const odd = put("a\xff\"", container("r"));
    std::string const first = "{\"format\":1,\"first\":\"" + path("a\\\\uFFFF\\\"");
    EXPECT_TRUE(run({"diff", odd, odd, "--format", "json"}).out.starts_with(first + "\",\"second\""));
}

TEST_F(Saving, OwnerAndRightsStayAndOtherNamesKeepTheOldContent) {
    Way const& way = ways_[0];
    prepare(way);
    std::string const file = way.file, other = path("other name");
    bool const isRoot = ::geteuid() == 0;
    uid_t const owner = isRoot ? 12345 : ::geteuid();
    gid_t const group = isRoot ? 23456 : ::getegid();
    ASSERT_EQ(::chown(file.c_str(), owner, group), 0);
    ASSERT_EQ(::chmod(file.c_str(), 06751), 0);
    fs::create_hard_link(file, other);
    fs::create_directory(path("folder"));
    fs::create_symlink("../out", path("folder/link"));
    fs::create_symlink("folder/link", path("link"));
    ASSERT_EQ(run({"convert", path("in"), path("link"), "--to", "text"}).status, 0);
    struct stat status {};
    ASSERT_EQ(::lstat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, mode_t{S_IFREG | 0751}) << "it runs under nobody else's name";
    EXPECT_EQ(status.st_uid, owner);
    EXPECT_EQ(status.st_gid, group);
    EXPECT_EQ(contentOf(other), way.oldContent);
    EXPECT_EQ(contentOf(file), way.newContent);
    EXPECT_TRUE(fs::is_symlink(path("link")) && fs::is_symlink(path("folder/link")));
}

TEST_F(Saving, PipesAreWrittenTo) {
    std::string const pipe = path("pipe"), in = path("in"), document = contentOf(in);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (bool const isStandardOutput : {false, true}) {
        std::string content;
        std::thread reader([&] { content = contentOf(pipe); });
        std::vector<std::string> const call{"convert", in, isStandardOutput ? "/dev/stdout" : pipe, "--to",
                                            "text"};
        EXPECT_EQ((isStandardOutput ? runWithOutput(call, pipe) : run(call)).status, 0);
        reader.join();
        EXPECT_TRUE(content == document) << content.size();
    }
    EXPECT_TRUE(fs::is_fifo(pipe));
    // Standard output is not replaced, even where it is a file.
    std::string const standard = put("standard", "");
    fs::create_hard_link(standard, path("same"));
    EXPECT_EQ(runWithOutput({"convert", in, "/dev/stdout", "--to", "text"}, standard).status, 0);
    EXPECT_TRUE(contentOf(path("same")) == document);
}

} // namespace
