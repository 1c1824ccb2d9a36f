// SPDX-License-Identifier: MIT
#pragma once

#include "ScratchFolder.h"
#include "kxmodel/Process.h"
#include "kxmodel/System.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <vector>

namespace kxmodel_test {

using kxmodel::pathOf;
using Ending = kxmodel::ProgramEnd;

/// In UTF-8.
inline std::string textOf(std::filesystem::path const& path) {
    auto const text = path.u8string();
    return std::string(text.begin(), text.end());
}

/// Sets a variable of the environment of this program and of those that it runs.
void setVariable(std::string const& name, std::string const& value);

/// Whether names of files are any bytes, files have permissions for a group, symbolic links can be made,
/// "/dev/full" is a full disk, and there is a shell.
extern bool const hasPosixFiles;

using ::contentOf;
inline std::string contentOf(std::string const& file) { return contentOf(pathOf(file)); }

inline std::vector<std::string> linesOf(std::string const& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// Runs the program in a folder that is empty at first and goes with the test.
class Program : public ::testing::Test {
protected:
    std::string path(std::string const& name) const { return textOf(folder_.path / pathOf(name)); }
    std::string put(std::string const& name, std::string const& content) const {
        ::put(pathOf(path(name)), content);
        return path(name);
    }
    auto numFiles() const { return std::distance(std::filesystem::directory_iterator(folder_.path), {}); }

    /// The program is started as the tool itself starts others.
    static Ending run(std::vector<std::string> const& arguments, std::string const& input = {}) {
        auto const program = std::filesystem::absolute(KX_KXMODEL_PROGRAM).make_preferred();
        try {
            return kxmodel::runToEnd(textOf(program), arguments, input);
        } catch (kxmodel::ProcessError const& error) {
            // One start of thousands fails in Wine, before anything of the program has run.
            if (std::string_view(error.what()).find("could not be started: Internal error") ==
                std::string::npos)
                throw;
            return kxmodel::runToEnd(textOf(program), arguments, input);
        }
    }

    /// Standard output, or error, goes to a path of the test's choice, by a shell.
    static Ending runWithOutput(std::vector<std::string> const& arguments, std::string const& out,
                                bool isError = false) {
        std::vector<std::string> words{"-c", std::string("exec \"$@\" ") + (isError ? "2" : "1") + "> \"$0\"",
                                       out, KX_KXMODEL_PROGRAM};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return kxmodel::runToEnd("sh", words, "");
    }

private:
    ScratchFolder folder_;
};

/// The texts are the same; otherwise what differs is shown from shortly before the first difference.
inline void expectSame(std::string const& actual, std::string const& expected) {
    std::size_t same = 0;
    while (same < actual.size() && same < expected.size() && actual[same] == expected[same])
        ++same;
    std::size_t const begin = same - std::min<std::size_t>(same, 100);
    EXPECT_TRUE(actual == expected) << "differs at byte " << same << "\n== actual\n"
                                    << actual.substr(begin, 300) << "\n== expected\n"
                                    << expected.substr(begin, 300);
}

// Parts of documents in the text rendering, as the library writes them.

inline std::string attribute(std::string const& type, std::string const& name, std::string const& value) {
    return "\nAttr<" + type + "> { \nName \"" + name + "\"\nValue " + value + "\n}";
}

inline std::string container(std::string const& name, std::string const& content = {}) {
    return "\nAttrContainer { " + attribute("String", "Name", '"' + name + '"') + content + "\n}";
}

inline std::string field(std::string const& className, std::string const& name, std::string const& content) {
    return "\nSubContainer { \n\"" + className + "\" \"" + name + "\"" + content + "\n}";
}

} // namespace kxmodel_test
