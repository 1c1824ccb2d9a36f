// SPDX-License-Identifier: MIT
// Two documents, separated by a line of dashes: a tree equals its copy, comparing changes nothing, a merge
// makes the trees equal as far as it can, and merging again changes nothing more.
#include "Fuzzing.h"

#include "Document.h"

#include <AttributeContainer/AttrContComparer.h>
#include <AttributeContainer/AttrContMerger.h>

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
    require(written(first) == once, "merging again changes nothing", once, written(first));
    return 0;
}
