// SPDX-License-Identifier: MIT
#include "platform/Registry.h"
#include "platform/RegistryNames.h"
#include "registry/RegistryFixture.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

// What the functions of the registry do, the system's and ours: the same tables run on both.

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// One call. "create", "open" and "copy" work from one handle to another; null stands for no name.
struct Step {
    LSTATUS expected;
    char const* call;
    char const* handle;
    char const* name;
    char const* result = "";
    REGSAM access = KEY_ALL_ACCESS;
};

class Registry : public ScratchKey {
protected:
    Registry() { RegCreateKeyW(currentUser(), toUtf16(path).c_str(), &handles["base"]); }
    ~Registry() override {
        for (auto const& [name, handle] : handles)
            RegCloseKey(handle);
    }

    LSTATUS run(Step const& step) {
        std::string const call = step.call;
        HKEY const key = step.handle == std::string("user") ? currentUser() : handles[step.handle];
        auto const text = toUtf16(step.name ? step.name : "");
        WCHAR const* const name = step.name ? text.c_str() : nullptr;
        BYTE const data[] = {1, 2, 3, 4};
        WCHAR buffer[300];
        DWORD size = 300, count = 0;
        if (call == "create")
            return RegCreateKeyExW(key, name, 0, nullptr, 0, step.access, nullptr, &handles[step.result],
                                   nullptr);
        if (call == "open")
            return RegOpenKeyExW(key, name, 0, step.access, &handles[step.result]);
        if (call == "close")
            return RegCloseKey(key);
        if (call == "delete key")
            return RegDeleteKeyW(key, name);
        if (call == "delete tree")
            return RegDeleteTreeW(key, name);
        if (call == "copy")
            return RegCopyTreeW(key, name, handles[step.result]);
        if (call == "set")
            return RegSetValueExW(key, name, 0, REG_DWORD, data, sizeof data);
        if (call == "query")
            return RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr);
        if (call == "delete value")
            return RegDeleteValueW(key, name);
        if (call == "first key")
            return RegEnumKeyExW(key, 0, buffer, &size, nullptr, nullptr, nullptr, nullptr);
        if (call == "first value")
            return RegEnumValueW(key, 0, buffer, &size, nullptr, nullptr, nullptr, nullptr);
        if (call == "info")
            return RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, nullptr);
        ADD_FAILURE() << "no call " << call;
        return -1;
    }

    void runAll(std::vector<Step> const& steps) {
        for (Step const& step : steps)
            EXPECT_EQ(step.expected, run(step)) << "step " << &step - steps.data() << ": " << step.call << " "
                                                << step.handle << " " << (step.name ? step.name : "(null)");
    }

    std::map<std::string, HKEY> handles;
};

TEST_F(Registry, TakesPathsApartAndChecksHandles) {
    runAll({{0, "create", "base", "p\\\\q\\", "q"},
            {0, "open", "base", "P\\Q\\\\", "again"},
            {0, "open", "base", "", "same"},
            {0, "open", "base", nullptr, "same"},
            {2, "open", "base", "p\\none", "x"},
            {161, "create", "base", "\\x", "x"},
            {161, "open", "base", "\\p", "x"},
            {161, "open", "user", "\\", "x"},
            {161, "delete key", "base", "\\p"},
            {161, "delete tree", "base", "\\p"},
            {0, "close", "again", ""},
            {6, "close", "again", ""},
            {6, "open", "again", "x", "x"},
            {6, "set", "again", "v"},
            {6, "copy", "again", nullptr, "base"},
            {6, "open", "nothing", "p", "x"},
            {0, "close", "user", ""},
            {0, "open", "user", "Software", "x"}});
}

TEST_F(Registry, DeletesKeysThatHaveNoSubkeysAndWholeTrees) {
    runAll({{0, "create", "base", "p\\q", "q"},
            {0, "set", "q", "v"},
            {5, "delete key", "base", "p"},
            {87, "delete key", "base", nullptr},
            {5, "delete key", "base", ""},
            {5, "delete key", "user", ""},
            {2, "delete key", "base", "none"},
            {2, "delete tree", "base", "none"},
            {0, "delete key", "base", "P\\Q"},
            {2, "open", "base", "p\\q", "x"},
            {0, "create", "base", "p\\q\\r", "r"},
            {0, "create", "base", "p\\s", "s"},
            {0, "delete key", "r", ""},
            {0, "delete tree", "base", "p"},
            {2, "open", "base", "p", "x"},
            {1018, "query", "s", "v"}});
}

TEST_F(Registry, DeletedKeyThatIsStillOpenStaysDeleted) {
    runAll({{0, "create", "base", "gone", "gone"},
            {0, "delete key", "base", "gone"},
            {0, "set", "base", "copied"}});
    for (int i = 0; i < 2; ++i) {
        runAll({{1018, "set", "gone", "v"},
                {1018, "query", "gone", "v"},
                {1018, "delete value", "gone", "v"},
                {1018, "create", "gone", "x", "x"},
                {1018, "open", "gone", "", "x"},
                {1018, "open", "gone", "x", "x"},
                {1018, "delete key", "gone", "x"},
                {1018, "delete tree", "gone", "x"},
                {1018, "copy", "gone", nullptr, "base"},
                {1018, "copy", "base", nullptr, "gone"},
                {1018, "first key", "gone", ""},
                {1018, "first value", "gone", ""},
                {1018, "info", "gone", ""},
                {0, "create", "base", "gone", "new"}}); // made again: another key
        runAll({{2, "query", "new", "v"}});
    }
    runAll({{0, "close", "gone", ""}});
}

