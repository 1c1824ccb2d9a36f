// SPDX-License-Identifier: MIT
#include "platform/Registry.h"

#include "platform/RegistryStore.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

using OpenKey = RegistryState::OpenKey;

std::uintptr_t numberOf(HKEY key) noexcept { return reinterpret_cast<std::uintptr_t>(key); }

RegistryRoot const* findRoot(RegistryState const& state, HKEY key) {
    auto const* const root =
        std::find_if(state.roots.begin(), state.roots.end(),
                     [key](RegistryRoot const& r) { return predefinedHandle(r.number) == key; });
    return root != state.roots.end() ? root : nullptr;
}

/// What a handle stands for, while the registry is locked.
class Access {
public:
    /// `needed` are bits that the mask of the handle must have.
    explicit Access(HKEY key, REGSAM needed = 0) : lock_(registryState().mutex) {
        if (auto const* const root = findRoot(state(), key)) {
            key_ = root->key;
            return;
        }
        auto const handle = state().handles.find(numberOf(key));
        if (handle == state().handles.end())
            status_ = ERROR_INVALID_HANDLE;
        else if (handle->second.key->isDeleted())
            status_ = ERROR_KEY_DELETED;
        else if ((handle->second.access & needed) != needed)
            status_ = ERROR_ACCESS_DENIED;
        else
            key_ = handle->second.key;
    }

    static RegistryState& state() { return registryState(); }
    LSTATUS status() const { return status_; }
    std::shared_ptr<RegistryKey> const& key() const { return key_; }
    RegistryKey* operator->() const { return key_.get(); }

    /// The key of a path below this one; empty, with the status of the failure, when there is none.
    std::shared_ptr<RegistryKey> find(WCHAR const* path) {
        return walk(
            path, [](RegistryKey& key, Utf16View name) { return key.find(name); }, ERROR_FILE_NOT_FOUND);
    }
    /// The same, made where it is missing.
    std::shared_ptr<RegistryKey> findOrAdd(WCHAR const* path) {
        return walk(
            path,
            [this](RegistryKey& key, Utf16View name) {
                auto const numKeys = key.keys().map().size();
                auto found = key.findOrAdd(name);
                hasMade_ |= key.keys().map().size() != numKeys;
                state().isChanged |= hasMade_;
                return found;
            },
            ERROR_INVALID_PARAMETER);
    }

    bool hasMade() const { return hasMade_; }

private:
    template <class Step>
    std::shared_ptr<RegistryKey> walk(WCHAR const* path, Step step, LSTATUS failure) {
        if (status_ != ERROR_SUCCESS)
            return nullptr;
        Utf16View rest(path ? path : u"");
        if (rest.starts_with(u'\\')) {
            status_ = ERROR_BAD_PATHNAME;
            return nullptr;
        }
        auto key = key_;
        for (auto name = takeComponent(rest); key && !name.empty(); name = takeComponent(rest))
            key = step(*key, name);
        if (!key)
            status_ = failure;
        return key;
    }

    std::lock_guard<std::mutex> lock_;
    LSTATUS status_ = ERROR_SUCCESS;
    bool hasMade_ = false;
    std::shared_ptr<RegistryKey> key_;
};

bool isEmpty(WCHAR const* path) { return !path || *path == 0; }

/// A handle of the key that `path` leads to from `parent`; a predefined key has no other handles than its
/// own, so that it may be replaced. The registry is locked.
HKEY open(HKEY parent, WCHAR const* path, std::shared_ptr<RegistryKey> key, REGSAM access) {
    RegistryState& state = registryState();
    if (isEmpty(path) && findRoot(state, parent))
        return parent;
    if ((access & MAXIMUM_ALLOWED) != 0)
        access |= KEY_ALL_ACCESS;
    std::uintptr_t const handle = state.nextHandle;
    state.handles.emplace(handle, OpenKey{std::move(key), access});
    state.nextHandle += 4;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): handles are numbers that are only compared.
    return reinterpret_cast<HKEY>(handle);
}

/// Hands out a name and the null character behind it. `*length`, which counts that character, becomes the
/// length without it.
LSTATUS copyName(Utf16View source, WCHAR* name, DWORD* length) {
    if (source.size() >= *length)
        return ERROR_MORE_DATA;
    *std::copy(source.begin(), source.end(), name) = 0;
    *length = static_cast<DWORD>(source.size());
    return ERROR_SUCCESS;
}

