// SPDX-License-Identifier: MIT
#include <AttributeContainer/KeyTable.h>

#include <functional>

namespace Zorvan::DataStructures {

std::size_t KeyTable::NameHash::operator()(std::string_view name) const noexcept {
    return std::hash<std::string_view>()(name);
}

KeyTable::KeyTable() = default;
KeyTable::KeyTable(KeyTable const&) = default;
KeyTable::KeyTable(KeyTable&&) noexcept = default;
KeyTable& KeyTable::operator=(KeyTable const&) = default;
KeyTable& KeyTable::operator=(KeyTable&&) noexcept = default;
KeyTable::~KeyTable() = default;

KeyTable::KeyTable(std::vector<KeyTableEntry> const& entries) {
    for (KeyTableEntry const& entry : entries)
        add(entry.token, entry.name);
}

std::uint64_t KeyTable::getToken(std::string_view name) const noexcept {
    auto const found = tokens_.find(name);
    return found == tokens_.end() ? noToken : found->second;
}

std::optional<std::string> KeyTable::getName(std::uint64_t token) const {
    std::string const* const name = findName(token);
    return name ? std::optional<std::string>(*name) : std::nullopt;
}

std::string const* KeyTable::findName(std::uint64_t token) const noexcept {
    auto const found = names_.find(token);
    return found == names_.end() ? nullptr : &found->second;
}

bool KeyTable::add(std::uint64_t token, std::string_view name) {
    auto const [byToken, isNew] = names_.try_emplace(token, name);
    if (!isNew)
        return false;
    try {
        if (!tokens_.try_emplace(byToken->second, token).second)
            furtherTokens_[byToken->second].insert(token);
    } catch (...) {
        if (auto const further = furtherTokens_.find(byToken->second);
            further != furtherTokens_.end() && further->second.empty())
            furtherTokens_.erase(further);
        names_.erase(byToken);
        throw;
    }
    return true;
}

bool KeyTable::remove(std::uint64_t token, std::string_view name) {
    auto const byToken = names_.find(token);
    if (byToken == names_.end() || byToken->second != name)
        return false;
    auto const byName = tokens_.find(name);
    auto const further = furtherTokens_.find(name);
    if (byName->second != token) {
        further->second.erase(token);
    } else if (further != furtherTokens_.end()) {
        byName->second = *further->second.begin();
        further->second.erase(further->second.begin());
    } else {
        tokens_.erase(byName);
    }
    if (further != furtherTokens_.end() && further->second.empty())
        furtherTokens_.erase(further);
    // Last, for `name` may be the very string that is kept here.
    names_.erase(byToken);
    return true;
}

} // namespace Zorvan::DataStructures
