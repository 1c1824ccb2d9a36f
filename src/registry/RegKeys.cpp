// SPDX-License-Identifier: MIT
#include <AttributeContainer/RegKeys.h>

#include "platform/Registry.h"
#include "platform/RegistryNames.h"
#include "registry/KeyPath.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr REGSAM readWrite = 0x2001F;
constexpr REGSAM readAndChangeAccess = KEY_READ | WRITE_DAC;
/// Units for a name, the null character included.
constexpr DWORD nameBufferSize = 260;

/// A name or a path for the registry. Null characters would end it early, and so lead to another key or
/// value: such names are not valid.
class Name {
public:
    explicit Name(std::string_view text)
        : isValid_(text.find('\0') == std::string_view::npos), text_(toUtf16(isValid_ ? text : "")) {}

    bool isValid() const { return isValid_; }
    bool isEmpty() const { return text_.empty(); }
    WCHAR const* get() const { return text_.c_str(); }

private:
    bool isValid_;
    Utf16String text_;
};

/// A key that an operation has opened, closed at its end unless it is the held key.
class Key {
public:
    explicit Key(HKEY held) : held_(held) {}
    Key(Key const&) = delete;
    Key& operator=(Key const&) = delete;
    ~Key() {
        if (key_ && key_ != held_)
            RegCloseKey(key_);
    }

    /// Opens what a path leads to, or the held key itself when it is empty.
    bool open(std::string const& path, REGSAM access) {
        if (path.empty()) {
            key_ = held_;
            return true;
        }
        return reopen(path, access);
    }
    /// Opens what a path leads to, also where that is the held key.
    bool reopen(std::string const& path, REGSAM access) {
        Name const name(path);
        return name.isValid() && RegOpenKeyExW(held_, name.get(), 0, access, &key_) == ERROR_SUCCESS;
    }
    /// Opens what a path leads to, and makes it where it is missing.
    bool create(std::string const& path) {
        Name const name(path);
        return name.isValid() && RegCreateKeyW(held_, name.get(), &key_) == ERROR_SUCCESS;
    }
    bool create(std::string const& path, SECURITY_ATTRIBUTES* security) {
        Name const name(path);
        return name.isValid() && RegCreateKeyExW(held_, name.get(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                                 KEY_ALL_ACCESS, security, &key_, nullptr) == ERROR_SUCCESS;
    }

    HKEY get() const { return key_; }
    HKEY release() { return std::exchange(key_, nullptr); }

private:
    HKEY held_;
    HKEY key_ = nullptr;
};

/// Security that gives everybody every access: a list of permissions that is there, and null.
class AccessForEveryone {
public:
    AccessForEveryone()
        : isGood_(InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) &&
                  SetSecurityDescriptorDacl(&descriptor_, TRUE, nullptr, FALSE)) {}

    bool isGood() const { return isGood_; }
    SECURITY_DESCRIPTOR* descriptor() { return &descriptor_; }

private:
    SECURITY_DESCRIPTOR descriptor_{};
    bool isGood_;
};

/// Asks `list(name, length)` for a name.
template <class List>
std::string listedName(DWORD size, List list) {
    Utf16String name(size, 0);
    if (list(name.data(), &size) != ERROR_SUCCESS)
        return {};
    return toUtf8(Utf16View(name).substr(0, size));
}

bool fitsDword(unsigned long number) { return number <= std::numeric_limits<DWORD>::max(); }

} // namespace

// --- the place

RegKeys::RegKeys() : key_(predefinedKey("HKEY_LOCAL_MACHINE")) {}

RegKeys::RegKeys(std::string const& prefix, HKEY key, bool ownsKey) : key_(key) {
    setPrefix(prefix, key, ownsKey);
}

RegKeys::~RegKeys() {
    if (ownsKey_)
        RegCloseKey(key_);
}

