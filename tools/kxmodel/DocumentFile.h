// SPDX-License-Identifier: MIT
#pragma once

#include "Commands.h"
#include "Report.h"

namespace kxmodel {

/// A document that was read from a file, for verbs that go on with what is in it. Of a large one, a terminal
/// shows how far reading and writing have come.
class DocumentFile {
public:
    /// Reads a file, standard input for "-". Throws FileError when there is nothing to read.
    explicit DocumentFile(std::string const& path);

    /// How messages name the file.
    std::string const& name() const { return name_; }
    Document& document() { return document_; }
    Report& report() { return report_; }

    /// Whether there is a root and nothing was left out. Otherwise, what there is to say was printed; with
    /// `isLossAccepted` a root is enough.
    bool isWhole(bool isLossAccepted);
    /// Writes the document in a rendering. Throws FileError.
    Status write(std::string const& out, Rendering rendering);

private:
    std::string name_;
    std::string text_;
    Document document_;
    Report report_;
};

} // namespace kxmodel
