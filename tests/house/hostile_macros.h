// SPDX-License-Identifier: MIT
#pragma once

// To be included before a public header, behind <windows.h> where there is one: macros with names that others
// use, as that header defines them. Some of its macros are undone by standard headers or missing in some
// editions.

// Those that the public headers include; their own code does not expect the macros.
#include <any>
#include <array>
#include <atomic>
#include <bit>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <typeindex>
#include <typeinfo>
#include <unordered_map>
#include <utility>
#include <vector>

#undef min
#undef max
#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))

#undef near
#undef far
#undef small
#undef hyper
#undef interface
#undef pascal
#undef cdecl
#define near
#define far
#define small char
#define hyper __int64
#define interface struct
#define pascal __stdcall
#define cdecl

#undef IN
#undef OUT
#undef OPTIONAL
#undef CONST
#undef VOID
#undef TRUE
#undef FALSE
#undef STRICT
#undef THIS
#undef PURE
#undef ERROR
#undef NO_ERROR
#undef DELETE
#undef IGNORE
#undef INFINITE
#undef ABSOLUTE
#undef RELATIVE
#undef OPAQUE
#undef TRANSPARENT
#undef DIFFERENCE
#define IN
#define OUT
#define OPTIONAL
#define CONST const
#define VOID void
#define TRUE 1
#define FALSE 0
#define STRICT 1
#define THIS void
#define PURE = 0
#define ERROR 0
#define NO_ERROR 0L
#define DELETE (0x00010000L)
#define IGNORE 0
#define INFINITE 0xffffffff
#define ABSOLUTE 1
#define RELATIVE 2
#define OPAQUE 2
#define TRANSPARENT 1
#define DIFFERENCE 11

#undef CreateDirectory
#undef DeleteFile
#undef FindText
#undef GetClassName
#undef GetMessage
#undef GetObject
#undef GetProp
#undef LoadString
#undef ReplaceText
#undef SendMessage
#undef Yield
#define CreateDirectory CreateDirectoryW
#define DeleteFile DeleteFileW
#define FindText FindTextW
#define GetClassName GetClassNameW
#define GetMessage GetMessageW
#define GetObject GetObjectW
#define GetProp GetPropW
#define LoadString LoadStringW
#define ReplaceText ReplaceTextW
#define SendMessage SendMessageW
#define Yield()
