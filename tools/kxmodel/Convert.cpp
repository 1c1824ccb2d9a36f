// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Files.h"
#include "Report.h"

namespace kxmodel {

Status convert(ConvertOptions const& options) {
    std::string const text = readAll(options.in);
    std::string const name = inputName(options.in);
    Report report(name, text);

    Document const document = readDocument(text);
    if (!document.root || (document.isLossy && !options.isLossAccepted)) {
        report.print(document);
        if (document.root)
            printMessage(name, "content would be lost, nothing was written (--lossy writes what was read)");
        return Status::Failed;
    }
    if (document.isLossy)
        report.print(document);

    Zorvan::AttributeContainer::Result why;
    std::optional<std::string> const bytes = writeDocument(document, options.to, why);
    if (!bytes) {
        Report(name, text).print(*why);
        printMessage(outputName(options.out), "the document cannot be written in this rendering");
        return Status::Failed;
    }
    writeAll(options.out, *bytes);
    return Status::Good;
}

} // namespace kxmodel
