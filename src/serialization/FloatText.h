// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/TextSink.h"

#include <cmath>
#include <concepts>

namespace Zorvan::AttributeContainer {

/// The value itself, or 0 for infinities and NaNs, which the format does not know.
template <std::floating_point T>
T finiteOrZero(T value) {
    return std::isfinite(value) ? value : T{0};
}

/// The number of significant digits with which a finite value is written.
int precisionFor(float value);
int precisionFor(double value);

/// Appends a finite value with at most `precision` significant digits, as a stream in its default notation
/// does.
void appendFloat(TextSink& sink, float value, int precision);
void appendFloat(TextSink& sink, double value, int precision);

} // namespace Zorvan::AttributeContainer
