// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

/// A field with an id, which is a reference without content.
std::string instance(int id, std::string const& content = "\nReferenceToShared ",
                     std::string const& name = "f", std::string const& className = "AttrContainer") {
    return field(className, name, "\nInstanceID " + std::to_string(id) + content);
}

/// Each level of fields has the one below it twice.
std::string doubling(std::string const& className) {
    std::string text = container("leaf");
    for (int id = 1; id <= 60; ++id)
        text = container("level", instance(id, text, "a", className) +
                                      instance(id, "\nReferenceToShared ", "b", className));
    return text;
}

/// Containers in one another, each of which refers to all around it. From the innermost one, which is there
/// again at the end, an exponential number of ways leads through them.
std::string crossing(int depth) {
    std::string text;
    for (int id = depth; id > 0; --id) {
        std::string members;
        for (int around = 1; around < id; ++around)
            members += instance(around);
        text = instance(id, container("x", members + text));
    }
    return container("root", text + instance(depth));
}

/// Stacks of containers, the innermost of each of which refers to the stack before it.
std::string longWay(int numStacks) {
    std::string stacks;
    for (int id = 1; id <= numStacks; ++id) {
        std::string text = id > 1 ? instance(id - 1) : "";
        for (int level = 1; level < 200; ++level)
            text = field("AttrContainer", "f", container("x", text));
        stacks += instance(id, container("x", text));
    }
    return container("root", stacks);
}

class Sharing : public Program {};

TEST_F(Sharing, IsFollowedUnlessTheWaysAreTooManyOrTooLong) {
    std::string const out = path("out"), target = put("target", container("root"));
    for (auto const& [text, isGood] : {std::pair(crossing(8), true),
                                       {crossing(40), false},
                                       {longWay(1), true},
                                       {longWay(20), false},
                                       {doubling("AttrContainer"), false}}) {
        std::string const document = put("document", text);
        for (std::vector<std::string> const& call : {std::vector<std::string>{"show", document},
                                                     {"check", document},
                                                     {"diff", document, document},
                                                     {"graph", document, "-o", path("graph.dot")},
                                                     {"set", document, "/Name=y", "-o", path("set")}})
            EXPECT_EQ(run(call).status, 0) << call[0];
        for (auto const& call :
             {std::vector<std::string>{"export", document, out}, {"merge", target, document, "-o", out}}) {
            Ending const result = run(call);
            EXPECT_EQ(isGood ? 0 : 2, result.status) << result.err;
            EXPECT_EQ(isGood, std::filesystem::remove(out));
            EXPECT_EQ(!isGood, result.err.starts_with(document + ": its shared instances")) << result.err;
        }
    }
    std::string const kept = put("kept", doubling("Acme::X"));
    Ending const result = run({"diff", kept, kept});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find(kept + " and " + kept + ": \"level\" of the unknown class"), std::string::npos);
    EXPECT_EQ(run({"set", path("document"), "/b/a/b/Name=x", "-o", out}).status, 0);
}

} // namespace
