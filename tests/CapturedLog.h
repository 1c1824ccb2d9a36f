// SPDX-License-Identifier: MIT
#pragma once

#include <ErrorHandling/Logger.h>

#include <string>
#include <vector>

/// What is logged up to a level while this lives: "level line message" each.
class CapturedLog {
public:
    explicit CapturedLog(int threshold = 3) { Logger::setThreshold(threshold); }
    CapturedLog(CapturedLog const&) = delete;
    CapturedLog& operator=(CapturedLog const&) = delete;
    ~CapturedLog() {
        Logger::setSink(sink_);
        Logger::setThreshold(threshold_);
    }

    std::vector<std::string> messages;

private:
    using Logger = Zorvan::ErrorHandling::Logger;
    int threshold_ = Logger::getThreshold();
    std::shared_ptr<Zorvan::ErrorHandling::LogSink> sink_ = Logger::setSink([this](auto const& message) {
        messages.push_back(std::to_string(message.level) + " " + std::to_string(message.line) + " " +
                           message.message);
    });
};
