// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

/// The fixed texts of the model format, for the library's own code: constants that need no initialisation.
namespace Zorvan::AttributeContainer::FormatTexts {

inline constexpr std::string_view START_OF_BLOCK = "{";
inline constexpr std::string_view END_OF_BLOCK = "}";
inline constexpr std::string_view XML_HEADER = R"(<?xml version="1.0" encoding="UTF-8"?>)";
inline constexpr std::string_view XML_V2_COMMENT = "<!-- XML v. 2 -->";
inline constexpr std::string_view XML_NEXT_ROOT = "<!-- NEXT: XML Root Element -->";
inline constexpr std::string_view XML_NEXT_VERSION = "<!-- NEXT: Version Information -->";
inline constexpr std::string_view XML_NEXT_ROOT_MODEL = "<!-- NEXT: Root Model Information -->";
inline constexpr std::string_view XML_START_COMMENT = "<!-- ";
inline constexpr std::string_view XML_END_COMMENT = " -->";
inline constexpr std::string_view XML_ROOT_START_TAG = "<VOXA>";
inline constexpr std::string_view XML_ROOT_END_TAG = "</VOXA>";
inline constexpr std::string_view XML_FOOTER = "</VOXA>";
/// The name in the tags of the root.
inline constexpr std::string_view XML_ROOT_NAME = "VOXA";

} // namespace Zorvan::AttributeContainer::FormatTexts
