// SPDX-License-Identifier: MIT
#pragma once

#include "Document.h"
#include "Fuzzing.h"

#include <algorithm>
#include <utility>

namespace fuzzing {

using namespace kxmodel;
using Zorvan::AttributeContainer::ModelFormat;
using Zorvan::AttributeContainer::Result;

inline constexpr Rendering renderings[] = {ModelFormat::Text, ModelFormat::XmlV2};

inline bool isWhole(Document const& document) {
    return document.root && document.outcome <= Outcome::Warnings && !document.isLossy;
}

/// Ids of shared instances are new in each writing, and are removed.
inline std::string written(Document const& document, Rendering rendering) {
    Result why;
    std::optional<std::string> text = writeDocument(document, rendering, why);
    // Some class names have no form in XML.
    require(text.has_value() || rendering == ModelFormat::XmlV2, "what was read can be written");
    return text.value_or("");
}

/// Kept text of unknown content may change its layout when it changes the rendering: blanks, and the value of
/// a block, which may stand before its brace.
inline std::string withoutLayout(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
    std::sort(text.begin(), text.end());
    return text;
}

/// What was written reads back without loss, and written again gives the same bytes.
inline Document checkedAgain(std::string const& first) {
    Document again = readDocument(first);
    require(isWhole(again), "what was written reads back", first);
    std::string const second = written(again, again.rendering);
    require(first == second, "writing again gives the same bytes", first, second);
    return again;
}

/// What was read can be written, comes back from what is written, and says the same in the other rendering.
inline void checkDocument(std::string const& text) {
    Document original = readDocument(text);
    if (!isWhole(original) || original.hasInstanceIds)
        return;
    if (original.rendering == ModelFormat::XmlV2) {
        // XML that this library has not written may hold what a text has no form for, comments for one: it is
        // the text that must come back.
        checkedAgain(written(original, ModelFormat::XmlV2));
        return checkDocument(written(original, ModelFormat::Text));
    }
    std::optional<Header> const header = std::exchange(original.header, std::nullopt);
    for (bool const isXmlFirst : {false, true}) {
        Rendering const rendering = renderings[isXmlFirst], other = renderings[!isXmlFirst];
        original.header = header;
        std::string const first = written(original, rendering);
        if (first.empty())
            continue;
        Document again = checkedAgain(first);
        // XML does not carry the whole header.
        original.header.reset();
        again.header.reset();
        std::string const direct = written(original, other), through = written(again, other);
        require(withoutLayout(direct) == withoutLayout(through), "the renderings say the same", direct,
                through);
    }
}

} // namespace fuzzing
