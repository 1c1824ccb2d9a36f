// SPDX-License-Identifier: MIT
#include "DocumentFile.h"

#include "Files.h"
#include "Progress.h"

namespace kxmodel {

namespace {

/// Reading or writing less than this takes no time that is worth a bar.
constexpr std::size_t leastShown = 4'000'000;

Document readWithProgress(std::string const& text) {
    Progress progress("reading", text.size(), leastShown);
    return readDocument(text, &progress);
}

} // namespace

DocumentFile::DocumentFile(std::string const& path)
    : name_(inputName(path)), text_(readAll(path)), document_(readWithProgress(text_)),
      report_(name_, text_) {}

bool DocumentFile::isWhole(bool isLossAccepted) {
    if (document_.root && !document_.isLossy)
        return true;
    report_.print(document_);
    if (document_.root && !isLossAccepted)
        printMessage(name_,
                     "content would be lost, nothing was written (convert --lossy writes what was read)");
    return document_.root && isLossAccepted;
}

Status DocumentFile::write(std::string const& out, Rendering rendering) {
    Zorvan::AttributeContainer::Result why;
    std::optional<std::string> bytes;
    {
        Progress progress("writing", expectedSize(document_, rendering), leastShown);
        bytes = writeDocument(document_, rendering, why, &progress);
    }
    if (!bytes) {
        report_.print(*why);
        printMessage(outputName(out), "the document cannot be written in this rendering");
        return Status::Failed;
    }
    writeAll(out, *bytes);
    return Status::Good;
}

} // namespace kxmodel