/// Hands out a value as far as it is asked for.
LSTATUS copyValue(RegistryValue const& value, DWORD* type, BYTE* data, DWORD* size) {
    if (data && !size)
        return ERROR_INVALID_PARAMETER;
    if (type)
        *type = value.type;
    if (!size)
        return ERROR_SUCCESS;
    DWORD const room = *size;
    *size = static_cast<DWORD>(value.data.size());
    if (data && room < *size)
        return ERROR_MORE_DATA;
    if (data)
        std::copy(value.data.begin(), value.data.end(), data);
    return ERROR_SUCCESS;
}

/// The values and subkeys of a key, apart from the registry. Trees are copied through it, because the
/// target may lie in the source.
struct TreeCopy {
    explicit TreeCopy(RegistryKey const& key) : name(key.name()), values(key.values().map()) {
        for (auto const& [subName, subKey] : key.keys().map())
            keys.emplace_back(*subKey);
    }

    /// False when some key would be too deep; what goes before it is written.
    bool writeTo(RegistryKey& target) const {
        for (auto const& [valueName, value] : values)
            target.setValue(valueName, value.type, value.data);
        return std::all_of(keys.begin(), keys.end(), [&target](TreeCopy const& key) {
            auto const subKey = target.findOrAdd(key.name);
            return subKey && key.writeTo(*subKey);
        });
    }

    Utf16String name;
    RegistryKey::Values::Map values;
    std::vector<TreeCopy> keys;
};

template <class Items, class Length>
DWORD longest(Items const& items, Length length) {
    std::size_t result = 0;
    for (auto const& item : items)
        result = std::max<std::size_t>(result, length(item));
    return static_cast<DWORD>(result);
}

void put(DWORD* where, std::size_t number) {
    if (where)
        *where = static_cast<DWORD>(number);
}

} // namespace

// --- keys

LSTATUS RegOpenKeyExW(HKEY key, WCHAR const* path, DWORD, REGSAM access, HKEY* result) {
    if (!result)
        return ERROR_INVALID_PARAMETER;
    Access parent(key);
    auto found = parent.find(path);
    if (found)
        *result = open(key, path, std::move(found), access);
    return parent.status();
}

LSTATUS RegCloseKey(HKEY key) {
    RegistryState& state = registryState();
    std::lock_guard const lock(state.mutex);
    return findRoot(state, key) || state.handles.erase(numberOf(key)) != 0 ? ERROR_SUCCESS
                                                                           : ERROR_INVALID_HANDLE;
}

LSTATUS RegCreateKeyW(HKEY key, WCHAR const* path, HKEY* result) {
    return RegCreateKeyExW(key, path, 0, nullptr, REG_OPTION_NON_VOLATILE, MAXIMUM_ALLOWED, nullptr, result,
                           nullptr);
}

LSTATUS RegCreateKeyExW(HKEY key, WCHAR const* path, DWORD reserved, WCHAR*, DWORD options, REGSAM access,
                        SECURITY_ATTRIBUTES const*, HKEY* result, DWORD* disposition) {
    if (!result || reserved != 0 || options != REG_OPTION_NON_VOLATILE)
        return ERROR_INVALID_PARAMETER;
    Access parent(key);
    auto made = parent.findOrAdd(path);
    if (!made)
        return parent.status();
    *result = open(key, path, std::move(made), access);
    put(disposition, parent.hasMade() ? 1 : 2);
    return ERROR_SUCCESS;
}

LSTATUS RegDeleteKeyW(HKEY key, WCHAR const* path) {
    if (!path)
        return ERROR_INVALID_PARAMETER;
    Access parent(key);
    auto const found = parent.find(path);
    if (!found)
        return parent.status();
    if (!found->keys().map().empty() || !found->parent())
        return ERROR_ACCESS_DENIED;
    found->remove();
    Access::state().isChanged = true;
    return ERROR_SUCCESS;
}

LSTATUS RegDeleteTreeW(HKEY key, WCHAR const* path) {
    bool const contentOnly = isEmpty(path);
    Access parent(key, contentOnly ? KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_ENUMERATE_SUB_KEYS : 0);
    auto const found = parent.find(path);
    if (!found)
        return parent.status();
    if (contentOnly)
        found->clear();
    else
        found->remove();
    Access::state().isChanged = true;
    return ERROR_SUCCESS;
}

