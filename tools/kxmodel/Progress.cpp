// SPDX-License-Identifier: MIT
#include "Progress.h"
#include "System.h"

#include <algorithm>
#include <iostream>
#include <string>

namespace kxmodel {

namespace {

constexpr int barWidth = 40;

} // namespace

Progress::Progress(char const* what, std::size_t total, std::size_t least)
    : what_(what), total_(total >= least && isErrorTerminal() ? total : 0) {}

Progress::~Progress() {
    if (shown_ >= 0)
        std::cerr << '\r' << std::string(std::string(what_).size() + barWidth + 8, ' ') << '\r' << std::flush;
}

void Progress::reach(std::size_t done) {
    done_ = done;
    if (total_ == 0)
        return;
    double const part = static_cast<double>(std::min(done_, total_)) / static_cast<double>(total_);
    if (int const percent = static_cast<int>(100 * part); percent != shown_)
        show(percent);
}

void Progress::show(int percent) {
    shown_ = percent;
    auto const full = static_cast<std::size_t>(percent * barWidth / 100);
    std::string const bar = std::string(full, '#') + std::string(barWidth - full, ' ');
    // One write for one state: standard error has no buffer.
    std::string const line = std::string("\r") + what_ + " [" + bar + "] " + std::to_string(percent) + '%';
    std::cerr << line << std::flush;
}

} // namespace kxmodel
