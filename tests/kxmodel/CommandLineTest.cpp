// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

class CommandLine : public Program {};

TEST_F(CommandLine, WrongCallsEndWithStatusTwo) {
    std::string const file = put("document", container("root"));
    std::vector<std::string> const calls[] = {{},
                                              {"explain", file},
                                              {"show"},
                                              {"show", file, "--depth", "-1"},
                                              {"show", file, "--unknown"},
                                              {"convert", file, path("out")},
                                              {"convert", file, path("out"), "--to", "pdf"},
                                              {"check"}};
    for (auto const& call : calls) {
        Ending const result = run(call);
        EXPECT_EQ(result.status, 2) << (call.empty() ? "" : call.back());
        EXPECT_TRUE(!result.err.empty() && result.out.empty());
    }
    EXPECT_EQ(numFiles(), 1);
}

TEST_F(CommandLine, HelpIsGiven) {
    for (std::string const command : {"--help", "show", "convert", "check"}) {
        Ending const result = run({command, "--help"});
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find("Usage"), std::string::npos) << result.out;
    }
}

} // namespace
