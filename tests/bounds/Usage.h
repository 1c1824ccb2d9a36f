// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdlib>

namespace Zorvan::AttributeContainer::Testing {

/// What a call has used: processor time, and the memory that it held at most beyond what was there before, as
/// the operators new and delete of this program count it.
struct Usage {
    double seconds;
    std::size_t peak;

    template <class Call>
    static Usage of(Call const& call) {
        double const begin = processorTime();
        std::size_t const before = startPeak();
        call();
        return {processorTime() - begin, peakBytes() - before};
    }

private:
    static double processorTime();
    /// The bytes in use; from here on the peak is a new one.
    static std::size_t startPeak();
    static std::size_t peakBytes();
};

/// The whole form of the tests is asked for, which takes minutes.
inline bool isWholeForm() { return std::getenv("KX_WHOLE_FORM") != nullptr; }

} // namespace Zorvan::AttributeContainer::Testing
