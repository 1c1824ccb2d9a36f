// SPDX-License-Identifier: MIT
#include "platform/RegistryStore.h"

#include "platform/RegistryNames.h"

#include <algorithm>

namespace Zorvan::AttributeContainer {

std::size_t RegistryKey::place(Utf16View name) const {
    return std::lower_bound(
               keys_.begin(), keys_.end(), name,
               [](auto const& key, Utf16View n) { return compareRegistryNames(key->name_, n) < 0; }) -
           keys_.begin();
}

std::size_t RegistryKey::valuePlace(Utf16View name) const {
    return std::lower_bound(values_.begin(), values_.end(), name,
                            [](RegistryValue const& value, Utf16View n) {
                                return compareRegistryNames(value.name, n) < 0;
                            }) -
           values_.begin();
}

std::shared_ptr<RegistryKey> RegistryKey::find(Utf16View name) const {
    std::size_t const at = place(name);
    return at < keys_.size() && compareRegistryNames(keys_[at]->name_, name) == 0 ? keys_[at] : nullptr;
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
    keys_.insert(keys_.begin() + static_cast<std::ptrdiff_t>(place(name)), made);
    return made;
}

RegistryValue const* RegistryKey::findValue(Utf16View name) const {
    std::size_t const at = valuePlace(name);
    return at < values_.size() && compareRegistryNames(values_[at].name, name) == 0 ? &values_[at] : nullptr;
}

bool RegistryKey::setValue(Utf16View name, DWORD type, std::vector<BYTE> data) {
    std::size_t const at = valuePlace(name);
    if (at == values_.size() || compareRegistryNames(values_[at].name, name) != 0) {
        values_.insert(values_.begin() + static_cast<std::ptrdiff_t>(at),
                       RegistryValue{Utf16String(name), type, std::move(data)});
        return true;
    }
    RegistryValue& value = values_[at];
    if (value.type == type && value.data == data)
        return false;
    value.type = type;
    value.data = std::move(data);
    return true;
}

bool RegistryKey::removeValue(Utf16View name) {
    auto const* const found = findValue(name);
    if (!found)
        return false;
    values_.erase(values_.begin() + (found - values_.data()));
    return true;
}

void RegistryKey::remove() {
    RegistryKey* const parent = parent_;
    std::size_t const at = parent->place(name_);
    auto const self = std::move(parent->keys_[at]); // lives until the end of this function
    parent->keys_.erase(parent->keys_.begin() + static_cast<std::ptrdiff_t>(at));
    markDeleted();
}

void RegistryKey::clear() {
    for (auto const& key : keys_)
        key->markDeleted();
    keys_.clear();
    values_.clear();
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
