// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Registry.h"
#include "platform/Utf16.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Zorvan::AttributeContainer::Testing {

/// A value in a key below the scratch key; without a type: a key alone.
struct FileValue {
    std::string key, name;
    int type;
    std::string data;
    bool hasOddLength = false; ///< for its type; other editors repair it
};

/// Every kind of key and value, as the files in tests/data/registry hold them.
inline std::vector<FileValue> const& fileContent() {
    using namespace std::string_literals;
    static std::vector<FileValue> const content = [] {
        auto const units = [](std::string const& text) {
            std::string bytes;
            for (Utf16Unit const unit : toUtf16(text))
                bytes.append({static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)});
            return bytes;
        };
        return std::vector<FileValue>{
            {"", "", 1, units("default\0"s)},
            {"", "back\\slash \"quote\" = [x]", 1, units("C:\\a \"b\" ; c\0"s)},
            {"", "bytes", 3, "\x01\xFF\x00"s},
            {"", "expand", 2, units("%PATH% \u00e4\u20ac\U0001F600 and so on until the line is full\0"s)},
            {"", "lines", 1, units("a\r\nb\0"s)},
            {"", "no end", 1, units("ab"), true},
            {"", "none", 0, ""},
            {"", "number", 4, "\x0A\x00\x00\xF0"s},
            {"", "short number", 4, "\x01\x02", true},
            {"", "texts", 7, units("a\0b\0\0"s)},
            {"", "two\nlines", 2, units("text\0"s)},
            {"", "wide", 11, "12345678"},
            {"empty", "", -1, ""},
            {"sub [1]\\\u00e4\U0001F600", "\u00e4\U0001F600", 1, units("\U0001F600\0"s)}};
    }();
    return content;
}

inline void storeFileContent(std::string const& base) {
    for (FileValue const& value : fileContent()) {
        HKEY key = nullptr;
        ASSERT_EQ(0, RegCreateKeyW(predefinedHandle(1), toUtf16(base + "\\" + value.key).c_str(), &key));
        if (value.type >= 0) {
            EXPECT_EQ(0, RegSetValueExW(key, toUtf16(value.name).c_str(), 0, value.type,
                                        reinterpret_cast<BYTE const*>(value.data.data()), value.data.size()));
        }
        RegCloseKey(key);
    }
}

inline void expectFileContent(std::string const& base, bool withOddLengths = true) {
    for (FileValue const& value : fileContent()) {
        if (value.hasOddLength && !withOddLengths)
            continue;
        HKEY key = nullptr;
        EXPECT_EQ(0, RegOpenKeyExW(predefinedHandle(1), toUtf16(base + "\\" + value.key).c_str(), 0, KEY_READ,
                                   &key))
            << value.key;
        BYTE buffer[256] = {};
        DWORD size = sizeof buffer, type = 99;
        if (value.type >= 0) {
            EXPECT_EQ(0, RegQueryValueExW(key, toUtf16(value.name).c_str(), nullptr, &type, buffer, &size))
                << value.name;
            EXPECT_EQ(value.type, static_cast<int>(type)) << value.name;
            EXPECT_EQ(value.data, std::string(reinterpret_cast<char*>(buffer), size)) << value.name;
        }
        RegCloseKey(key);
    }
}

} // namespace Zorvan::AttributeContainer::Testing
