// SPDX-License-Identifier: MIT
#pragma once

#include "Document.h"

#include <ErrorHandling/ErrorBase.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kxmodel {

/// The text on one line: control characters are written as escapes, bytes of 0x80 and above stay.
std::string onOneLine(std::string_view text);

/// An error without its causes: the code's name, the source, and the infos in the order of their names.
std::string describe(Zorvan::ErrorHandling::ErrorBase const& error);

/// Writes a message about a file to standard error.
void printMessage(std::string const& fileName, std::string const& message);

/// Writes what there is to say about one document to standard error, a line each:
///
///     world.model:12:5: warning: UnknownContent (WtAttrContainer:1530)
///     world.model:12:5:   cause: UnknownKeyword (WtAttrContainer:1421); Description: Unknown Key: ...
///
/// Lines and columns (in bytes) count from 1.
class Report {
public:
    /// Both must outlive the report.
    Report(std::string const& fileName, std::string const& text) : fileName_(fileName), text_(text) {}

    /// The remarks, then the result with its causes.
    void print(Document const& document);
    /// A result with its causes.
    void print(Zorvan::ErrorHandling::ErrorBase const& error);

private:
    std::string place(std::optional<std::size_t> offset);

    std::string const& fileName_;
    std::string const& text_;
    std::vector<std::size_t> lineStarts_; ///< Counted when the first place is asked for.
};

} // namespace kxmodel