HKEY RegKeys::predefinedKey(std::string_view name) noexcept {
    struct Row {
        std::string_view name, shortName;
        std::uint32_t number;
    };
    static constexpr Row rows[] = {{"HKEY_CLASSES_ROOT", "HKCR", 0},
                                   {"HKEY_CURRENT_USER", "HKCU", 1},
                                   {"HKEY_LOCAL_MACHINE", "HKLM", 2},
                                   {"HKEY_USERS", "HKU", 3},
                                   {"HKEY_CURRENT_CONFIG", "HKCC", 5}};
    auto const isName = [name](std::string_view candidate) {
        return std::equal(name.begin(), name.end(), candidate.begin(), candidate.end(), [](char a, char b) {
            return a == b || (a >= 'a' && a <= 'z' && a - 'a' + 'A' == b);
        });
    };
    for (Row const& row : rows)
        if (isName(row.name) || isName(row.shortName))
            return predefinedHandle(row.number);
    return nullptr;
}

std::string RegKeys::foldName(std::string const& name) { return toUtf8(foldRegistryName(toUtf16(name))); }

bool RegKeys::setPrefix(std::string const& prefix, HKEY key, bool ownsKey) {
    if (!prefix_.empty() && key_ == key && compareRegistryNames(toUtf16(prefix_), toUtf16(prefix)) == 0)
        return true;
    std::string newPrefix = prefix; // may be that of this object, and may throw before anything has changed
    if (ownsKey_ && key_ != key)
        RegCloseKey(key_);
    ownsKey_ = ownsKey;
    key_ = key;
    prefix_ = std::move(newPrefix);
    return prefix_.empty() || createKey("", false);
}

std::string RegKeys::path(std::string_view name) const { return joinKeyPath(prefix_, name); }

std::shared_ptr<RegKeys> RegKeys::createFrom(bool forWriting) const {
    auto opened = std::make_shared<RegKeys>("", key_, false);
    Key key(key_);
    if (!key.reopen(path(""), forWriting ? readWrite : KEY_READ))
        return nullptr;
    opened->setPrefix("", key.release(), true);
    return opened;
}

// --- keys

bool RegKeys::checkKey(std::string const& name, bool forWriting) const {
    return Key(key_).reopen(path(name), forWriting ? KEY_WRITE : KEY_READ);
}

bool RegKeys::createKey(std::string const& name, bool forEveryone) const {
    if (!forEveryone)
        return Key(key_).create(path(name));
    AccessForEveryone access;
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), access.descriptor(), TRUE};
    return access.isGood() && Key(key_).create(path(name), &attributes);
}

bool RegKeys::setAccessToEveryOne(std::string const& name) const {
    Key key(key_);
    AccessForEveryone access;
    return access.isGood() && key.reopen(path(name), readAndChangeAccess) &&
           RegSetKeySecurity(key.get(), DACL_SECURITY_INFORMATION, access.descriptor()) == ERROR_SUCCESS;
}

bool RegKeys::deleteKey(std::string const& name) const {
    Name const keyName(name);
    return keyName.isValid() && !keyName.isEmpty() && RegDeleteKeyW(key_, keyName.get()) == ERROR_SUCCESS;
}

bool RegKeys::deleteTree(std::string const& name) const {
    Name const keyPath(path(name));
    return keyPath.isValid() && !keyPath.isEmpty() && RegDeleteTreeW(key_, keyPath.get()) == ERROR_SUCCESS;
}

bool RegKeys::copyTree(std::string const& source, std::string const& target) const {
    if (joinKeyPath(source, "").empty() || joinKeyPath(target, "").empty())
        return false;
    // The system would copy what it copies for ever.
    if (foldKeyPath(path(target)).starts_with(foldKeyPath(path(source)) + '\\'))
        return false;
    Key from(key_);
    Key to(key_);
    return from.reopen(path(source), KEY_READ) && to.create(path(target), nullptr) &&
           RegCopyTreeW(from.get(), nullptr, to.get()) == ERROR_SUCCESS;
}

