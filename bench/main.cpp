// SPDX-License-Identifier: MIT

// The benchmark. Beside the options of Google Benchmark it takes
//     --sizes=[N,...]    trees of so many nodes only, or only what is done to single values
//                        (all of it, with 1000, 10000 and 100000)
//     --min-time=S       seconds of one repetition (0.05)

#include "Memory.h"
#include "Registry.h"

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string_view>

namespace bench {

std::vector<Contender>& contenders() {
    static std::vector<Contender> all;
    return all;
}

namespace {

/// Takes the own options out of the arguments.
Options takeOptions(int& argc, char** argv) {
    constexpr std::string_view sizes = "--sizes=", minTime = "--min-time=";
    Options options;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        std::string_view const argument = argv[i];
        if (argument.starts_with(sizes)) {
            options.sizes.clear();
            std::istringstream list{std::string(argument.substr(sizes.size()))};
            for (std::string size; std::getline(list, size, ',');)
                options.sizes.push_back(std::stoul(size));
            options.changes = options.sizes.empty();
        } else if (argument.starts_with(minTime)) {
            options.minTime = std::stod(std::string(argument.substr(minTime.size())));
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    return options;
}

/// Whether every contender does what it is timed at.
bool checkAll() {
    bool areGood = true;
    for (Contender const& contender : contenders())
        if (std::string const wrong = contender.check(); !wrong.empty()) {
            std::cerr << "bench: " << contender.name << ": " << wrong << '\n';
            areGood = false;
        }
    return areGood;
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    bench::keepFreeMemory();
    bench::Options const options = bench::takeOptions(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv) || !bench::checkAll())
        return EXIT_FAILURE;
    for (bench::Contender const& contender : bench::contenders())
        contender.addBenchmarks(options);
    benchmark::AddCustomContext("missing", BENCH_MISSING);
    benchmark::AddCustomContext("compiler", BENCH_COMPILER);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
