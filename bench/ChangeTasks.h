// SPDX-License-Identifier: MIT
#pragma once

#include "Registry.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

// A contender for changes is a class with a name and any of these classes; what it does not have is not
// timed. Each of them is an int that can be set, with observers that count how often they are called:
//
//     class Post { explicit Post(std::size_t numObservers); };    // told after a change
//     class Pre { Pre(std::size_t numObservers, bool refuses); }; // asked before it; the first one refuses
//     class Links : Post { void connectAndDisconnect(); };        // one observer more, for a moment
//     class Chain { explicit Chain(std::size_t length); };        // of ints that follow each other
//
//     void set(int value);
//     int value() const;           // the last one's, in a chain
//     std::uint64_t calls() const; // of all observers so far; not in a chain

template <class C>
class ChangeTasks {
public:
    static Contender contender() { return {C::name, check, add}; }

private:
    static constexpr bool hasPost = requires { typename C::Post; };
    static constexpr bool hasPre = requires { typename C::Pre; };
    static constexpr bool hasLinks = requires { typename C::Links; };
    static constexpr bool hasChain = requires { typename C::Chain; };

    // --- Checks

    template <class Subject>
    static bool counts(Subject& subject, std::size_t callsOfOne, bool isStored = true) {
        auto const before = subject.calls();
        int const old = subject.value();
        subject.set(5);
        subject.set(6);
        return subject.value() == (isStored ? 6 : old) && subject.calls() == before + 2 * callsOfOne;
    }

    static std::string check() {
        if constexpr (hasPost)
            for (std::size_t const count : {0, 1, 8, 64})
                if (typename C::Post subject(count); !counts(subject, count))
                    return "observers are not told";
        if constexpr (hasPre) {
            for (std::size_t const count : {1, 8})
                if (typename C::Pre subject(count, false); !counts(subject, count))
                    return "observers are not asked";
            if (typename C::Pre subject(1, true); !counts(subject, 1, false))
                return "a refused value is stored";
        }
        if constexpr (hasLinks) {
            typename C::Links subject(10);
            subject.connectAndDisconnect();
            if (!counts(subject, 10))
                return "the observers that stay are not told";
        }
        if constexpr (hasChain) {
            typename C::Chain subject(10);
            subject.set(5);
            subject.set(6);
            if (subject.value() != 6)
                return "a value does not reach the end of the chain";
        }
        return {};
    }

    // --- Timing

    template <class Subject, class... Arguments>
    static void addSet(std::string const& task, std::size_t size, Options const& options,
                       Arguments... arguments) {
        auto* const added = addBenchmark(task, C::name, size, [arguments...](benchmark::State& state) {
            Subject subject(arguments...);
            int value = 0;
            for (auto _ : state) {
                subject.set(++value);
                benchmark::DoNotOptimize(&subject);
                benchmark::ClobberMemory();
            }
        });
        added->MinTime(options.minTime);
    }

    static void add(Options const& options) {
        if (!options.changes)
            return;
        if constexpr (hasPost)
            for (std::size_t const count : {0, 1, 8, 64})
                addSet<typename C::Post>("set, told", count, options, count);
        if constexpr (hasPre) {
            for (std::size_t const count : {1, 8})
                addSet<typename C::Pre>("set, asked", count, options, count, false);
            addSet<typename C::Pre>("set, refused", 1, options, std::size_t{1}, true);
        }
        if constexpr (hasChain)
            addSet<typename C::Chain>("set, chain", 10, options, std::size_t{10});
        if constexpr (hasLinks) {
            auto* const added = addBenchmark("connect", C::name, 1'000, [](benchmark::State& state) {
                typename C::Links subject(1'000);
                for (auto _ : state)
                    subject.connectAndDisconnect();
            });
            added->MinTime(options.minTime);
        }
    }
};

} // namespace bench
