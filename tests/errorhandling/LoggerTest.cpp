// SPDX-License-Identifier: MIT
#include <ErrorHandling/Logger.h>

#include <gtest/gtest.h>

namespace {

using Zorvan::ErrorHandling::Logger;
using Zorvan::ErrorHandling::LogMessage;

struct LoggerTest : testing::Test {
    void TearDown() override {
        Logger::setSink(nullptr);
        Logger::setThreshold(3);
    }
    static void log(std::string const& message, int level = 3) {
        Logger::appendLogMsgExt(message, level, "Shop.cpp", 7, nullptr);
    }
    static std::string standardErrorOf(void (*work)()) {
        testing::internal::CaptureStderr();
        work();
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(LoggerTest, StandardErrorGetsOneLineForEachMessageUpToLevelThree) {
    EXPECT_EQ(standardErrorOf([] {
                  Logger::appendLogMsgExt("first\nsecond\r\n\x1b[0m", 3, "Shop.cpp", 7, "Shop::open");
                  Logger::appendLogMsgExt("", 0, nullptr, 7, nullptr);
                  log("tracing", 4);
              }),
              "level 3: first\\nsecond\\r\\n\\x1b[0m [Shop.cpp:7] in Shop::open\nlevel 0: \n");
}

TEST_F(LoggerTest, SinkGetsWhatWasLoggedUpToTheThreshold) {
    std::vector<std::string> seen;
    Logger::setSink([&](LogMessage const& entry) {
        EXPECT_EQ(entry.function, nullptr);
        seen.push_back(entry.message + std::to_string(entry.level) + entry.file + std::to_string(entry.line));
    });
    Logger::setThreshold(8);
    log("two\nlines", 8);
    log("too fine", 9);
    EXPECT_NE(Logger::setSink(nullptr), nullptr);
    EXPECT_EQ(standardErrorOf([] { log("again"); }), "level 3: again [Shop.cpp:7]\n");
    EXPECT_EQ(seen, std::vector<std::string>{"two\nlines8Shop.cpp7"});
}

TEST_F(LoggerTest, SinkMayReplaceItselfAndLog) {
    std::vector<std::string> seen;
    Logger::setSink([&](LogMessage const& entry) {
        seen.push_back("old " + entry.message);
        Logger::setSink([&](LogMessage const& later) { seen.push_back("new " + later.message); });
        log("from the sink");
        seen.push_back("still alive");
    });
    log("start");
    EXPECT_EQ(seen, (std::vector<std::string>{"old start", "new from the sink", "still alive"}));
}

TEST_F(LoggerTest, SinkThatAlwaysLogsComesToAnEnd) {
    static int calls = 0;
    Logger::setSink([](LogMessage const&) {
        ++calls;
        log("echo");
        throw "something that does not reach the caller";
    });
    // Each time: the depth is counted down again.
    for (int const expected : {8, 16}) {
        EXPECT_EQ(standardErrorOf([] { log("start"); }), "level 3: echo [Shop.cpp:7]\n");
        EXPECT_EQ(calls, expected);
    }
}

} // namespace
