// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace bench {

/// The bytes that the C library's allocator has given out and not got back, with what it needs for each
/// block, whoever asked for them: `operator new`, or `malloc` as some of the contenders do.
std::size_t bytesInUse();

/// Gives memory that nobody uses back to the system, so that whoever is measured next begins as the others
/// did.
void forgetFreeMemory();

/// From now on memory goes back to the system only by forgetFreeMemory(), except single blocks of very many
/// megabytes. By itself the allocator decides that from what it was asked for before: whoever comes next
/// would find memory that is in place, or pay for all its pages anew.
void keepFreeMemory();

} // namespace bench
