// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

class GetSet : public Program {
protected:
    static std::string named(std::string const& name, std::string const& value) {
        return attribute("String", name, '"' + value + '"');
    }
};

TEST_F(GetSet, PathsNameAttributes) {
    auto const withX = [](std::string const& name, std::string const& x) {
        return object(name, named("x", x));
    };
    std::string text =
        object("root", named("x", "root") + named("X", "upper") + named("double", "first") +
                           named("double", "second") + attribute("Vec3dd", "v", "1 2 3 ") +
                           named("lines", R"(a\nb \"q\")") +
                           field("AttrContainer", "A", container("f", named("x", "field A"))) +
                           field("AttrContainer", "d", container("f", named("x", "field d")))) +
        child("Acme::P", "P", object("P") + child("Acme::Q", "Q", withX("Q", "deep")));
    int count = 0;
    for (std::string const name : {"A", "a", "A", "D", "a/b", "a[2]", "p=q", R"(back\\slash)", ""})
        text += child("Object", name, withX(name, "child " + std::to_string(++count)));
    std::string const file = put("tree.model", text);
    std::pair<std::string, std::string> const values[] = {{"/x", "root"},
                                                          {"x", "root"},
                                                          {"/X", "upper"},
                                                          {"/Double", "first"},
                                                          {"/double[2]", "second"},
                                                          {"/DOUBLE[2]", "second"},
                                                          {"/v", "1 2 3"},
                                                          {"/lines", "a\nb \"q\""},
                                                          {"/UUID", "00000000-0000-0000-0000-000000000000"},
                                                          {"/A/x", "child 1"},
                                                          {"/a/x", "child 2"},
                                                          {"/A[2]/x", "child 3"},
                                                          {"/A[3]/x", "field A"},
                                                          {"/d/x", "field d"},
                                                          {"/D/x", "child 4"},
                                                          {"/a\\/b/x", "child 5"},
                                                          {"/a\\[2]/x", "child 6"},
                                                          {"/p\\=q/x", "child 7"},
                                                          {"/P=Q/x", "child 7"},
                                                          {"/back\\\\slash/x", "child 8"},
                                                          {"//x", "child 9"},
                                                          {"/p/q/X", "deep"}};
    for (auto const& [path, value] : values) {
        Ending const result = run({"get", file, path});
        EXPECT_EQ(result.status, 0) << path << result.err;
        EXPECT_EQ(result.out, value + "\n") << path;
    }
    std::pair<std::string, std::string> const failures[] = {{"/", "the root has no attribute \"\""},
                                                            {"/A", "\"A\", which names a child"},
                                                            {"/A/y", "\"/A\" has no attribute \"y\""},
                                                            {"/B/x", "the root has no child or field \"B\""},
                                                            {"/A[4]/x", "\"A[4]\""},
                                                            {"/A[0]/x", "no step"},
                                                            {"/A[1/x", "no step"},
                                                            {"/A[]/x", "no step"},
                                                            {"/x\\", "no step"},
                                                            {"/x/", "no child or field \"x\""}};
    for (auto const& [path, why] : failures) {
        Ending const result = run({"get", file, path});
        EXPECT_EQ(result.status, 2) << path;
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(result.err.starts_with(file + ": ") && result.err.ends_with("\n")) << result.err;
        EXPECT_NE(result.err.find(why), std::string::npos) << path << ": " << result.err;
    }
}

