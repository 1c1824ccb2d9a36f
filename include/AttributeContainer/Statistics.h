// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ValueTypes.h>

#include <array>

namespace Zorvan {

/// Four values of a statistic in storage order; what they stand for is up to the application.
template <class T>
struct StatisticVal {
    std::array<T, 4> values{};

    friend constexpr bool operator==(StatisticVal const&, StatisticVal const&) = default;
};

/// Four values of a statistic and four limits, each a pair.
template <class T>
struct StatisticValLimits {
    std::array<T, 4> values{};
    std::array<SVec2d<T>, 4> limits{};

    friend constexpr bool operator==(StatisticValLimits const&, StatisticValLimits const&) = default;
};

} // namespace Zorvan
