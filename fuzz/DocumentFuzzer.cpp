// SPDX-License-Identifier: MIT
// Documents of either rendering: what was read can be written; what was written reads back without loss, and
// written again gives the same bytes; the other rendering says the same.
#include "Fuzzing.h"

#include "Document.h"

#include <algorithm>
#include <utility>

using namespace kxmodel;
using fuzzing::require;
using Zorvan::AttributeContainer::ModelFormat;
using Zorvan::AttributeContainer::Result;

namespace {

constexpr Rendering renderings[] = {ModelFormat::Text, ModelFormat::XmlV2};

bool isWhole(Document const& document) {
    return document.root && document.outcome <= Outcome::Warnings && !document.isLossy;
}

/// Ids of shared instances are new in each writing, and are removed.
std::string written(Document const& document, Rendering rendering) {
    Result why;
    std::optional<std::string> text = writeDocument(document, rendering, why);
    // Some class names have no form in XML.
    require(text.has_value() || rendering == ModelFormat::XmlV2, "what was read can be written");
    return text.value_or("");
}

/// Kept text of unknown content may change its layout when it changes the rendering: blanks, and the value of
/// a block, which may stand before its brace.
std::string withoutLayout(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
    std::sort(text.begin(), text.end());
    return text;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    Document original = readDocument(std::string(reinterpret_cast<char const*>(data), size));
    if (!isWhole(original) || original.hasInstanceIds)
        return 0;
    std::optional<Header> const header = std::exchange(original.header, std::nullopt);
    for (bool const isXmlFirst : {false, true}) {
        Rendering const rendering = renderings[isXmlFirst], other = renderings[!isXmlFirst];
        original.header = header;
        std::string const first = written(original, rendering);
        if (first.empty())
            continue;
        Document again = readDocument(first);
        require(isWhole(again), "what was written reads back", first);
        std::string const second = written(again, rendering);
        require(first == second, "writing again gives the same bytes", first, second);
        // XML does not carry the whole header.
        original.header.reset();
        again.header.reset();
        std::string const direct = written(original, other), through = written(again, other);
        require(withoutLayout(direct) == withoutLayout(through), "the renderings say the same", direct,
                through);
    }
    return 0;
}
