// SPDX-License-Identifier: MIT
#pragma once

#include "Document.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kxmodel {

/// The exit status of the program.
enum class Status {
    Good = 0,
    Warnings = 1, ///< `check` only: a document was read, with warnings.
    Failed = 2    ///< Something could not be read or written, or the call was wrong.
};

struct ShowOptions {
    std::string file;
    std::optional<std::uint32_t> depth; ///< Levels below the root that are shown; all without one.
    bool hidesValues = false;
    bool showsLinks = false;
    bool isFull = false; ///< Long values are not cut.
};

struct ConvertOptions {
    std::string in;
    std::string out;
    Rendering to = Zorvan::AttributeContainer::ModelFormat::Text;
    bool isLossAccepted = false;
};

/// Writes the tree of a document to standard output.
Status show(ShowOptions const& options);
/// Reads a document and writes it in a rendering.
Status convert(ConvertOptions const& options);
/// Reads documents and reports every warning and error.
Status check(std::vector<std::string> const& files);

} // namespace kxmodel
