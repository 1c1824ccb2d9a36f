// SPDX-License-Identifier: MIT
#pragma once

// The registry by the names of the system's functions: on Windows these are the system's. Elsewhere they work
// on a registry of this process, which behaves like the system's where one can observe it: names compare
// without regard to case, handles are checked, a key that was deleted while it was open answers
// ERROR_KEY_DELETED for good. Access masks limit the reading and writing of values and the listing of
// subkeys; making and deleting subkeys does not look at the mask of the handle. Names of keys cannot hold
// line ends there, because the text that keeps them in a file cannot.

#include <AttributeContainer/RegKeys.h>

#include <cstdint>

#if defined(_WIN32)

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#else

#include "platform/Utf16.h"

namespace Zorvan::AttributeContainer {

using BYTE = unsigned char;
using BOOL = int;
using DWORD = std::uint32_t;
using LSTATUS = std::int32_t;
using REGSAM = DWORD;
using WCHAR = Utf16Unit;

/// Times of change are not kept; these parameters are ignored.
struct FILETIME;
/// Everybody may do everything here; who may is not kept.
struct ACL;
struct SECURITY_DESCRIPTOR {
    DWORD revision;
    bool hasDacl;
    ACL* dacl;
};
struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    SECURITY_DESCRIPTOR* lpSecurityDescriptor;
    BOOL bInheritHandle;
};

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;

constexpr LSTATUS ERROR_SUCCESS = 0;
constexpr LSTATUS ERROR_FILE_NOT_FOUND = 2;
constexpr LSTATUS ERROR_ACCESS_DENIED = 5;
constexpr LSTATUS ERROR_INVALID_HANDLE = 6;
constexpr LSTATUS ERROR_INVALID_PARAMETER = 87;
constexpr LSTATUS ERROR_BAD_PATHNAME = 161;
constexpr LSTATUS ERROR_MORE_DATA = 234;
constexpr LSTATUS ERROR_NO_MORE_ITEMS = 259;
constexpr LSTATUS ERROR_NOACCESS = 998;
constexpr LSTATUS ERROR_KEY_DELETED = 1018;

constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_EXPAND_SZ = 2;
constexpr DWORD REG_BINARY = 3;
constexpr DWORD REG_DWORD = 4;
constexpr DWORD REG_MULTI_SZ = 7;

constexpr REGSAM KEY_QUERY_VALUE = 0x1;
constexpr REGSAM KEY_SET_VALUE = 0x2;
constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x8;
constexpr REGSAM KEY_READ = 0x20019;
constexpr REGSAM KEY_WRITE = 0x20006;
constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;
constexpr REGSAM WRITE_DAC = 0x40000;
constexpr REGSAM MAXIMUM_ALLOWED = 0x2000000;

constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
constexpr DWORD SECURITY_DESCRIPTOR_REVISION = 1;
constexpr DWORD DACL_SECURITY_INFORMATION = 4;

LSTATUS RegOpenKeyExW(HKEY key, WCHAR const* path, DWORD options, REGSAM access, HKEY* result);
LSTATUS RegCloseKey(HKEY key);
LSTATUS RegCreateKeyW(HKEY key, WCHAR const* path, HKEY* result);
LSTATUS RegCreateKeyExW(HKEY key, WCHAR const* path, DWORD reserved, WCHAR* className, DWORD options,
                        REGSAM access, SECURITY_ATTRIBUTES const* security, HKEY* result, DWORD* disposition);
LSTATUS RegDeleteKeyW(HKEY key, WCHAR const* path);
LSTATUS RegDeleteTreeW(HKEY key, WCHAR const* path);
LSTATUS RegCopyTreeW(HKEY source, WCHAR const* path, HKEY target);
LSTATUS RegSetKeySecurity(HKEY key, DWORD information, SECURITY_DESCRIPTOR* descriptor);

LSTATUS RegSetValueExW(HKEY key, WCHAR const* name, DWORD reserved, DWORD type, BYTE const* data, DWORD size);
LSTATUS RegQueryValueExW(HKEY key, WCHAR const* name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size);
LSTATUS RegDeleteValueW(HKEY key, WCHAR const* name);

LSTATUS RegQueryInfoKeyA(HKEY key, char* className, DWORD* classLength, DWORD* reserved, DWORD* subKeys,
                         DWORD* longestSubKey, DWORD* longestClass, DWORD* values, DWORD* longestValueName,
                         DWORD* longestValue, DWORD* securitySize, FILETIME* lastWrite);
LSTATUS RegEnumKeyExW(HKEY key, DWORD index, WCHAR* name, DWORD* length, DWORD* reserved, WCHAR* className,
                      DWORD* classLength, FILETIME* lastWrite);
LSTATUS RegEnumValueW(HKEY key, DWORD index, WCHAR* name, DWORD* length, DWORD* reserved, DWORD* type,
                      BYTE* data, DWORD* size);

BOOL InitializeSecurityDescriptor(SECURITY_DESCRIPTOR* descriptor, DWORD revision);
BOOL SetSecurityDescriptorDacl(SECURITY_DESCRIPTOR* descriptor, BOOL present, ACL* dacl, BOOL defaulted);

} // namespace Zorvan::AttributeContainer

#endif

namespace Zorvan::AttributeContainer {

/// The predefined keys: HKEY_CLASSES_ROOT (0), HKEY_CURRENT_USER (1), HKEY_LOCAL_MACHINE (2), HKEY_USERS (3),
/// HKEY_CURRENT_CONFIG (5).
inline HKEY predefinedHandle(std::uint32_t number) noexcept {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): handles are numbers that are only compared.
    return reinterpret_cast<HKEY>(~std::uintptr_t{0x7FFFFFFF} + number);
}

} // namespace Zorvan::AttributeContainer
