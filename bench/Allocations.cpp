// SPDX-License-Identifier: MIT

// Says in JSON how many blocks of memory one change takes from the heap, by the number of the observers that
// are asked first. A program of its own, because counting takes time.

#include "contenders/KxSubject.h"

#include <cstdlib>
#include <iostream>
#include <new>

namespace {

std::uint64_t allocations = 0;

} // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* const block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

int main() {
    constexpr int numWarm = 10, numChanges = 1'000;
    char const* separator = "{";
    for (std::size_t const numObservers : {1, 8}) {
        bench::KxPre subject(numObservers, false);
        for (int value = 1; value <= numWarm; ++value)
            subject.set(value);
        std::uint64_t const before = allocations;
        for (int value = 1; value <= numChanges; ++value)
            subject.set(numWarm + value);
        double const perChange = static_cast<double>(allocations - before) / numChanges;
        std::cout << separator << '"' << numObservers << "\": " << perChange;
        separator = ", ";
    }
    std::cout << "}\n";
}
