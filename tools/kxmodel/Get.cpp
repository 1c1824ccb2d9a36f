// SPDX-License-Identifier: MIT
#include "DocumentFile.h"
#include "Files.h"
#include "TreePath.h"
#include "TreeText.h"

namespace kxmodel {

Status get(GetOptions const& options) {
    DocumentFile file(options.file);
    Document const& document = file.document();
    bool const isRead = document.outcome < Outcome::Incomplete;
    if (!isRead)
        file.report().print(document);
    if (!document.root)
        return Status::Failed;

    PathTarget const target = resolvePath(document.root, options.path);
    if (!target.attribute) {
        printMessage(file.name(), target.why);
        return Status::Failed;
    }
    writeAll("-", bareTextOf(*target.attribute) + "\n");
    return isRead ? Status::Good : Status::Failed;
}

} // namespace kxmodel
