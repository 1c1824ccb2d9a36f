// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

class CommandLine : public Program {};

TEST_F(CommandLine, WrongCallsEndWithStatusTwo) {
    std::string const file = put("document", container("root"));
    std::vector<std::vector<std::string>> const calls = {
        {},
        {"explain", file},
        {"show"},
        {"show", file, "--depth", "-1"},
        {"show", file, "--depth", "many"},
        {"show", file, "--unknown"},
        {"convert", file},
        {"convert", file, path("out")},
        {"convert", file, path("out"), "--to", "pdf"},
        {"check"},
    };
    for (std::vector<std::string> const& call : calls) {
        Ending const result = run(call);
        EXPECT_EQ(result.status, 2) << (call.empty() ? "" : call.back());
        EXPECT_NE(result.err, "");
        EXPECT_EQ(result.out, "");
    }
    EXPECT_EQ(fileNames().size(), 1u);
}

TEST_F(CommandLine, HelpIsGiven) {
    for (std::vector<std::string> const& call : std::vector<std::vector<std::string>>{
             {"--help"}, {"show", "--help"}, {"convert", "--help"}, {"check", "--help"}}) {
        Ending const result = run(call);
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find("Usage"), std::string::npos) << result.out;
        EXPECT_EQ(result.err, "");
    }
}

} // namespace
