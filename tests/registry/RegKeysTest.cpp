// SPDX-License-Identifier: MIT
#include "platform/Utf16.h"
#include "registry/RegistryFixture.h"

#include <AttributeContainer/RegKeys.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;
using namespace std::string_literals;

namespace {

using Names = std::vector<std::string>;

struct RegKeysTest : ScratchKey {
    static bool setRaw(RegKeys const& keys, char const* name, std::string_view data, unsigned long type = 3) {
        return keys.setKey(name, reinterpret_cast<unsigned char const*>(data.data()), data.size(), type);
    }
};

TEST_F(RegKeysTest, TextsComeBackAsTheyWereWritten) {
    auto const keys = place();
    for (std::string const& text : {"text"s, ""s, "\u00e4\u20ac\U0001F600"s, "a\0b"s, "%PATH%"s,
                                    "line\r\nline"s, std::string(511, 'x')}) {
        EXPECT_TRUE(keys->setKey("name", text));
        EXPECT_EQ(text, keys->queryKey("NAME")) << text;
    }
    unsigned char buffer[8];
    unsigned long length = sizeof buffer, type = 0;
    EXPECT_TRUE(keys->setKey("\u00e4", "ab"));
    EXPECT_TRUE(keys->queryKey("\u00c4", buffer, &length, &type));
    EXPECT_EQ(6U, length) << "the null character at the end counts";
    EXPECT_EQ(2U, type) << "an expandable string";
    EXPECT_EQ(0, std::memcmp(buffer, "a\0b\0\0\0", 6));
    EXPECT_TRUE(keys->setKey("name", std::string(512, 'x')));
    EXPECT_EQ("", keys->queryKey("name")) << "longer than what is read";
    EXPECT_EQ("", keys->queryKey("missing"));
    EXPECT_EQ("", RegKeys("", nullptr, false).queryKey("name"));
    for (std::string_view const data : {"", "x", "x\0", "x\0\0"}) {
        EXPECT_TRUE(setRaw(*keys, "short", data));
        EXPECT_EQ("", keys->queryKey("short"));
    }
}

TEST_F(RegKeysTest, TextsThatAreNotUtf8LoseOnlyWhatIsWrong) {
    struct Row {
        std::string text, stored;
    };
    std::string const no = "\uFFFD";
    for (Row const& row : {Row{"a\x80z", "a" + no + "z"},
                           {"a\xC3", "a" + no},
                           {"\xE2\x82z", no + "z"},
                           {"\xC0\xAF", no + no},
                           {"\xED\xA0\x80", no + no + no},
                           {"\xF4\x90\x80\x80", no + no + no + no},
                           {"\xF0\x9F\x98", no},
                           {"\xE0\x80\x80", no + no + no},
                           {"\xF0\x9F\x98\x80\xFF\u00e4", "\U0001F600" + no + "\u00e4"}}) {
        EXPECT_TRUE(place()->setKey("t", row.text));
        EXPECT_EQ(row.stored, place()->queryKey("t"));
        EXPECT_EQ(row.stored, toUtf8(toUtf16(row.stored)));
    }
    // Surrogates alone, in the wrong order, and a pair.
    EXPECT_TRUE(
        setRaw(*place(), "t", std::string_view("\x3D\xD8\x41\0\0\xDE\x3D\xD8\x3D\xD8\0\xDE\0\0", 14)));
    EXPECT_EQ(no + "A" + no + no + "\U0001F600", place()->queryKey("t"));
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

TEST_F(RegKeysTest, NamesWithNullCharactersLeadNowhere) {
    auto const keys = place();
    EXPECT_TRUE(keys->setKey("a", "kept"));
    EXPECT_TRUE(keys->createKey("a", false));
    auto const held = keys->createFrom(true);
    EXPECT_FALSE(keys->setKey("a\0b"s, "x"));
    EXPECT_EQ("", keys->queryKey("a\0b"s));
    EXPECT_FALSE(keys->checkKey("a\0b"s, false));
    EXPECT_FALSE(keys->createKey("new\0b"s, false));
    EXPECT_FALSE(keys->setKey("a\0b"s, nullptr, 0, 0));
    EXPECT_FALSE(held->deleteKey("a\0b"s));
    EXPECT_FALSE(held->deleteKey("\0"s));
    EXPECT_FALSE(held->deleteValue("a\0b"s));
    EXPECT_FALSE(held->deleteTree("a\0b"s));
    EXPECT_FALSE(held->copyTree("a\0b"s, "c"));
    EXPECT_EQ("kept", keys->queryKey("a"));
    EXPECT_EQ(Names{"a"}, keys->enumerateKeys());
}

TEST_F(RegKeysTest, OperationsWorkOnThePrefixOrOnTheHeldKey) {
    auto const keys = place();
    EXPECT_FALSE(keys->checkKey("a\\b", false));
    EXPECT_TRUE(keys->createKey("a\\b", false));
    EXPECT_TRUE(keys->createKey("every\\one", true));
    EXPECT_TRUE(keys->createKey("", false));
    EXPECT_TRUE(keys->checkKey("A\\\\B\\", true)) << "empty components are dropped";
    EXPECT_TRUE(keys->checkKey("\\a", false));
    EXPECT_TRUE(keys->checkKey("", false));
    EXPECT_TRUE(keys->setAccessToEveryOne("every"));
    EXPECT_FALSE(keys->setAccessToEveryOne("none"));
    EXPECT_EQ((Names{"a", "every"}), keys->enumerateKeys());
    EXPECT_FALSE(keys->deleteKey("every")) << "not below the held key";

    auto const held = keys->createFrom(true);
    ASSERT_TRUE(held);
    EXPECT_EQ("", held->getPrefix());
    EXPECT_EQ((Names{"a", "every"}), held->enumerateKeys());
    EXPECT_EQ("every", held->getSubKey(1));
    EXPECT_EQ("", held->getSubKey(2));
    EXPECT_EQ("", held->getSubKey(-1));
    EXPECT_TRUE(held->setKey("v\u00e4", "1"));
    EXPECT_EQ("v\u00e4", held->getSubValue(0));
    EXPECT_EQ("", held->getSubValue(1));
    held->setPrefix("a");
    EXPECT_EQ(Names{"b"}, held->enumerateKeys());
    EXPECT_EQ("a", held->getSubKey(0)) << "whatever the prefix is";
    EXPECT_TRUE(held->deleteValue("v\u00e4"));
    EXPECT_FALSE(held->deleteValue("v\u00e4"));
    EXPECT_FALSE(held->deleteKey("a")) << "it has a subkey";
    EXPECT_TRUE(held->setKey("b", nullptr, 0, 0)) << "deletes the subkey of the prefix";
    EXPECT_TRUE(held->deleteKey("a"));
    EXPECT_FALSE(held->createFrom(false)) << "the key of the prefix is gone";
    EXPECT_EQ(Names{}, held->enumerateKeys());
    EXPECT_FALSE(held->setKey("v", "1"));

    auto const reading = keys->createFrom(false);
    EXPECT_FALSE(reading->setKey("v", "1"));
    EXPECT_TRUE(RegKeys().createFrom(false)) << "the local machine";
}

TEST_F(RegKeysTest, EmptyNamesDeleteNothingAndCopyNothing) {
    auto const keys = place("held");
    EXPECT_TRUE(keys->setKey("v", "1"));
    auto const held = keys->createFrom(true);
    EXPECT_FALSE(held->deleteKey(""));
    EXPECT_FALSE(held->deleteTree(""));
    EXPECT_FALSE(held->deleteTree("\\"));
    EXPECT_FALSE(held->deleteKey("\\"));
    EXPECT_FALSE(held->setKey("", nullptr, 0, 0));
    EXPECT_FALSE(keys->setKey("", nullptr, 0, 0));
    EXPECT_FALSE(keys->copyTree("", "c"));
    EXPECT_FALSE(keys->copyTree("c", ""));
    EXPECT_FALSE(held->copyTree("\\", "c"));
    EXPECT_EQ("1", held->queryKey("v"));
    EXPECT_TRUE(held->setKey("", "default"));
    EXPECT_EQ("default", held->queryKey(""));
    EXPECT_TRUE(keys->deleteTree("")) << "the key of the prefix";
    EXPECT_EQ("", held->queryKey("v"));
}

TEST_F(RegKeysTest, TreesAreCopiedAndDeleted) {
    auto const keys = place();
    EXPECT_TRUE(place("from\\deep")->setKey("v", "1"));
    EXPECT_FALSE(keys->copyTree("none", "to"));
    EXPECT_TRUE(keys->copyTree("from", "to\\copy"));
    EXPECT_EQ("1", place("to\\copy\\deep")->queryKey("v"));
    EXPECT_FALSE(keys->copyTree("from", "FROM\\inner")) << "into itself";
    EXPECT_EQ(Names{"deep"}, place("from")->enumerateKeys());
    EXPECT_TRUE(keys->deleteTree("from"));
    EXPECT_FALSE(keys->deleteTree("from"));
    EXPECT_EQ(Names{"to"}, keys->enumerateKeys());
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