TEST_F(GetSet, ValuesAreTakenWholeOrNotAtAll) {
    // Type, text, and what is stored; nothing when it is refused.
    std::tuple<std::string, std::string, std::optional<std::string>> const rows[] = {
        {"int", " +7 ", "7"},
        {"int", "7x", {}},
        {"int", "", {}},
        {"int", "2147483648", {}},
        {"int", "1.5", {}},
        {"int8_t", "-128", "-128"},
        {"int8_t", "128", {}},
        {"uint8_t", "200", "200"},
        {"uint8_t", "-1", {}},
        {"uint64_t", "18446744073709551615", "18446744073709551615"},
        {"uint32_t", "-1", {}},
        {"bool", "true", "true"},
        {"bool", "1", {}},
        {"bool", "yes", {}},
        {"double", "1e-300", "1e-300"},
        {"double", "1e999", {}},
        {"double", "nan", {}},
        {"double", "1,5", {}},
        {"Vec3df", "1 2 1e39", {}},
        {"Vec3dd", "1 2", {}},
        {"Vec3dd", "0.5 2 3", "0.5 2 3"},
        {"Vec3dd", "1 2 3 4", {}},
        {"IntVector", "{ 1 2 }", "{ 1 2 }"},
        {"IntVector", "{1 2}", "{ 1 2 }"},
        {"IntVector", "1 2 }", {}},
        {"IntVector", "{ 1 2", {}},
        {"IntVector", "{ 1 2 } 3", {}},
        {"UInt8Vector", "{ 1 -2 }", {}},
        {"VecPoly3d", "{{1 2 3}}", "{ { 1 2 3 }  }"},
        {"Uuid", "970B1FAE-00C4-5822-82D6-DE95D462E519", "970b1fae-00c4-5822-82d6-de95d462e519"},
        {"Uuid", "970b1fae", {}},
        {"UuidSet", "{ }", "{ }"},
        {"UuidSet", "}", {}},
        {"StringArray", "2 \"a b\" \"}\"", "2 \"a b\" \"}\""},
        {"StringArray", "2 \"a\"", {}},
        {"StringSet", "2 \"b\" \"a\"", "2 \"a\" \"b\""},
        {"StringMap", "1 \"k\"=>\"v\"", "1 \"k\"=>\"v\""},
        {"String", "", ""},
        {"String", "\"quoted\" {\n\\", "\"quoted\" {\n\\"}};
    for (auto const& [type, text, stored] : rows) {
        SCOPED_TRACE(type + " " + text);
        std::string const before = container("root", attribute(type, "v", ""));
        std::string const file = put("one.model", before);
        Ending const result = run({"set", file, "/v=" + text});
        EXPECT_EQ(result.status, stored ? 0 : 2) << result.err;
        EXPECT_EQ(result.err.find("is no " + type) != std::string::npos, !stored) << result.err;
        if (!stored) {
            EXPECT_EQ(contentOf(file), before);
        } else {
            EXPECT_EQ(run({"get", file, "/v"}).out, *stored + "\n");
        }
    }
}

TEST_F(GetSet, ChangesAreMadeTogetherOrNotAtAll) {
    std::string const text =
        header + object("root", attribute("int", "n", "1", link("PostObserver", "/A", 10, "Notify"))) +
        child("Object", "A", object("A", attribute("String", "s", "\"old\"")));
    std::string const file = put("tree.model", text), out = put("out.model", "old");

    std::vector<std::string> const bad[] = {
        {"/n=2", "/n"}, {"/n=2", "/m=3"}, {"/n=2", "/A/s=new", "/n=x"}, {"/n=2", "/A/Name=no name"}};
    char const* const reasons[] = {"\"/n\" has no \"=\"", "no attribute \"m\"", "/n: \"x\" is no int",
                                   "/A/Name: the change is refused: InvalidName"};
    for (std::size_t i = 0; i < std::size(bad); ++i) {
        std::vector<std::string> call = {"set", file, "-o", out};
        call.insert(call.end(), bad[i].begin(), bad[i].end());
        Ending const result = run(call);
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(result.err.starts_with(file + ": ")) << result.err;
        EXPECT_NE(result.err.find(reasons[i]), std::string::npos) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(contentOf(out) + contentOf(file), "old" + text);
    }

    // A path means what the tree was like before the changes.
    std::string expected = text;
    for (auto const& [old, changed] : {std::pair("Value 1\n", "Value -5\n"),
                                       {"\"A\"\n}", "\"B\"\n}"},
                                       {"\"old\"", "\"new=\\n\""},
                                       {"/A", "/B"},
                                       {"\"Object\" \"A\"", "\"Object\" \"B\""}})
        expected.replace(expected.find(old), std::string(old).size(), changed);
    std::vector<std::string> const changes = {"/n=-5", "/A/Name=B", "/A/s=new=\n"};
    EXPECT_EQ(run({"set", file, "-o", out, changes[0], changes[1], changes[2]}).status, 0);
    expectSame(contentOf(out), expected);
    EXPECT_EQ(contentOf(file), text);
    std::string const xml = converted(text, "xml");
    expectSame(run({"set", "-", changes[0], changes[1], changes[2]}, xml).out, converted(expected, "xml"));
    EXPECT_EQ(run({"set", file, changes[0], changes[1], changes[2]}).status, 0);
    expectSame(contentOf(file), expected);
}

TEST_F(GetSet, DocumentsThatWouldLoseContentAreNotChanged) {
    std::string const text = container("root", attribute("int", "n", "1") + "\nFoo 1");
    std::string const file = put("odd.model", text);
    EXPECT_EQ(run({"set", file, "/n=2"}).status, 2);
    EXPECT_EQ(contentOf(file), text);
    EXPECT_EQ(run({"get", file, "/n"}).out, "1\n");
}

} // namespace