LSTATUS RegCopyTreeW(HKEY source, WCHAR const* path, HKEY target) {
    std::optional<TreeCopy> copy;
    {
        Access from(source, isEmpty(path) ? KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS : 0);
        auto const found = from.find(path);
        if (!found)
            return from.status();
        copy.emplace(*found);
    }
    Access const to(target, KEY_SET_VALUE);
    if (!to.key())
        return to.status();
    Access::state().isChanged = true;
    return copy->writeTo(*to.key()) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

LSTATUS RegSetKeySecurity(HKEY key, DWORD, SECURITY_DESCRIPTOR* descriptor) {
    Access const access(key, WRITE_DAC);
    return access.key() && !descriptor ? ERROR_INVALID_PARAMETER : access.status();
}

// --- values

LSTATUS RegSetValueExW(HKEY key, WCHAR const* name, DWORD, DWORD type, BYTE const* data, DWORD size) {
    if (!data && size != 0)
        return ERROR_NOACCESS;
    Utf16View const valueName(name ? name : u"");
    if (valueName.size() > RegistryKey::maxValueNameLength)
        return ERROR_INVALID_PARAMETER;
    std::vector<BYTE> bytes(data, data + size);
    Access const access(key, KEY_SET_VALUE);
    if (access.key() && access->setValue(valueName, type, std::move(bytes)))
        Access::state().isChanged = true;
    return access.status();
}

LSTATUS RegQueryValueExW(HKEY key, WCHAR const* name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
    Access const access(key, KEY_QUERY_VALUE);
    if (!access.key())
        return access.status();
    auto const* const value = access->findValue(name ? name : u"");
    return value ? copyValue(*value, type, data, size) : ERROR_FILE_NOT_FOUND;
}

LSTATUS RegDeleteValueW(HKEY key, WCHAR const* name) {
    Access const access(key, KEY_SET_VALUE);
    if (!access.key())
        return access.status();
    if (!access->removeValue(name ? name : u""))
        return ERROR_FILE_NOT_FOUND;
    Access::state().isChanged = true;
    return ERROR_SUCCESS;
}

// --- listing

LSTATUS RegQueryInfoKeyA(HKEY key, char*, DWORD*, DWORD*, DWORD* subKeys, DWORD* longestSubKey,
                         DWORD* longestClass, DWORD* values, DWORD* longestValueName, DWORD* longestValue,
                         DWORD* securitySize, FILETIME*) {
    Access const access(key, KEY_QUERY_VALUE);
    if (!access.key())
        return access.status();
    auto const nameLength = [](auto const& item) { return item.first.size(); };
    auto const& keys = access->keys().map();
    auto const& valueMap = access->values().map();
    put(subKeys, keys.size());
    put(longestSubKey, longest(keys, nameLength));
    put(longestClass, 0);
    put(values, valueMap.size());
    put(longestValueName, longest(valueMap, nameLength));
    put(longestValue, longest(valueMap, [](auto const& item) { return item.second.data.size(); }));
    put(securitySize, 0);
    return ERROR_SUCCESS;
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, WCHAR* name, DWORD* length, DWORD*, WCHAR*, DWORD*, FILETIME*) {
    if (!name || !length)
        return ERROR_INVALID_PARAMETER;
    Access const access(key, KEY_ENUMERATE_SUB_KEYS);
    if (!access.key())
        return access.status();
    auto const& keys = access->keys();
    return index < keys.map().size() ? copyName(keys.at(index).first, name, length) : ERROR_NO_MORE_ITEMS;
}

LSTATUS RegEnumValueW(HKEY key, DWORD index, WCHAR* name, DWORD* length, DWORD*, DWORD* type, BYTE* data,
                      DWORD* size) {
    if (!name || !length)
        return ERROR_INVALID_PARAMETER;
    Access const access(key, KEY_QUERY_VALUE);
    if (!access.key())
        return access.status();
    auto const& values = access->values();
    if (index >= values.map().size())
        return ERROR_NO_MORE_ITEMS;
    auto const& [valueName, value] = values.at(index);
    LSTATUS const status = copyName(valueName, name, length);
    return status == ERROR_SUCCESS ? copyValue(value, type, data, size) : status;
}

// --- security

BOOL InitializeSecurityDescriptor(SECURITY_DESCRIPTOR* descriptor, DWORD revision) {
    *descriptor = {revision, false, nullptr};
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(SECURITY_DESCRIPTOR* descriptor, BOOL present, ACL* dacl, BOOL) {
    descriptor->hasDacl = present != FALSE;
    descriptor->dacl = dacl;
    return TRUE;
}

} // namespace Zorvan::AttributeContainer
