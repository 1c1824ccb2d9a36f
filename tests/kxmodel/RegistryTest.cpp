// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "Program.h"

#include <AttributeContainer/RegKeys.h>
#include <AttributeContainer/RegistryFile.h>

#include <functional>
#include <set>

using namespace kxmodel_test;
using Zorvan::AttributeContainer::RegistryFile;
using Zorvan::AttributeContainer::RegKeys;

namespace {

/// Works on a key that is empty before each test and gone afterwards: in a file where the registry is kept in
/// one.
class RegistryVerbs : public Program {
protected:
    RegistryVerbs() { change(remove); }
    ~RegistryVerbs() override { change(remove); }

    Ending runAtKey(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "registry");
        arguments.insert(arguments.end(), {"--key", "HKCU\\Software\\KxModelTests"});
        if (RegistryFile::isSupported())
            arguments.insert(arguments.end(), {"--hive", hive()});
        return run(arguments);
    }
    std::string hive() const { return path("hive.reg"); }

    /// Changes the registry like another program.
    void change(std::function<void(RegKeys&)> const& act) const {
        RegistryFile file;
        bool const isInFile = RegistryFile::isSupported();
        ASSERT_EQ(isInFile ? file.attach(hive()) : nullptr, nullptr);
        RegKeys keys("Software\\KxModelTests", RegKeys::predefinedKey("HKCU"), false);
        act(keys);
        ASSERT_EQ(isInFile ? file.detach() : nullptr, nullptr);
    }

private:
    static void remove(RegKeys& keys) { keys.deleteTree(""); }
};

TEST_F(RegistryVerbs, SampleIsRestoredButForWhatSaveLeftOut) {
    std::string const sample = contentOf(std::string(KX_SAMPLE_DATA_DIR) + "/world-110m.model");
    std::string bare, last;
    for (std::string const& line : linesOf(sample)) {
        if (!line.starts_with("Value ") || last == "Name \"Name\"")
            bare += line + '\n';
        last = line;
    }
    std::string const full = put("full", sample), out = path("out");
    Ending const saved = runAtKey({"save", full});
    ASSERT_EQ(saved.status, 0) << saved.err;
    std::set<std::string> leftOut;
    for (std::string const& line : linesOf(saved.err))
        if (auto const end = line.find(": left out: "); end != line.npos)
            leftOut.insert(line.substr(full.size() + 2, end - full.size() - 2));

    Ending const loaded = runAtKey({"load", put("bare", bare), "-o", out});
    ASSERT_EQ(loaded.status, 0) << loaded.err;
    std::size_t numDifferences = 0;
    for (std::string const& line : linesOf(run({"diff", full, out}).out))
        if (auto const end = line.find(": changed, "); end != line.npos) {
            ++numDifferences;
            EXPECT_TRUE(leftOut.contains(line.substr(0, end))) << line;
        }
    EXPECT_GT(numDifferences, 0u);
    EXPECT_LT(numDifferences, leftOut.size());
}

TEST_F(RegistryVerbs, ValuesAreLoadedThatOthersHaveWritten) {
    std::string const document = put("document", container("root", attribute("int", "n", "1")));
    std::string const out = path("out");
    for (auto const& row : dataRows("kxmodel/registry-values.txt")) {
        SCOPED_TRACE(row.place);
        put("out", "old");
        change([&](RegKeys& keys) {
            std::string data;
            for (unsigned times = row[2].empty() ? 1 : row.number(2); times > 0; --times)
                data += row[1];
            if (row[0] == "text")
                keys.setKey("n", data);
            else // Some systems take a null along that happens to follow.
                keys.setKey("n", reinterpret_cast<unsigned char const*>((data + "xx").data()),
                            static_cast<unsigned long>(data.size()), row.number(0));
        });
        Ending const loaded = runAtKey({"load", document, "-o", out});
        int const status = row[3] == "refused" ? 2 : 0;
        EXPECT_EQ(loaded.status, status);
        EXPECT_NE(loaded.err.find(row[4]), std::string::npos) << loaded.err;
        EXPECT_EQ(status == 0 ? run({"get", out, "/n"}).out : contentOf(out), status != 0          ? "old"
                                                                              : row[3] == "loaded" ? "7\n"
                                                                                                   : "1\n");
        EXPECT_EQ(runAtKey({"load", document, "-o", out, "--strict"}).status, row[3] == "loaded" ? 0 : 2);
    }
    // Nor is a value of another type replaced, or anything else written.
    EXPECT_EQ(runAtKey({"save", document}).status, 2);
    EXPECT_NE(runAtKey({"list"}).out.find("n (type 4, 4 bytes)\n"), std::string::npos);
    EXPECT_EQ(runAtKey({"list"}).out.find("Name"), std::string::npos);
}

TEST_F(RegistryVerbs, ListShowsTheValueWithoutNameAndThoseBehindIt) {
    change([](RegKeys& keys) {
        keys.setKey("", "nameless");
        keys.setKey("a", "two\nlines");
        keys.createKey("sub", false);
        keys.setPrefix(keys.getPrefix() + "\\sub");
        keys.setKey("", "below");
    });
    Ending const listed = runAtKey({"list"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.out, "@ = nameless\na = two\\nlines\nsub\\@ = below\n");
}

TEST_F(RegistryVerbs, FileThatAnotherProcessHoldsStaysAsItIs) {
    if (!RegistryFile::isSupported()) {
        Ending const refused = run({"registry", "list", "--key", "HKCU\\Software", "--hive", hive()});
        EXPECT_EQ(refused.status, 2);
        EXPECT_NE(refused.err.find("this system has a registry of its own"), std::string::npos);
        return;
    }
    std::string const document = put("document", container("root"));
    change([&](RegKeys& keys) {
        keys.createKey("", false);
        std::string const before = contentOf(hive());
        for (std::vector<std::string> const& call :
             {std::vector<std::string>{"save", document}, {"load", document, "-o", path("out")}, {"list"}}) {
            Ending const refused = runAtKey(call);
            EXPECT_EQ(refused.status, 2);
            EXPECT_NE(refused.err.find("hive.reg: StreamFailure"), std::string::npos) << refused.err;
        }
        EXPECT_EQ(contentOf(hive()), before);
    });
}

} // namespace
