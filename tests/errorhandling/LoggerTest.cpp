// SPDX-License-Identifier: MIT
#include <ErrorHandling/Logger.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Zorvan::ErrorHandling::Logger;
using Zorvan::ErrorHandling::LogMessage;
using Zorvan::ErrorHandling::LogSink;

class LoggerTest : public testing::Test {
protected:
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
    struct Entry {
        std::string message;
        int level;
        std::string file;
        int line;
        bool hasFunction;
    };
    std::vector<Entry> entries;
    EXPECT_EQ(Logger::setSink([&](LogMessage const& entry) {
                  entries.push_back(
                      {entry.message, entry.level, entry.file, entry.line, entry.function != nullptr});
              }),
              nullptr);
    Logger::setThreshold(8);
    EXPECT_EQ(Logger::getThreshold(), 8);
    log("two\nlines", 8);
    log("too fine", 9);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].message, "two\nlines");
    EXPECT_EQ(entries[0].level, 8);
    EXPECT_EQ(entries[0].file, "Shop.cpp");
    EXPECT_EQ(entries[0].line, 7);
    EXPECT_FALSE(entries[0].hasFunction);

    auto const replaced = Logger::setSink(nullptr);
    EXPECT_NE(replaced, nullptr);
    EXPECT_EQ(standardErrorOf([] { log("again"); }), "level 3: again [Shop.cpp:7]\n");
    EXPECT_EQ(entries.size(), 1u);
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
    });
    EXPECT_EQ(standardErrorOf([] { log("start"); }), "level 3: echo [Shop.cpp:7]\n");
    EXPECT_EQ(calls, 8);
    // The depth is counted down again.
    EXPECT_EQ(standardErrorOf([] { log("start"); }), "level 3: echo [Shop.cpp:7]\n");
    EXPECT_EQ(calls, 16);
}

TEST_F(LoggerTest, ExceptionOfASinkDoesNotReachTheCaller) {
    int calls = 0;
    Logger::setSink([&](LogMessage const&) {
        ++calls;
        throw std::runtime_error("full");
    });
    for (int i = 0; i < 20; ++i)
        log("message");
    EXPECT_EQ(calls, 20);
}

TEST_F(LoggerTest, ThreadsLogWhileTheSinkIsReplaced) {
    std::atomic<int> count = 0;
    auto const counter = [&](LogMessage const&) { ++count; };
    Logger::setSink(counter);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 2000; ++j) {
                log("message");
                if (j % 100 == 0)
                    Logger::setSink(counter);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 8000);
}

} // namespace
