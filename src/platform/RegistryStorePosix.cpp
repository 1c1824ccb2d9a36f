// SPDX-License-Identifier: MIT
#include "platform/RegistryStore.h"

#include <algorithm>

namespace Zorvan::AttributeContainer {

std::shared_ptr<RegistryKey> RegistryKey::find(Utf16View name) const {
    auto const found = keys_.map().find(name);
    return found != keys_.map().end() ? found->second : nullptr;
}

std::shared_ptr<RegistryKey> RegistryKey::findOrAdd(Utf16View name) {
    if (auto found = find(name))
        return found;
    if (name.empty() || name.size() > maxNameLength || depth_ >= maxDepth ||
        name.find_first_of(u"\r\n") != Utf16View::npos)
        return nullptr;
    auto made = std::make_shared<RegistryKey>();
    made->name_ = name;
    made->parent_ = this;
    made->depth_ = depth_ + 1;
    keys_.change().emplace(made->name_, made);
    return made;
}

RegistryValue const* RegistryKey::findValue(Utf16View name) const {
    auto const found = values_.map().find(name);
    return found != values_.map().end() ? &found->second : nullptr;
}

bool RegistryKey::setValue(Utf16View name, DWORD type, std::vector<BYTE> data) {
    auto const* const found = findValue(name);
    if (found && found->type == type && found->data == data)
        return false;
    // A value that was there keeps its name as it was spelt then.
    auto& map = values_.change();
    auto const place = map.lower_bound(name);
    if (found)
        place->second = {type, std::move(data)};
    else
        map.emplace_hint(place, name, RegistryValue{type, std::move(data)});
    return true;
}

bool RegistryKey::removeValue(Utf16View name) {
    auto& map = values_.change();
    auto const found = map.find(name);
    if (found == map.end())
        return false;
    map.erase(found);
    return true;
}

void RegistryKey::remove() {
    auto& siblings = parent_->keys_.change();
    auto const place = siblings.find(name_);
    auto const self = place->second; // lives until the end of this function
    siblings.erase(place);
    markDeleted();
}

void RegistryKey::clear() {
    for (auto const& [name, key] : keys_.map())
        key->markDeleted();
    keys_.change().clear();
    values_.change().clear();
}

void RegistryKey::markDeleted() {
    isDeleted_ = true;
    parent_ = nullptr;
    clear();
}

RegistryRoots makeRegistryRoots() {
    return {{{0, u"HKEY_CLASSES_ROOT"},
             {1, u"HKEY_CURRENT_USER"},
             {2, u"HKEY_LOCAL_MACHINE"},
             {3, u"HKEY_USERS"},
             {5, u"HKEY_CURRENT_CONFIG"}}};
}

RegistryState& registryState() {
    static auto& state = *new RegistryState;
    return state;
}

Utf16View takeComponent(Utf16View& path) noexcept {
    path.remove_prefix(std::min(path.find_first_not_of(u'\\'), path.size()));
    Utf16View const component = path.substr(0, path.find(u'\\'));
    path.remove_prefix(component.size());
    return component;
}

} // namespace Zorvan::AttributeContainer
