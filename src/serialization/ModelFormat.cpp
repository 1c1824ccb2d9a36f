// SPDX-License-Identifier: MIT
#include <AttributeContainer/ModelFormat.h>

#include "foundation/NeverDestroyed.h"
#include "serialization/FormatTexts.h"

#include <cstddef>
#include <iterator>
#include <string_view>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::string_view SOURCES[] = {
    FormatTexts::START_OF_BLOCK,      FormatTexts::END_OF_BLOCK,      FormatTexts::XML_HEADER,
    FormatTexts::XML_V2_COMMENT,      FormatTexts::XML_NEXT_ROOT,     FormatTexts::XML_NEXT_VERSION,
    FormatTexts::XML_NEXT_ROOT_MODEL, FormatTexts::XML_START_COMMENT, FormatTexts::XML_END_COMMENT,
    FormatTexts::XML_ROOT_START_TAG,  FormatTexts::XML_ROOT_END_TAG,  FormatTexts::XML_FOOTER,
};

constinit NeverDestroyed<std::string> texts[std::size(SOURCES)];

[[gnu::init_priority(101)]] NeverDestroyedFill const fill([] {
    for (std::size_t i = 0; i < std::size(SOURCES); ++i)
        texts[i].emplace(SOURCES[i]);
});

} // namespace

constinit std::string const& ModelFormat::START_OF_BLOCK_STR = texts[0].get();
constinit std::string const& ModelFormat::END_OF_BLOCK_STR = texts[1].get();
constinit std::string const& ModelFormat::XML_HEADER = texts[2].get();
constinit std::string const& ModelFormat::XML_V2_COMMENT = texts[3].get();
constinit std::string const& ModelFormat::XML_NEXT_ROOT = texts[4].get();
constinit std::string const& ModelFormat::XML_NEXT_VERSION = texts[5].get();
constinit std::string const& ModelFormat::XML_NEXT_ROOT_MODEL = texts[6].get();
constinit std::string const& ModelFormat::XML_START_COMMENT = texts[7].get();
constinit std::string const& ModelFormat::XML_END_COMMENT = texts[8].get();
constinit std::string const& ModelFormat::XML_ROOT_START_TAG = texts[9].get();
constinit std::string const& ModelFormat::XML_ROOT_END_TAG = texts[10].get();
constinit std::string const& ModelFormat::XML_FOOTER = texts[11].get();

} // namespace Zorvan::AttributeContainer
