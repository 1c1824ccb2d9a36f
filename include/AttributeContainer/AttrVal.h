// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

namespace Zorvan::AttributeContainer {

/// Holds the value of an `Attr<T>` for the attribute's whole life.
template <class T>
class AttrVal {
public:
    AttrVal() : value_() {}
    AttrVal(AttrVal const&) = delete;
    AttrVal& operator=(AttrVal const&) = delete;

    /// The value for writing.
    T& get() { return value_; }
    /// The value for reading.
    T const& get() const { return value_; }
    /// The value as readers of the attribute see it.
    T const& read() const { return value_; }

private:
    T value_;
};

} // namespace Zorvan::AttributeContainer
