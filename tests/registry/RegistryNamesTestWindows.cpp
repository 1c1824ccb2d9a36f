// SPDX-License-Identifier: MIT
#include "platform/RegistryNames.h"

#include <gtest/gtest.h>

#include <windows.h>

using namespace Zorvan::AttributeContainer;

namespace {

TEST(RegistryNames, CapitalsAreThoseOfTheSystem) {
    auto const upperCase = reinterpret_cast<WCHAR (*)(WCHAR)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll"), "RtlUpcaseUnicodeChar")));
    ASSERT_TRUE(upperCase);
    for (unsigned int unit = 1; unit < 0x10000; ++unit) {
        auto const letter = static_cast<WCHAR>(unit);
        EXPECT_EQ(Utf16String(1, upperCase(letter)), foldRegistryName(Utf16String(1, letter))) << unit;
    }
}

} // namespace
