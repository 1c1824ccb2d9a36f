// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "containers/ApplicationClasses.h"
#include "platform/Utf16.h"
#include "registry/RegistryFixture.h"

#include <cstring>
#include <string_view>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct RegKeysTest : ScratchKey {
    static bool setRaw(RegKeys const& keys, char const* name, std::string_view data, unsigned long type = 3) {
        return keys.setKey(name, reinterpret_cast<unsigned char const*>(data.data()), data.size(), type);
    }
};

TEST_F(RegKeysTest, OperationsAnswerAsTheirFileSays) {
    std::string section;
    std::map<std::string, std::shared_ptr<RegKeys>> held;
    for (auto const& row : dataRows("registry/keys.txt")) {
        if (std::exchange(section, row.section) != row.section) {
            held.clear();
            remove();
        }
        std::string const name = row[1], first = row[3], second = row[4];
        auto const keys = name.starts_with('.') ? place(name.substr(name.size() > 1 ? 2 : 1)) : held.at(name);
        auto const hold = [&](bool canWrite) {
            return (held[first] = keys->createFrom(canWrite)) != nullptr;
        };
        auto const text = [](std::string const& value) { return '"' + value + '"'; };
        auto const is = [](bool answer) -> std::string { return answer ? "yes" : "no"; };
        std::map<std::string, std::function<std::string()>> const operations{
            {"checkKey", [&] { return is(keys->checkKey(first, false)); }},
            {"checkKey for all", [&] { return is(keys->checkKey(first, true)); }},
            {"copyTree", [&] { return is(keys->copyTree(first, second)); }},
            {"createKey", [&] { return is(keys->createKey(first, false)); }},
            {"createKey for all", [&] { return is(keys->createKey(first, true)); }},
            {"deleteKey", [&] { return is(keys->deleteKey(first)); }},
            {"deleteTree", [&] { return is(keys->deleteTree(first)); }},
            {"deleteValue", [&] { return is(keys->deleteValue(first)); }},
            {"enumerateKeys", [&] { return joined(keys->enumerateKeys()); }},
            {"getPrefix", [&] { return text(keys->getPrefix()); }},
            {"getSubKey", [&] { return text(keys->getSubKey(std::stoi(first))); }},
            {"getSubValue", [&] { return text(keys->getSubValue(std::stoi(first))); }},
            {"hold", [&] { return is(hold(true)); }},
            {"hold for reading", [&] { return is(hold(false)); }},
            {"queryKey", [&] { return text(keys->queryKey(first)); }},
            {"setAccessToEveryOne", [&] { return is(keys->setAccessToEveryOne(first)); }},
            {"setKey", [&] { return is(keys->setKey(first, second)); }},
            {"setPrefix", [&] { return keys->setPrefix(first), is(true); }},
            {"setRaw", [&] { return is(setRaw(*keys, first.c_str(), second)); }},
            {"unsetKey", [&] { return is(keys->setKey(first, nullptr, 0, 0)); }}};
        EXPECT_EQ(row[0], operations.at(row[2])()) << row.place << " (" << section << ")";
    }
}

TEST_F(RegKeysTest, TextsAreExpandableAndHaveALimit) {
    auto const keys = place();
    unsigned char buffer[8];
    unsigned long length = sizeof buffer, type = 0;
    EXPECT_TRUE(keys->setKey("\u00e4", "ab"));
    EXPECT_TRUE(keys->queryKey("\u00c4", buffer, &length, &type));
    EXPECT_EQ(6U, length) << "the null character at the end counts";
    EXPECT_EQ(2U, type) << "an expandable string";
    EXPECT_EQ(0, std::memcmp(buffer, "a\0b\0\0\0", 6));
    for (std::size_t const size : {511U, 512U}) { // Longer ones are not read.
        EXPECT_TRUE(keys->setKey("name", std::string(size, 'x')));
        EXPECT_EQ(std::string(size == 511 ? size : 0, 'x'), keys->queryKey("name"));
    }
    EXPECT_EQ("", RegKeys("", nullptr, false).queryKey("name"));
    EXPECT_TRUE(RegKeys().createFrom(false)) << "the local machine";
}

