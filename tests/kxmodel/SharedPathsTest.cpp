// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

std::string reference(int id) {
    return field("AttrContainer", "to" + std::to_string(id),
                 "\nInstanceID " + std::to_string(id) + "\nReferenceToShared ");
}

std::string owned(int id, std::string const& members) {
    return field("AttrContainer", "f", "\nInstanceID " + std::to_string(id) + container("x", members));
}

/// Containers in one another, each of which refers to all around it. From the innermost one, which is there
/// again at the end, an exponential number of ways leads through them.
std::string crossing(int depth) {
    std::string text;
    for (int id = depth; id > 0; --id) {
        std::string members;
        for (int around = 1; around < id; ++around)
            members += reference(around);
        text = owned(id, members + text);
    }
    return container("root", text + reference(depth));
}

/// Stacks of containers, the innermost of each of which refers to the stack before it.
std::string longWay(int numStacks) {
    std::string stacks;
    for (int id = 1; id <= numStacks; ++id) {
        std::string text = id > 1 ? reference(id - 1) : "";
        for (int level = 1; level < 200; ++level)
            text = field("AttrContainer", "f", container("x", text));
        stacks += owned(id, text);
    }
    return container("root", stacks);
}

class SharedPaths : public Program {};

TEST_F(SharedPaths, AreFollowedUnlessTheyAreTooManyOrTooLong) {
    std::string const out = path("out"), target = put("target", container("root"));
    for (auto const& [text, isGood] :
         {std::pair(crossing(8), true), {crossing(40), false}, {longWay(1), true}, {longWay(20), false}}) {
        std::string const document = put("document", text);
        EXPECT_EQ(0, run({"diff", document, document}).status);
        for (auto const& call :
             {std::vector<std::string>{"export", document, out}, {"merge", target, document, "-o", out}}) {
            Ending const result = run(call);
            EXPECT_EQ(isGood ? 0 : 2, result.status) << result.err;
            EXPECT_EQ(isGood, std::filesystem::remove(out));
            EXPECT_EQ(!isGood, result.err.starts_with(document + ": its shared instances")) << result.err;
        }
    }
}

} // namespace
