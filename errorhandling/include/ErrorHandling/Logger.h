// SPDX-License-Identifier: MIT
#pragma once

#include <ErrorHandling/Export.h>

#include <concepts>
#include <memory>
#include <string>
#include <utility>

namespace Zorvan::ErrorHandling {

/// One message on its way to a sink; it refers to the caller's data and is not to be kept.
struct LogMessage {
    std::string const& message;
    int level;            ///< 3: a problem that was worked around, 8: tracing; lower is more important
    char const* file;     ///< the calling code; null when it is not known
    int line;             ///< the line in `file`
    char const* function; ///< the qualified name of the calling function, or null
};

/// Where messages go. `write` is called from every thread that logs, from several at once too, and without
/// any lock, so it may log and may replace the sink. What it throws is dropped.
class KX_ERRORHANDLING_API LogSink {
public:
    LogSink() = default;
    LogSink(LogSink const&) = delete;
    LogSink& operator=(LogSink const&) = delete;
    virtual ~LogSink();
    virtual void write(LogMessage const& message) = 0;
};

/// The process's log. Without further ado it writes messages of level 3 and below to standard error, one line
/// each.
///
///     Logger::setSink([&](LogMessage const& m) { window.show(m.message); });
///     Logger::setThreshold(8); // tracing too
///
/// All functions may be called from any thread, from static initialisers and during exit.
class KX_ERRORHANDLING_API Logger {
public:
    /// Hands one message to the sink unless its level is above the threshold. Never throws. A sink that logs
    /// is called for these messages too, up to a depth of 8; deeper ones go to standard error.
    static void appendLogMsgExt(std::string const& message, int level, char const* file, int line,
                                char const* function) noexcept;

    /// Replaces the sink and returns the one before; null stands for standard error, in both directions. The
    /// old sink may still be running in another thread; it lives until its last call has ended.
    static std::shared_ptr<LogSink> setSink(std::shared_ptr<LogSink> sink);

    /// The same with a callable that takes a `LogMessage const&`; the logger keeps a copy.
    template <class Callback>
    requires std::invocable<Callback&, LogMessage const&>
    static std::shared_ptr<LogSink> setSink(Callback callback) {
        struct CallbackSink final : LogSink {
            explicit CallbackSink(Callback&& wrapped) : callback_(std::move(wrapped)) {}
            void write(LogMessage const& message) override { callback_(message); }
            Callback callback_;
        };
        return setSink(std::shared_ptr<LogSink>(std::make_shared<CallbackSink>(std::move(callback))));
    }

    /// The highest level that is passed on (3 at the start), for every sink.
    static void setThreshold(int level) noexcept;
    [[nodiscard]] static int getThreshold() noexcept;
};

} // namespace Zorvan::ErrorHandling
