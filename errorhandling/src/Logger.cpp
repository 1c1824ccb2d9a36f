// SPDX-License-Identifier: MIT
#include <ErrorHandling/Logger.h>

#include <atomic>
#include <cstdio>
#include <mutex>

namespace Zorvan::ErrorHandling {

namespace {

constexpr int maxDepth = 8;

constinit std::atomic<int> threshold = 3;

/// How many sinks are at work in this thread, one inside the other.
constinit thread_local int depth = 0;

struct SinkSlot {
    std::mutex guard;
    std::shared_ptr<LogSink> sink; // null: standard error
};

/// Never destroyed: whatever runs during exit may log.
SinkSlot& sinkSlot() {
    static auto* const slot = new SinkSlot;
    return *slot;
}

std::shared_ptr<LogSink> currentSink() {
    SinkSlot& slot = sinkSlot();
    std::lock_guard const lock(slot.guard);
    return slot.sink;
}

/// Line breaks and other control characters in their escaped form: a message is one line and does not steer a
/// terminal.
void appendPrintable(std::string& line, std::string const& text) {
    constexpr char digits[] = "0123456789abcdef";
    for (char const character : text) {
        auto const code = static_cast<unsigned char>(character);
        if (character == '\n')
            line += "\\n";
        else if (character == '\r')
            line += "\\r";
        else if ((code < 0x20 && character != '\t') || code == 0x7f)
            ((line += "\\x") += digits[code >> 4]) += digits[code & 0xf];
        else
            line += character;
    }
}

/// One call of the C library, so that lines of several threads do not mix.
void writeToStandardError(LogMessage const& message) {
    std::string line = "level " + std::to_string(message.level) + ": ";
    appendPrintable(line, message.message);
    if (message.file) {
        line += " [";
        appendPrintable(line, message.file);
        line += ":" + std::to_string(message.line) + "]";
    }
    if (message.function) {
        line += " in ";
        appendPrintable(line, message.function);
    }
    line += '\n';
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr)); // There is nobody left to tell.
}

struct DepthGuard {
    DepthGuard() noexcept { ++depth; }
    DepthGuard(DepthGuard const&) = delete;
    DepthGuard& operator=(DepthGuard const&) = delete;
    ~DepthGuard() { --depth; }
};

} // namespace

LogSink::~LogSink() = default;

void Logger::appendLogMsgExt(std::string const& message, int level, char const* file, int line,
                             char const* function) noexcept {
    if (level > threshold.load(std::memory_order_relaxed))
        return;
    try {
        LogMessage const entry{message, level, file, line, function};
        std::shared_ptr<LogSink> const sink = depth < maxDepth ? currentSink() : nullptr;
        DepthGuard const guard;
        if (sink)
            sink->write(entry);
        else
            writeToStandardError(entry);
    } catch (...) {
        // Nobody is left to tell: logging must not make the work fail that it reports on.
    }
}

std::shared_ptr<LogSink> Logger::setSink(std::shared_ptr<LogSink> sink) {
    SinkSlot& slot = sinkSlot();
    {
        std::lock_guard const lock(slot.guard);
        slot.sink.swap(sink);
    }
    return sink;
}

void Logger::setThreshold(int level) noexcept { threshold.store(level, std::memory_order_relaxed); }

int Logger::getThreshold() noexcept { return threshold.load(std::memory_order_relaxed); }

} // namespace Zorvan::ErrorHandling
