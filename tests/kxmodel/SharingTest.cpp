// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

class Sharing : public Program {};

/// A small document in which each level of fields has the one below it twice, by a reference.
std::string doublingDocument(std::string const& className) {
    std::string text = container("leaf");
    for (int i = 1; i <= 60; ++i) {
        std::string const id = "\nInstanceID " + std::to_string(i);
        text = container("level", field(className, "a", id + text) +
                                      field(className, "b", id + "\nReferenceToShared "));
    }
    return text;
}

TEST_F(Sharing, DocumentsThatAreHugeWithoutItAreUsedOrRefusedAtOnce) {
    std::string const shared = put("shared", doublingDocument("AttrContainer"));
    std::string const kept = put("kept", doublingDocument("Acme::X")), good = put("good", object("r"));
    std::string const out = path("out");
    std::tuple<std::vector<std::string>, int, std::string> const rows[] = {
        {{"show", shared}, 0, ""},
        {{"check", shared}, 0, ""},
        {{"diff", shared, shared}, 0, ""},
        {{"diff", kept, kept}, 2, kept + " and " + kept + ": \"level\" of the unknown class"},
        {{"merge", good, shared, "-o", out}, 2, shared + ": its shared instances"},
        {{"export", shared, out}, 2, shared + ": "},
        {{"set", shared, "/b/a/b/Name=x", "-o", out}, 0, ""},
        {{"graph", shared, "-o", out + ".dot"}, 0, ""},
    };
    for (auto const& [call, status, message] : rows) {
        SCOPED_TRACE(call[0] + " " + call[1]);
        Ending const result = run(call);
        EXPECT_EQ(result.status, status) << result.err;
        EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
        EXPECT_EQ(std::filesystem::remove(pathOf(out)), call[0] == "set");
    }
}

} // namespace