std::vector<std::string> RegKeys::enumerateKeys() const {
    Key key(key_);
    DWORD numKeys = 0;
    DWORD longestName = 0;
    if (!key.reopen(path(""), KEY_READ) ||
        RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, &numKeys, &longestName, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return {};
    std::vector<std::string> names;
    // Others may add keys meanwhile: there is room for all names that keys can have.
    DWORD const size = std::max(longestName + 1, nameBufferSize);
    for (DWORD i = 0; i < numKeys; ++i) {
        auto name = listedName(size, [&key, i](WCHAR* buffer, DWORD* length) {
            return RegEnumKeyExW(key.get(), i, buffer, length, nullptr, nullptr, nullptr, nullptr);
        });
        if (name.empty())
            return {};
        names.push_back(std::move(name));
    }
    return names;
}

std::string RegKeys::getSubKey(int index) const {
    return listedName(nameBufferSize, [this, index](WCHAR* buffer, DWORD* length) {
        return RegEnumKeyExW(key_, static_cast<DWORD>(index), buffer, length, nullptr, nullptr, nullptr,
                             nullptr);
    });
}

// --- values

bool RegKeys::setKey(std::string const& valueName, unsigned char const* data, unsigned long length,
                     unsigned long type) const {
    Name const name(valueName);
    if (!name.isValid() || !fitsDword(length) || !fitsDword(type) || (!data && name.isEmpty()))
        return false;
    Key key(key_);
    if (!key.open(path(""), KEY_WRITE))
        return false;
    LSTATUS const status = data ? RegSetValueExW(key.get(), name.get(), 0, static_cast<DWORD>(type), data,
                                                 static_cast<DWORD>(length))
                                : RegDeleteKeyW(key.get(), name.get());
    return status == ERROR_SUCCESS;
}

bool RegKeys::setKey(std::string const& valueName, std::string const& text) const {
    Utf16String const units = toUtf16(text);
    std::uint64_t const length = (std::uint64_t{units.size()} + 1) * sizeof(Utf16Unit);
    return length <= std::numeric_limits<DWORD>::max() &&
           setKey(valueName, reinterpret_cast<unsigned char const*>(units.c_str()),
                  static_cast<unsigned long>(length), REG_EXPAND_SZ);
}

bool RegKeys::queryKey(std::string const& valueName, unsigned char* buffer, unsigned long* length,
                       unsigned long* type) const {
    Name const name(valueName);
    if (!name.isValid() || !buffer || !length || !type || *length == 0 || !fitsDword(*length))
        return false;
    Key key(key_);
    if (!key.open(path(""), KEY_READ))
        return false;
    auto valueLength = static_cast<DWORD>(*length);
    DWORD valueType = 0;
    LSTATUS const status = RegQueryValueExW(key.get(), name.get(), nullptr, &valueType, buffer, &valueLength);
    if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA)
        return false;
    *length = valueLength;
    *type = valueType;
    return status == ERROR_SUCCESS;
}

std::string RegKeys::queryKey(std::string const& valueName) const {
    unsigned char buffer[1024];
    unsigned long length = sizeof buffer;
    unsigned long type = 0;
    if (!queryKey(valueName, buffer, &length, &type) || length < 2 * sizeof(Utf16Unit))
        return {};
    Utf16String text(length / sizeof(Utf16Unit) - 1, 0); // without the null character at the end
    std::memcpy(text.data(), buffer, text.size() * sizeof(Utf16Unit));
    return toUtf8(text);
}

bool RegKeys::deleteValue(std::string const& valueName) const {
    Name const name(valueName);
    return name.isValid() && RegDeleteValueW(key_, name.get()) == ERROR_SUCCESS;
}

std::string RegKeys::getSubValue(int index) const {
    return listedName(nameBufferSize, [this, index](WCHAR* buffer, DWORD* length) {
        return RegEnumValueW(key_, static_cast<DWORD>(index), buffer, length, nullptr, nullptr, nullptr,
                             nullptr);
    });
}

int RegKeys::stringToMultiSZ(unsigned char* buffer, std::uint64_t size, std::string const& text) {
    if (!buffer || text.empty())
        return 0;
    Utf16String units = toUtf16(text);
    units.append(2, 0);
    std::size_t const length = units.size() * sizeof(Utf16Unit);
    if (length > size || length > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return 0;
    std::copy_n(reinterpret_cast<unsigned char const*>(units.data()), length, buffer);
    return static_cast<int>(length);
}

} // namespace Zorvan::AttributeContainer
