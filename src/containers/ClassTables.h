// SPDX-License-Identifier: MIT
#pragma once

#include "containers/ContainerAccess.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

/// The attribute definitions of one container class and what is looked up in them. One per class, made on
/// first use and never destroyed.
class ClassTables {
public:
    explicit ClassTables(std::vector<AttrDefinition> definitions)
        : definitions_(std::move(definitions)), names_(ContainerAccess::keyTableOf(definitions_)),
          byToken_(ContainerAccess::definitionMapOf(definitions_)) {}
    ClassTables(ClassTables const&) = delete;
    ClassTables& operator=(ClassTables const&) = delete;

    std::vector<AttrDefinition> const& definitions() const { return definitions_; }
    DataStructures::KeyTable const& names() const { return names_; }
    AttrDefinition const* definition(std::uint64_t token) const {
        auto const found = byToken_.find(token);
        return found == byToken_.end() ? nullptr : found->second;
    }

private:
    std::vector<AttrDefinition> definitions_;
    DataStructures::KeyTable names_;
    std::map<std::uint64_t const, AttrDefinition const*> byToken_;
};

} // namespace Zorvan::AttributeContainer