TEST_F(Registry, LooksAtTheMaskForValuesAndListsOnly) {
    runAll({{0, "create", "base", "p\\q", "all"},
            {0, "set", "all", "v"},
            {0, "open", "base", "p", "read", KEY_READ},
            {0, "open", "base", "p", "write", KEY_WRITE},
            {0, "open", "base", "p", "list", KEY_ENUMERATE_SUB_KEYS},
            {5, "set", "read", "v"},
            {0, "set", "write", "v"},
            {5, "set", "list", "v"},
            {0, "query", "read", "V"},
            {5, "query", "write", "v"},
            {5, "query", "list", "v"},
            {5, "delete value", "read", "v"},
            {0, "first key", "read", ""},
            {5, "first key", "write", ""},
            {0, "first key", "list", ""},
            {0, "first value", "read", ""},
            {5, "first value", "write", ""},
            {0, "info", "read", ""},
            {0, "create", "read", "new\\deep", "x"},
            {0, "open", "read", "new", "x", KEY_WRITE},
            {0, "delete key", "list", "new\\deep"},
            {0, "delete tree", "read", "new"},
            {5, "copy", "write", nullptr, "all"},
            {5, "copy", "all", nullptr, "read"},
            {0, "copy", "read", nullptr, "write"},
            {0, "delete value", "write", "v"},
            {2, "delete value", "write", "v"},
            {0, "open", "base", "p", "most", MAXIMUM_ALLOWED},
            {0, "set", "most", nullptr},
            {0, "query", "most", ""},
            {2, "query", "most", "v"}});
}

TEST_F(Registry, CopiesTreesOverWhatIsThere) {
    runAll({{0, "create", "base", "p\\q\\r", "r"},
            {0, "set", "r", "deep"},
            {0, "open", "base", "p", "p"},
            {0, "set", "p", "top"},
            {0, "create", "base", "t", "t"},
            {0, "set", "t", "old"},
            {0, "copy", "p", nullptr, "t"},
            {0, "query", "t", "old"},
            {0, "query", "t", "top"},
            {0, "open", "t", "Q\\R", "x"},
            {0, "query", "x", "deep"},
            {0, "copy", "base", "p\\q", "t"},
            {0, "open", "t", "r", "x"},
            {0, "query", "x", "deep"},
            {2, "copy", "base", "none", "t"}});
}

TEST_F(Registry, HandsOutValuesAsFarAsThereIsRoom) {
    auto const key = handles["base"];
    BYTE const eight[] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(998, RegSetValueExW(key, toUtf16("v").c_str(), 0, 4, nullptr, 4));
    for (DWORD const size : {8U, 0U, 3U}) {
        ASSERT_EQ(0, RegSetValueExW(key, toUtf16("value").c_str(), 0, 77, eight, size));
        for (DWORD const room : {0U, 2U, 3U, 4U, 8U, 9U}) {
            BYTE buffer[16] = {};
            DWORD type = 0, length = room;
            EXPECT_EQ(room < size ? 234 : 0,
                      RegQueryValueExW(key, toUtf16("VALUE").c_str(), nullptr, &type, buffer, &length));
            EXPECT_EQ(size, length);
            EXPECT_EQ(77U, type);
            EXPECT_EQ(room >= size && size > 0 ? 1 : 0, buffer[0]);
        }
    }
    DWORD type = 9, length = 1;
    BYTE byte = 0;
    EXPECT_EQ(0, RegQueryValueExW(key, toUtf16("value").c_str(), nullptr, &type, nullptr, &length));
    EXPECT_EQ(3U, length);
    EXPECT_EQ(87, RegQueryValueExW(key, toUtf16("value").c_str(), nullptr, &type, &byte, nullptr));
    EXPECT_EQ(2, RegQueryValueExW(key, toUtf16("none").c_str(), nullptr, &type, &byte, &length));
}

TEST_F(Registry, ListsKeysInTheOrderOfTheirCapitals) {
    for (char const* name : {"b", "a2", "aA", "C", "Z", "\u00e4", "b\u00e4", "\U00010428"})
        run({0, "create", "base", name, "x"});
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
    run({0, "set", "base", "val"});
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

TEST_F(Registry, ComparesNamesUnitByUnitInCapitals) {
    struct Row {
        char const *stored, *asked;
        bool same;
    };
    for (Row const& row : {Row{"abc", "ABC", true},
                           {"\u00e4\u00ff\u00e7", "\u00c4\u0178\u00c7", true},
                           {"\u03b1\u0434\u0586", "\u0391\u0414\u0556", true},
                           {"\u1e01\u24d0\uff41", "\u1e00\u24b6\uff21", true},
                           {"i", "\u0131", false},
                           {"\u0131", "I", false},
                           {"\u017f", "S", false},
                           {"\u00df", "SS", false},
                           {"\u01c5", "\u01c4", false},
                           {"\u03c2", "\u03a3", false},
                           {"\u00b5", "\u039c", false},
                           {"\U00010428", "\U00010400", false}}) {
        EXPECT_EQ(row.same, compareRegistryNames(toUtf16(row.stored), toUtf16(row.asked)) == 0) << row.stored;
        EXPECT_EQ(row.same, foldRegistryName(toUtf16(row.stored)) == foldRegistryName(toUtf16(row.asked)));
        runAll({{0, "create", "base", row.stored, "x"},
                {row.same ? 0 : 2, "open", "base", row.asked, "y"},
                {0, "set", "base", row.stored},
                {row.same ? 0 : 2, "query", "base", row.asked},
                {0, "delete value", "base", row.stored},
                {0, "delete key", "base", row.stored}});
    }
}

} // namespace
