// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "DocumentFile.h"
#include "Report.h"
#include "Sharing.h"
#include "TreeComparer.h"
#include "TreeMerger.h"

#include <stdexcept>

namespace kxmodel {

namespace {

using Zorvan::AttributeContainer::AttrContMerger;

std::string textOf(AttrContMerger::Result const& counters) {
    auto const count = [](std::uint32_t number, char const* what) {
        return std::to_string(number) + " " + what;
    };
    return "attributes: " + count(counters.changed, "changed, ") + count(counters.unchanged, "unchanged, ") +
           count(counters.addedAttributes, "added, ") + count(counters.removedAttributes, "removed") +
           "; fields and children: " + count(counters.addedFields, "added, ") +
           count(counters.removedFields, "removed");
}

/// An attribute keeps its type, so that a value of another one may not have arrived whole.
void warnOfOtherTypes(std::string const& name, Document const& merged, Document const& source) {
    CompareOptions options;
    options.countsOnlyFirst = options.countsOnlySecond = false;
    for (Difference const& difference : compareTrees(*merged.root, *source.root, options))
        if (difference.kind == Difference::Kind::TypeChanged)
            printMessage(name, "warning: " + onOneLine(difference.path) +
                                   " has another type in the source (" + difference.type + "); " +
                                   onOneLine(difference.second.value_or("")) + " was taken over as " +
                                   onOneLine(difference.first.value_or("")));
}

} // namespace

Status merge(MergeOptions const& options) {
    if (options.target == "-" && options.source == "-") {
        printMessage("standard input", "only one of the two documents can be read from it");
        return Status::Failed;
    }
    DocumentFile target(options.target), source(options.source);
    for (DocumentFile* const file : {&target, &source})
        if (!file->isWhole(false))
            return Status::Failed;

    if (!canBeUnshared(*source.document().root)) {
        printMessage(source.name(), "its shared instances stand in too many places to be merged");
        return Status::Failed;
    }
    AttrContMerger::Result counters;
    try {
        counters = mergeTrees(*target.document().root, *source.document().root, options.deletesSurplus);
    } catch (std::runtime_error const& error) {
        printMessage(target.name(), error.what());
        return Status::Failed;
    }
    if (!options.isDryRun)
        if (Status const status = target.write(*options.out, target.document().rendering);
            status != Status::Good)
            return status;
    warnOfOtherTypes(target.name(), target.document(), source.document());
    printMessage(target.name(), textOf(counters));
    return Status::Good;
}

} // namespace kxmodel
