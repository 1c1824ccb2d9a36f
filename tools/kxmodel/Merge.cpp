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

/// An attribute keeps its type, so that a value of another one may not have arrived whole; and a member of
/// the target may have the name of one that was to be added.
void warnOfWhatRemains(std::string const& name, std::vector<Difference> const& remaining) {
    for (Difference const& difference : remaining) {
        std::string text = "warning: " + onOneLine(difference.path);
        if (difference.kind == Difference::Kind::TypeChanged)
            text += " has another type in the source (" + difference.type + "); " +
                    onOneLine(difference.second.value_or("")) + " was taken over as " +
                    onOneLine(difference.first.value_or(""));
        else
            text += std::string(" was not taken over from the source (") + nameOf(difference.kind) + ")";
        printMessage(name, text);
    }
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
        printMessage(source.name(),
                     "its shared instances stand in too many places, or too deep, to be merged");
        return Status::Failed;
    }
    AttrContMerger::Result counters;
    std::vector<Difference> remaining;
    try {
        auto& merged = *target.document().root;
        counters = mergeTrees(merged, *source.document().root, options.deletesSurplus);
        CompareOptions missing;
        missing.countsOnlyFirst = false;
        remaining = compareTrees(merged, *source.document().root, missing);
    } catch (std::runtime_error const& error) {
        printMessage(target.name(), error.what());
        return Status::Failed;
    }
    if (!options.isDryRun)
        if (Status const status = target.write(*options.out, target.document().rendering);
            status != Status::Good)
            return status;
    warnOfWhatRemains(target.name(), remaining);
    printMessage(target.name(), textOf(counters));
    return Status::Good;
}

} // namespace kxmodel
