// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "ScratchFolder.h"
#include "registry/FileContent.h"
#include "registry/RegistryFixture.h"

#include <AttributeContainer/RegistryFile.h>

#include <optional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;
namespace fs = std::filesystem;

namespace {

/// The bytes of a registry text with these lines behind its first.
std::string textOf(std::string const& lines) {
    std::string bytes = "\xFF\xFE";
    for (char const c : "Windows Registry Editor Version 5.00\n" + lines)
        bytes.append({c, 0});
    return bytes;
}

class RegistryFileTest : public ScratchKey {
protected:
    RegistryFileTest() {
        RegKeys("", currentUser(), false).deleteKey("Software"); // of earlier tests
    }

    static std::string info(Result const& error, char const* name) {
        auto const* const found = error ? error->findInfo(name) : nullptr;
        return found ? *found : "none";
    }
    /// Loads the file and gives it free.
    Result load() {
        RegistryFile registry;
        auto error = registry.attach(file.string());
        EXPECT_EQ(error == nullptr, registry.detach() == nullptr);
        EXPECT_EQ("", RegKeys("", currentUser(), false).getSubKey(0));
        EXPECT_FALSE(fs::exists(file.string() + ".lock"));
        return error;
    }

    fs::path const data = fs::path(KX_TEST_DATA_DIR) / "registry";
    ScratchFolder const folder;
    fs::path const &directory = folder.path, file = directory / "r.reg";
};

TEST_F(RegistryFileTest, WritesWhatRegistryEditorsRead) {
    RegistryFile registry;
    ASSERT_FALSE(registry.attach(file.string()));
    EXPECT_FALSE(registry.flush());
    EXPECT_FALSE(fs::exists(file)) << "nothing has changed";
    storeFileContent(path);
    EXPECT_FALSE(registry.flush());
    EXPECT_EQ(contentOf(data / "written.reg"), contentOf(file));
    storeFileContent(path);
    fs::remove(file);
    EXPECT_FALSE(registry.detach());
    EXPECT_FALSE(fs::exists(file)) << "the same values again are no change";
}

TEST_F(RegistryFileTest, ReadsWhatWasWrittenAndWhatAnotherEditorExports) {
    for (char const* name : {"written.reg", "exported.reg"}) {
        fs::copy_file(data / name, file, fs::copy_options::overwrite_existing);
        RegistryFile registry;
        ASSERT_FALSE(registry.attach(file.string())) << name;
        expectFileContent(path, name == std::string("written.reg"));
        EXPECT_FALSE(registry.detach());
        EXPECT_EQ(contentOf(data / name), contentOf(file));
        EXPECT_FALSE(RegKeys("", currentUser(), false).checkKey(path, false))
            << "the registry is empty again";
    }
}

TEST_F(RegistryFileTest, DamagedFileIsRefusedWithItsLineAndLeftAsItIs) {
    for (auto const& row : dataRows("registry/damaged.txt")) {
        put(file, textOf(row[0]));
        auto const error = load();
        ASSERT_TRUE(error) << row.place;
        EXPECT_EQ(UnknownKeyword, error->getCode());
        EXPECT_EQ(row[1], info(error, "Line")) << row.place;
        EXPECT_EQ(row[2], info(error, "Description")) << row.place;
        EXPECT_EQ(file.string(), info(error, "Path"));
        EXPECT_EQ(textOf(row[0]), contentOf(file));
    }
    put(file,
        textOf(
            "; comment\n  \n [hkey_users\\A]\t\r\n @ = hex(A):  \r\n\"c\"=hex:\\\n 01\n\"b\"=\"x\\n\"  \n"));
    EXPECT_FALSE(load()) << "blanks and comments are no damage";
    for (std::string const& bytes : {std::string(), std::string("REGEDIT4\n"), textOf("") + "x"}) {
        put(file, bytes);
        EXPECT_EQ("1", info(load(), "Line"));
    }
    put(file, "\xFF\xFE" + textOf("").substr(4));
    EXPECT_EQ("the line is not \"Windows Registry Editor Version 5.00\"", info(load(), "Description"));
}

TEST_F(RegistryFileTest, FilesThatAreCutOrChangedAreReadOrRefused) {
    auto const whole = contentOf(data / "written.reg");
    int numRead = 0;
    for (std::size_t length = 0; length < whole.size(); length += 5) {
        put(file, whole.substr(0, length));
        auto const error = load();
        if (!error) {
            EXPECT_EQ(std::string("\n\0", 2), whole.substr(length - 2, 2)) << length;
        }
        numRead += error ? 0 : 1;
        auto changed = whole;
        changed[length] = static_cast<char>(changed[length] ^ (1 << length % 8));
        put(file, changed);
        static_cast<void>(load());
    }
    EXPECT_LT(3, numRead);
}

TEST_F(RegistryFileTest, OneHolderAtATime) {
    RegistryFile registry, other;
    int const lock = ::open((file.string() + ".lock").c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(0, ::flock(lock, LOCK_EX | LOCK_NB));
    auto const error = registry.attach(file.string());
    ASSERT_TRUE(error);
    EXPECT_EQ(StreamFailure, error->getCode());
    EXPECT_EQ("another process holds the file", info(error, "Description"));
    ::close(lock); // what a crash leaves
    EXPECT_FALSE(registry.attach(file.string()));
    EXPECT_EQ("a file is attached already", info(other.attach(file.string()), "Description"));
    EXPECT_TRUE(other.flush());
    EXPECT_TRUE(other.detach());
    auto const held = place()->createFrom(true);
    EXPECT_FALSE(registry.detach());
    EXPECT_FALSE(held->setKey("v", "2")) << "what was open counts as deleted";
    EXPECT_TRUE(registry.detach());

    place()->setKey("v", "1");
    auto const inUse = registry.attach(file.string());
    EXPECT_EQ(NotSupported, inUse->getCode());
    EXPECT_EQ("1", place()->queryKey("v")) << "nothing is lost";
}

TEST_F(RegistryFileTest, FailedWriteKeepsTheFileAndTheChanges) {
    fs::path const beside = file.string() + ".kx-saving";
    std::optional<RegistryFile> registry(std::in_place);
    ASSERT_FALSE(registry->attach(file.string()));
    place()->setKey("v", "1");
    EXPECT_FALSE(registry->flush());
    auto const first = contentOf(file);
    fs::create_directories(beside / "in the way");
    place()->setKey("v", "2");
    EXPECT_EQ(StreamFailure, registry->flush()->getCode());
    EXPECT_TRUE(registry->detach());
    EXPECT_EQ(first, contentOf(file));
    EXPECT_EQ("2", place()->queryKey("v"));
    fs::remove_all(beside);
    put(beside, "what a crash has left");
    registry.reset(); // writes
    EXPECT_NE(first, contentOf(file));
    EXPECT_FALSE(fs::exists(beside));
    EXPECT_FALSE(fs::exists(file.string() + ".lock"));

    EXPECT_EQ(StreamFailure, RegistryFile().attach((directory / "none" / "r.reg").string())->getCode());
    EXPECT_EQ(StreamFailure, RegistryFile().attach(directory.string())->getCode());
    EXPECT_EQ(StreamFailure, RegistryFile().attach("")->getCode());
}

TEST_F(RegistryFileTest, FileThatIsNotThereYetIsMadeWhereItsPathLedAtFirst) {
    fs::path const before = fs::current_path();
    fs::create_directory(directory / "to");
    fs::create_symlink("to", directory / "via");
    fs::create_symlink("via/new.reg", directory / "link");
    fs::current_path(directory);
    for (auto const& [name, made] : {std::pair("near.reg", "near.reg"), {"link", "to/new.reg"}}) {
        RegistryFile registry;
        ASSERT_FALSE(registry.attach(name));
        EXPECT_TRUE(fs::exists(directory / (std::string(made) + ".lock"))) << name;
        fs::current_path(directory / "to");
        place()->setKey("v", "1");
        EXPECT_FALSE(registry.detach());
        EXPECT_TRUE(fs::is_regular_file(directory / made)) << name;
        fs::current_path(directory);
    }
    EXPECT_TRUE(fs::is_symlink(directory / "link"));
    fs::current_path(before);
}

TEST_F(RegistryFileTest, KeysThatTheFileCannotHoldAreNotMade) {
    std::string deep;
    for (int i = 0; i < 510; ++i)
        deep += "k\\";
    for (auto const& [name, isMade] : {std::pair<std::string, bool>("a\nb", false),
                                       {"a\rb", false},
                                       {std::string(256, 'k'), false},
                                       {std::string(255, 'k'), true},
                                       {deep + "k", false},
                                       {deep, true}})
        EXPECT_EQ(isMade, place()->createKey(name, false)) << name.size();
    EXPECT_TRUE(place()->deleteTree(""));
}

} // namespace
