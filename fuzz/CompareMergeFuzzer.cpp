// SPDX-License-Identifier: MIT
// Two documents, separated by a line of dashes: a tree equals its copy, comparing changes nothing, a merge
// makes the trees equal as far as it can, and merging again changes nothing more. A field whose name the
// target has given to a child is added under another name, each time anew.
#include "Fuzzing.h"

#include "Document.h"

#include <AttributeContainer/AttrContComparer.h>
#include <AttributeContainer/AttrContMerger.h>

#include <utility>

using namespace kxmodel;
using namespace Zorvan::AttributeContainer;
using fuzzing::require;

namespace {

std::shared_ptr<AttrContainer> read(std::string_view text) { return readDocument(std::string(text)).root; }

std::string written(std::shared_ptr<AttrContainer> const& root) {
    Document document;
    document.root = root;
    Result why;
    return writeDocument(document, ModelFormat::Text, why).value_or("");
}

bool hasClash(AttrContainer& target, AttrContainer const& source) {
    for (std::uint64_t i = 0; i < source.getNumFields(); ++i) {
        auto const name = source.getFieldName(i);
        auto const field = source.getField(i).lock();
        if (!name || !field)
            continue;
        auto const counterpart = std::as_const(target).getField(*name).lock();
        if (!counterpart ? !target.isNameUnique(*name)
                         : hasClash(const_cast<AttrContainer&>(*counterpart), *field))
            return true;
    }
    return false;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzzing::Input input(data, size);
    unsigned int const flags = input.byte();
    auto const first = read(input.upTo("\n----\n"));
    auto const second = read(input.rest());
    if (!first || !second)
        return 0;
    AttrContComparer const comparer(-1, static_cast<int>(flags % 8));
    require(comparer.compare(*first, *first) == 0, "a tree equals itself");
    require(comparer.compare(*first, *first->duplicate(CreateType::Deep)) == 0, "a tree equals its copy");
    std::string const before = written(first), source = written(second);
    static_cast<void>(comparer.compare(*first, *second));
    require(written(first) == before && written(second) == source, "comparing changes nothing");

    AttrContMerger::merge(*first, *second, flags, nullptr);
    require(written(second) == source, "a merge does not change its source", source, written(second));
    std::string const once = written(first);
    AttrContMerger::Result again;
    AttrContMerger::merge(*first, *second, flags, &again);
    require(written(first) == once || hasClash(*first, *second), "merging again changes nothing", once,
            written(first));
    return 0;
}
