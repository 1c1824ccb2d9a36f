// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace bench {

/// What is to be measured.
struct Options {
    std::vector<std::size_t> sizes{1'000, 10'000, 100'000}; ///< The numbers of nodes.
    bool changes = true;                                    ///< And what is done to a single value.
    double minTime = 0.05;                                  ///< Of one repetition, in seconds.
};

/// Each contender says how it is checked, and what it can be timed at.
struct Contender {
    /// How results name it.
    std::string name;
    /// What is wrong; empty when the contender does what it is timed at.
    std::function<std::string()> check;
    std::function<void(Options const&)> addBenchmarks;
};

/// All contenders of the program, in no particular order.
std::vector<Contender>& contenders();

/// Registers a contender, by a static object in its file.
struct Registration {
    explicit Registration(Contender contender) { contenders().push_back(std::move(contender)); }
};

/// Registers one thing to be timed. Results are found under "task/contender/size".
template <class Run>
benchmark::internal::Benchmark* addBenchmark(std::string const& task, std::string const& contender,
                                             std::size_t size, Run run) {
    std::string const name = task + '/' + contender + '/' + std::to_string(size);
    return benchmark::RegisterBenchmark(name.c_str(), std::move(run));
}

} // namespace bench
