// SPDX-License-Identifier: MIT
#include "registry/FileContent.h"
#include "registry/RegistryFixture.h"

#include <AttributeContainer/RegistryFile.h>

#include <filesystem>
#include <process.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

using RegistryFileTest = ScratchKey;

TEST_F(RegistryFileTest, SystemsRegistryIsNotKeptInFiles) {
    EXPECT_FALSE(RegistryFile::isSupported());
    RegistryFile file;
    auto const error = file.attach("registry.reg");
    ASSERT_TRUE(error);
    EXPECT_EQ(NotSupported, error->getCode());
    EXPECT_FALSE(std::filesystem::exists("registry.reg"));
    EXPECT_TRUE(file.flush());
    EXPECT_TRUE(file.detach());
}

// The file is the one that tests elsewhere compare what is written with.
TEST_F(RegistryFileTest, SystemsEditorReadsWhatIsWrittenElsewhere) {
    auto const file = std::filesystem::absolute(KX_TEST_DATA_DIR "/registry/written.reg").make_preferred();
    std::wstring const quoted = L"\"" + file.wstring() + L"\"";
    wchar_t directory[MAX_PATH];
    GetWindowsDirectoryW(directory, MAX_PATH);
    std::wstring const editor = std::wstring(directory) + L"\\regedit.exe";
    ASSERT_EQ(0, _wspawnl(_P_WAIT, editor.c_str(), L"regedit.exe", L"/S", quoted.c_str(), nullptr));
    expectFileContent(path, false);
}

} // namespace
