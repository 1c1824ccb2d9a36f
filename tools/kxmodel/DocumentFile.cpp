// SPDX-License-Identifier: MIT
#include "DocumentFile.h"

#include "Files.h"

namespace kxmodel {

DocumentFile::DocumentFile(std::string const& path)
    : name_(inputName(path)), text_(readAll(path)), document_(readDocument(text_)), report_(name_, text_) {}

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
    std::optional<std::string> const bytes = writeDocument(document_, rendering, why);
    if (!bytes) {
        report_.print(*why);
        printMessage(outputName(out), "the document cannot be written in this rendering");
        return Status::Failed;
    }
    writeAll(out, *bytes);
    return Status::Good;
}

} // namespace kxmodel