TEST_F(RegKeysTest, ValuesAreReadIntoTheRoomThatThereIs) {
    auto const keys = place();
    EXPECT_TRUE(setRaw(*keys, "v", "1234"));
    unsigned char buffer[8];
    unsigned long length = 3, type = 0;
    EXPECT_FALSE(keys->queryKey("v", buffer, &length, &type));
    EXPECT_EQ(4U, length);
    EXPECT_TRUE(keys->queryKey("v", buffer, &length, &type));
    EXPECT_EQ(3U, type);
    EXPECT_FALSE(keys->queryKey("v", nullptr, &length, &type));
    EXPECT_FALSE(keys->queryKey("v", buffer, nullptr, &type));
    EXPECT_FALSE(keys->queryKey("v", buffer, &length, nullptr));
    length = 0;
    EXPECT_FALSE(keys->queryKey("v", buffer, &length, &type));
    length = sizeof buffer;
    EXPECT_FALSE(keys->queryKey("none", buffer, &length, &type));
    if constexpr (sizeof(unsigned long) > 4) {
        auto const tooLong = static_cast<unsigned long>(0x100000004ULL);
        EXPECT_FALSE(keys->setKey("long", buffer, tooLong, 3));
        EXPECT_FALSE(keys->setKey("long", buffer, 4, tooLong));
        length = tooLong;
        EXPECT_FALSE(keys->queryKey("v", buffer, &length, &type));
    }
    EXPECT_EQ("", keys->createFrom(false)->queryKey("long"));
}

TEST_F(RegKeysTest, SetPrefixClosesWhatItOwnsOnce) {
    auto const held = place("held")->createFrom(true);
    HKEY key = nullptr;
    ASSERT_EQ(0, RegOpenKeyExW(currentUser(), toUtf16(path).c_str(), 0, KEY_ALL_ACCESS, &key));
    auto const isOpen = [key] { return RegKeys("", key, false).checkKey("", false); };
    {
        RegKeys keys("Inner", key, true);
        EXPECT_EQ(Names({"held", "Inner"}), place()->enumerateKeys()) << "the prefix is created";
        EXPECT_TRUE(keys.setPrefix("INNER", key, false)) << "the same but for its case: nothing changes";
        EXPECT_EQ("Inner", keys.getPrefix());
        EXPECT_TRUE(keys.setPrefix("other", key, true)) << "the held handle stays open";
        EXPECT_TRUE(isOpen());
        keys.setPrefix("not created");
        EXPECT_FALSE(keys.checkKey("", false));
        EXPECT_FALSE(keys.setPrefix("x", nullptr, false));
        EXPECT_FALSE(isOpen());
        EXPECT_EQ("x", keys.getPrefix());
    }
    EXPECT_EQ(Names({"held", "Inner", "other"}), place()->enumerateKeys());
    ASSERT_EQ(0, RegOpenKeyExW(currentUser(), toUtf16(path).c_str(), 0, KEY_WRITE, &key));
    EXPECT_EQ(Names({"held", "Inner", "other"}), RegKeys("", key, true).enumerateKeys())
        << "the handle needs no right to list";
}

TEST_F(RegKeysTest, PredefinedKeysHaveNames) {
    for (char const* name : {"HKEY_CURRENT_USER", "hkcu", "HKCR", "HKLM", "HKU", "HKCC"})
        EXPECT_TRUE(RegKeys("", RegKeys::predefinedKey(name), false).checkKey("", false)) << name;
    for (char const* name : {"", "HKEY", "HKCUX", "Software"})
        EXPECT_EQ(nullptr, RegKeys::predefinedKey(name));
}

TEST(RegKeys, StringToMultiSzNeedsItsExactRoom) {
    unsigned char buffer[16];
    std::string const text = "a\U0001F600"; // 3 units
    std::memset(buffer, 0x55, sizeof buffer);
    EXPECT_EQ(0, RegKeys::stringToMultiSZ(buffer, 9, text));
    EXPECT_EQ(0x55, buffer[0]);
    EXPECT_EQ(10, RegKeys::stringToMultiSZ(buffer, 10, text));
    EXPECT_EQ(0, std::memcmp(buffer, "a\0\x3D\xD8\0\xDE\0\0\0\0\x55", 11));
    EXPECT_EQ(0, RegKeys::stringToMultiSZ(nullptr, 10, text));
    EXPECT_EQ(0, RegKeys::stringToMultiSZ(buffer, 0, text));
    EXPECT_EQ(0, RegKeys::stringToMultiSZ(buffer, 10, ""));
}

} // namespace
