// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace kxmodel {

/// Shows how far a work is: a bar on standard error, which goes with this object. There is none when standard
/// error is no terminal, or the work is too small for anybody to notice.
class Progress {
public:
    /// `what` is one word for the work, whose units are counted from 0 to `total`; with less than `least`
    /// units nothing is shown.
    Progress(char const* what, std::size_t total, std::size_t least = 0);
    /// Removes the bar. Whoever prints meanwhile should let it go first.
    ~Progress();
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    void step() { reach(done_ + 1); }
    /// So much is done now; what is beyond the total, which may be an estimate, is taken for the total.
    void reach(std::size_t done);

private:
    void show(int percent);

    char const* what_;
    std::size_t total_; ///< 0 when nothing is shown.
    std::size_t done_ = 0;
    int shown_ = -1;
};

} // namespace kxmodel
