// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ModelFormat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kxmodel {

/// What must be known of a document before it is read.
struct Outline {
    bool hasBlocks = false;
    /// The root has child blocks, or begins with the attributes of an Object.
    bool isRootObject = false;
    /// The instance ids of fields and children, in the document's order.
    std::vector<std::uint64_t> instanceIds;
    /// Where a reference to a shared instance stands that has no id; a reader cannot know what it means.
    std::optional<std::size_t> referenceWithoutId;
};

/// Looks through a document without making anything of it. What is malformed is passed over: the reader
/// reports it.
Outline outlineOf(std::string_view text, Zorvan::AttributeContainer::ModelFormat::Format rendering);

} // namespace kxmodel
