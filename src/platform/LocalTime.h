// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <ctime>

namespace Zorvan::AttributeContainer {

/// Converts seconds since 1970-01-01 00:00 UTC to local time; safe from any thread. False when that fails.
[[nodiscard]] bool toLocalTime(std::int64_t seconds, std::tm& local) noexcept;

} // namespace Zorvan::AttributeContainer
