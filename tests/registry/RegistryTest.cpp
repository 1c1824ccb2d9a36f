// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "platform/RegistryNames.h"
#include "registry/RegistryFixture.h"

#include <algorithm>
#include <functional>

// What the functions of the registry do, the system's and ours: the same file runs on both.

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

class Registry : public ScratchKey {
protected:
    Registry() { begin(); }
    ~Registry() override { end(); }

    void begin() {
        remove();
        RegCreateKeyW(currentUser(), toUtf16(path).c_str(), &handles["base"]);
    }
    void end() {
        for (auto const& [name, handle] : handles)
            RegCloseKey(handle);
        handles.clear();
    }

    /// A call with its columns from the second one.
    LSTATUS run(std::string const& call, std::string const& handle, std::string const& named,
                std::string const& result = "", std::string const& access = "") {
        static std::map<std::string, REGSAM> const masks{{"reading", KEY_READ},
                                                         {"writing", KEY_WRITE},
                                                         {"listing", KEY_ENUMERATE_SUB_KEYS},
                                                         {"most", MAXIMUM_ALLOWED},
                                                         {"", KEY_ALL_ACCESS}};
        HKEY const key = handle == "user" ? currentUser() : handles[handle];
        auto const text = toUtf16(named);
        WCHAR const* const name = named == "(null)" ? nullptr : text.c_str();
        BYTE const data[] = {1, 2, 3, 4};
        WCHAR buffer[300];
        DWORD size = 300, count = 0;
        REGSAM const mask = masks.at(access);
        std::map<std::string, std::function<LSTATUS()>> const calls{
            {"create",
             [&] {
                 return RegCreateKeyExW(key, name, 0, nullptr, 0, mask, nullptr, &handles[result], nullptr);
             }},
            {"open", [&] { return RegOpenKeyExW(key, name, 0, mask, &handles[result]); }},
            {"close", [&] { return RegCloseKey(key); }},
            {"delete key", [&] { return RegDeleteKeyW(key, name); }},
            {"delete tree", [&] { return RegDeleteTreeW(key, name); }},
            {"copy", [&] { return RegCopyTreeW(key, name, handles[result]); }},
            {"set", [&] { return RegSetValueExW(key, name, 0, REG_DWORD, data, sizeof data); }},
            {"query", [&] { return RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr); }},
            {"delete value", [&] { return RegDeleteValueW(key, name); }},
            {"first key",
             [&] { return RegEnumKeyExW(key, 0, buffer, &size, nullptr, nullptr, nullptr, nullptr); }},
            {"first value",
             [&] { return RegEnumValueW(key, 0, buffer, &size, nullptr, nullptr, nullptr, nullptr); }},
            {"info", [&] {
                 return RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                                         nullptr, nullptr, nullptr, nullptr);
             }}};
        return calls.at(call)();
    }

    std::map<std::string, HKEY> handles;
};

TEST_F(Registry, CallsAnswerAsTheirFileSays) {
    std::string section;
    for (auto const& row : dataRows("registry/calls.txt")) {
        if (std::exchange(section, row.section) != row.section) {
            end();
            begin();
        }
        EXPECT_EQ(row[0], std::to_string(run(row[1], row[2], row[3], row[4], row[5])))
            << row.place << " (" << section << ")";
    }
}

TEST_F(Registry, ListsKeysInTheOrderOfTheirCapitals) {
    for (char const* name : {"b", "a2", "aA", "C", "Z", "\u00e4", "b\u00e4", "\U00010428"})
        run("create", "base", name, "x");
    EXPECT_EQ((std::vector<std::string>{"a2", "aA", "b", "b\u00e4", "C", "Z", "\u00e4", "\U00010428"}),
              place()->enumerateKeys());
    auto const key = handles["base"];
    WCHAR name[16];
    for (auto const& [index, room, expected] :
         {std::tuple(0, 2, 234), {0, 3, 0}, {0, 0, 234}, {8, 16, 259}}) {
        DWORD length = room;
        EXPECT_EQ(expected, RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr));
        EXPECT_EQ(expected == 0 ? 2 : room, static_cast<int>(length));
    }
    run("set", "base", "val");
    for (auto const& [index, room, expected] : {std::tuple(0, 3, 234), {0, 4, 0}, {1, 16, 259}}) {
        DWORD length = room;
        EXPECT_EQ(expected, RegEnumValueW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr));
        EXPECT_EQ(expected == 0 ? 3 : room, static_cast<int>(length));
    }
    DWORD keys = 0, longest = 0;
    EXPECT_EQ(0, RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &keys, &longest, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr));
    EXPECT_EQ(8U, keys);
    EXPECT_EQ(2U, longest);
}

TEST_F(Registry, ListsAnyIndexAfterAnyChange) {
    auto const held = place()->createFrom(true);
    std::vector<std::string> names;
    auto const check = [&](int step) {
        for (std::size_t const index : {names.size() - 1, std::size_t{0}, step * 5 % names.size()})
            EXPECT_EQ(names[index], held->getSubKey(static_cast<int>(index))) << step;
        EXPECT_EQ("", held->getSubKey(static_cast<int>(names.size())));
    };
    for (int i = 0; i < 20; ++i) {
        names.push_back(std::to_string(10 + i * 17 % 20));
        EXPECT_TRUE(held->createKey(names.back(), false));
        std::sort(names.begin(), names.end());
        check(i);
    }
    for (int i = 0; names.size() > 1; ++i) {
        auto const gone = names.begin() + static_cast<std::ptrdiff_t>(i * 7 % names.size());
        EXPECT_TRUE(held->deleteKey(*gone));
        names.erase(gone);
        check(i);
    }
}

TEST_F(Registry, ComparesNamesUnitByUnitInCapitals) {
    for (auto const& row : dataRows("registry/names.txt")) {
        std::string const stored = row[0], asked = row[1], found = row[2] == "same" ? "0" : "2";
        SCOPED_TRACE(row.place);
        EXPECT_EQ(found == "0", compareRegistryNames(toUtf16(stored), toUtf16(asked)) == 0);
        EXPECT_EQ(found == "0", foldRegistryName(toUtf16(stored)) == foldRegistryName(toUtf16(asked)));
        std::string answers;
        for (auto const& [call, name] : {std::pair("create", stored),
                                         {"open", asked},
                                         {"set", stored},
                                         {"query", asked},
                                         {"delete value", stored},
                                         {"delete key", stored}})
            answers += std::to_string(run(call, "base", name, "x"));
        EXPECT_EQ("0" + found + "0" + found + "00", answers);
    }
}

} // namespace
