// SPDX-License-Identifier: MIT
// What somebody who waits for the program sees of its work.
#include "Program.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

using namespace kxmodel_test;

namespace {

/// A terminal that keeps what is written to it. What programs write must be over before it is looked at.
class Terminal {
public:
    Terminal() : terminal_(::posix_openpt(O_RDWR | O_NOCTTY)) {
        ::grantpt(terminal_);
        ::unlockpt(terminal_);
        path_ = ::ptsname(terminal_);
        // Reading ends when the last program has closed it.
        reader_ = std::thread([this] {
            char buffer[4096];
            for (ssize_t count; (count = ::read(terminal_, buffer, sizeof buffer)) > 0;)
                written_.append(buffer, static_cast<std::size_t>(count));
        });
    }
    ~Terminal() { ::close(terminal_); }

    std::string const& path() const { return path_; }
    std::string const& written() {
        reader_.join();
        return written_;
    }

private:
    int terminal_;
    std::string path_, written_;
    std::thread reader_;
};

class ProgressBar : public Program {};

TEST_F(ProgressBar, IsShownOnATerminalForLargeDocumentsAndGoesWithTheWork) {
    struct Row {
        std::size_t size;
        char const* rendering;
        std::vector<std::string> words;
    };
    for (Row const& row : {Row{5'000'000, "xml", {"reading", "writing"}},
                           {5'000'000, "text", {"reading", "writing"}},
                           {100'000, "xml", {}}}) {
        SCOPED_TRACE(std::to_string(row.size) + " to " + row.rendering);
        std::string const in = put(
            "in", container("root", attribute("String", "Value", '"' + std::string(row.size, 'v') + '"')));
        std::vector<std::string> const arguments{"convert", in, path("out"), "--to", row.rendering};
        EXPECT_EQ(run(arguments).err, "");

        Terminal terminal;
        EXPECT_EQ(runWithOutput(arguments, terminal.path(), true).status, 0);
        std::istringstream written(terminal.written());
        // What the line looks like in the end, and the words and percentages on the way.
        std::vector<std::string> words;
        std::string line;
        int percent = 0;
        for (std::string state; std::getline(written, state, '\r');) {
            line.replace(0, state.size(), state);
            std::string const word = state.substr(0, state.find(' '));
            if (word.empty())
                continue;
            if (words.empty() || words.back() != word) {
                words.push_back(word);
                percent = 0;
            }
            int const now = std::stoi(state.substr(state.find(']') + 1));
            EXPECT_GE(now, percent) << state;
            percent = now;
        }
        EXPECT_EQ(words, row.words);
        EXPECT_EQ(line.find_first_not_of(' '), line.npos) << line;
    }
}

} // namespace
