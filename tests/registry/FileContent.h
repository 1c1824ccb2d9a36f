// SPDX-License-Identifier: MIT
#pragma once

#include "DataFile.h"
#include "platform/Registry.h"
#include "platform/Utf16.h"

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
    static std::vector<FileValue> const content = [] {
        std::vector<FileValue> values;
        for (auto const& row : dataRows("registry/content.txt")) {
            std::string data = row[4];
            if (row[3] == "text") {
                std::string bytes;
                for (Utf16Unit const unit : toUtf16(data))
                    bytes.append({static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)});
                data = bytes;
            }
            values.push_back({row[0], row[1], row[2].empty() ? -1 : static_cast<int>(row.number(2)), data,
                              row[5] == "odd"});
        }
        return values;
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
