// SPDX-License-Identifier: MIT
#include "Program.h"

#include <AttributeContainer/AttributeContainer.h>

#include <map>
#include <regex>

using namespace kxmodel_test;
namespace fs = std::filesystem;

namespace {

std::string sample(std::string const& name) { return std::string(KX_SAMPLE_DATA_DIR) + "/" + name; }

class Convert : public Program {
protected:
    /// The document comes back from itself and from XML, and XML from itself.
    void expectLossless(std::string const& text) const {
        expectSame(converted(text, "text"), text);
        std::string const xml = converted(text, "xml");
        expectSame(converted(xml, "xml"), xml);
        expectSame(converted(xml, "text"), text);
    }
};

TEST_F(Convert, SampleDocumentsConvertIntoEachOther) {
    std::string const text = sample("world-110m.model");
    std::string const xml = sample("world-110m.model.xml");
    struct Row {
        std::string in, to, expected;
    };
    for (Row const& row :
         {Row{text, "text", text}, Row{text, "xml", xml}, Row{xml, "text", text}, Row{xml, "xml", xml}}) {
        SCOPED_TRACE(row.in + " to " + row.to);
        Ending const result = run({"convert", row.in, path("out"), "--to", row.to});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out + result.err, "");
        EXPECT_TRUE(contentOf(path("out")) == contentOf(row.expected));
    }
}

TEST_F(Convert, HeadersAreKept) {
    std::string const own = "\n\"WtLib\" 9.1.0.0\n\"RootModel\" 0.0.0.0";
    struct Row {
        std::string header;
        std::string
            throughXml; ///< XML with versions comes back with the root model's, which it does not carry.
    };
    std::vector<Row> const rows = {
        {"", ""},
        {"\"Title\"\n", "\"Title\"\n"},
        {"\"Title\"" + own, "\"Title\"" + own},
        {"\"Title\"\n\"WtLib\" 9.1.0.0", "\"Title\"" + own},
        {"\"Title\"\n\"OtherLib\" 3.1.4.1.5", "\"Title\"\n\"OtherLib\" 3.1.4.1.5\n\"RootModel\" 0.0.0.0"},
        {"\"Title\"\n\"OtherLib\" 3.1.4.1\n\"Acme model\" 2.7.1.8",
         "\"Title\"\n\"OtherLib\" 3.1.4.1\n\"RootModel\" 0.0.0.0"},
        {"\"\"" + own, "\"\"" + own},
        {"\"\"\n", "\"\"\n"},
        {"\" blanks \"" + own, "\" blanks \"" + own},
        {"\"quote \\\" apostrophe ' backslash \\\\\"" + own,
         "\"quote \\\" apostrophe ' backslash \\\\\"" + own},
        {"\"'begins like a string'\"" + own, "\"'begins like a string'\"" + own},
        {"\"\\\"so does this\\\"\"" + own, "\"\\\"so does this\\\"\"" + own},
        {"\"two lines\\nand -- dashes --> <VOXA>\"" + own, "\"two lines\\nand -- dashes --> <VOXA>\"" + own},
        {"\"\\uFFC3\\uFFA9t\\uFFC3\\uFFA9 & <b>\"" + own, "\"\\uFFC3\\uFFA9t\\uFFC3\\uFFA9 & <b>\"" + own},
        {"\"{ AttrContainer {\"\n", "\"{ AttrContainer {\"\n"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.header);
        std::string const body = container("root");
        expectSame(converted(row.header + body, "text"), row.header + body);
        std::string const xml = converted(row.header + body, "xml");
        expectSame(converted(xml, "xml"), xml);
        expectSame(converted(xml, "text"), row.throughXml + body);
    }
}

/// One value of each type that has attributes, as documents have it.
std::map<std::string, std::string> const valuesByType = {
    {"int", "-2147483648"},
    {"int8_t", "-128"},
    {"uint8_t", "200"},
    {"int16_t", "-32768"},
    {"uint16_t", "65535"},
    {"uint32_t", "4294967295"},
    {"int64_t", "-9223372036854775808"},
    {"uint64_t", "18446744073709551615"},
    {"double", "1234567.891"},
    {"String", "\"a b\""},
    {"bool", "true"},
    {"Vec3dd", "0.5 -1.25 1e-07"},
    {"Vec3df", "0.5 -1.25 2048"},
    {"SVec3us", "1 2 65535"},
    {"Vec4dd", "0.1 0.2 0.3 100"},
    {"Vec4df", "0.5 0.25 0.125 -8"},
    {"SVec2dd", "123.456 0"},
    {"SVec2df", "0.5 -3"},
    {"SVec2i", "-7 8 "},
    {"SVec2ui", "7 4294967295 "},
    {"StringArray", "3 \"a\" \"\" \"b } c\""},
    {"StringSet", "2 \"a\" \"b\""},
    {"StringMap", "2 \"\"=>\"=>\" \"key\"=>\"a value\""},
    {"Mat4df", "1 0 0 0  0 0.5 0 0  0 0 1 0  -4 0 0 1  "},
    {"Mat4dd", "1 0 0 0  0 0.1 0 0  0 0 1 0  -4 0 0 1  "},
    {"DVector", "{ 0.1 -2 1e-300 1234567890123 } "},
    {"Vec3ddVector", "{ 0.5 1 2 -3 4 5 } "},
    {"Vec3dfVector", "{ 0.5 1 2 -3 4 5 } "},
    {"Vec4ddVector", "{ 0.5 1 2 3 } "},
    {"VecPoly3d", "{ { 1 2 3 4 5 6 }  { 7 8 9 }  { }  } "},
    {"Vec2ddVector", "{ 0.5 1 2 3 } "},
    {"Vec2dfVector", "{ 0.5 1 2 3 } "},
    {"IntVector", "{ -1 2 } "},
    {"Int8Vector", "{ -128 127 } "},
    {"UInt8Vector", "{ 0 255 } "},
    {"Int16Vector", "{ -1 2 } "},
    {"UInt16Vector", "{ 1 65535 } "},
    {"UInt32Vector", "{ 1 4294967295 } "},
    {"Int64Vector", "{ -9223372036854775808 } "},
    {"UInt64Vector", "{ 18446744073709551615 } "},
    {"Vec2iVector", "{ 1 -2  3 4  } "},
    {"Vec2usVector", "{ 1 2 3 4 } "},
    {"Mat4ddVector", "{ 1 0 0 0  0 1 0 0  0 0 1 0  0 0 0 0.1   } "},
    {"Uuid", "970b1fae-00c4-5822-82d6-de95d462e519"},
    {"Vec3uiVector", "{ 1 2 3  4 5 6  } "},
    {"UuidSet", "{ 00000000-0000-0000-0000-000000000001 970b1fae-00c4-5822-82d6-de95d462e519 } "},
    {"UuidVector", "{ 970b1fae-00c4-5822-82d6-de95d462e519 00000000-0000-0000-0000-000000000000 } "},
    {"BoolVector", "{ true false } "},
};

TEST_F(Convert, EveryTypeIsKept) {
    ASSERT_EQ(valuesByType.size(), 48u);
    std::string filled, initial;
    for (auto const& [type, value] : valuesByType) {
        ASSERT_LT(Zorvan::AttributeContainer::AttrContainer::getTypeFromString("Attr<" + type + ">"), 53u)
            << type;
        filled += attribute(type, "filled." + type, value);
        initial += attribute(type, "initial." + type, "", "\nWrite 1");
    }
    expectLossless(header + container("root", filled + initial));
}

TEST_F(Convert, AwkwardStringsAreKept) {
    std::string strings;
    int count = 0;
    for (std::string const text : {"",
                                   " ",
                                   "quote \\\" and backslash \\\\",
                                   "\\\\\\\"",
                                   "apostrophe '",
                                   "{",
                                   "}",
                                   "} }\\n}",
                                   "a\\nb\\r\\nc",
                                   "tab\there",
                                   "<b>&amp;</b>",
                                   "&lt;",
                                   "]]> -->",
                                   "/>\\\"",
                                   "value=\\\"",
                                   "\\uFFC3\\uFFA9 \\uFFE2\\uFF82\\uFFAC \\uFFFF",
                                   "\\\\uFFC3",
                                   "\\\\n",
                                   "Child",
                                   "AttrContainer {",
                                   "InstanceID 5",
                                   "=>",
                                   "''",
                                   "\x01\x1f\x7f",
                                   "trailing blank "}) {
        ++count;
        strings += attribute("String", "s" + std::to_string(count), text.empty() ? "" : '"' + text + '"');
        strings +=
            attribute("StringArray", "a" + std::to_string(count), "2 \"" + text + "\" \"" + text + '"');
        strings += attribute("StringMap", "m" + std::to_string(count), "1 \"" + text + "\"=>\"" + text + '"');
    }
    expectLossless(header + container("root", strings));
}

TEST_F(Convert, ContentOfUnknownClassesIsKept) {
    std::string const odd = "\nSerial 17 \"x } y\"\nData { \nBits \"}{ ' <\"\nMore { \nLess 1\n}\n}";
    std::map<std::string, std::string> const documents = {
        {"field",
         container("root", field("Acme::Gauge", "gauge", container("g", attribute("int", "mark", "3"))))},
        {"field in a field",
         container("root", field("Acme::Gauge", "gauge",
                                 container("g", field("Acme::Needle", "needle", container("n")))))},
        {"known field in an unknown one",
         container(
             "root",
             field("Acme::Gauge", "gauge",
                   container("g", field("ArrayContainer", "list",
                                        container("l", attribute("String", "contentType", "\"c\"") +
                                                           attribute("String", "selectedElement", ""))))))},
        {"field with children",
         container("root", field("Acme::Node", "node",
                                 object("n") + child("Acme::Leaf", "leaf", object("leaf")) +
                                     child("Object", "known", object("known"))))},
        {"field without a valid name",
         container("root", field("Acme::Gauge", "a gauge", container("a name")))},
        {"attribute without a valid name",
         container("root",
                   field("Acme::Gauge", "gauge", container("g", attribute("int", "not a name", "3"))))},
        {"child",
         object("root") + child("Acme::Pump", "pump", object("pump", attribute("int", "speed", "3")))},
        {"child with a header", object("root") + child("Acme::Pump", "pump", odd + object("pump"))},
        {"child that is no object",
         object("root") + child("Acme::Blob", "blob", odd) + child("Object", "next", object("next"))},
        {"child with odd content", object("root") + child("Acme::Blob", "blob", object("blob", odd))},
        {"child in a child",
         object("root") +
             child("Acme::A", "a",
                   object("a") + child("Acme::B", "b", object("b") + child("Object", "c", object("c"))))},
        {"child with a field",
         object("root") + child("Acme::A", "a", object("a", field("Acme::F", "f", container("f"))))},
        {"class with markup", object("root") + child("Acme<int>", "a", object("a"))},
    };
    for (auto const& [name, text] : documents) {
        SCOPED_TRACE(name);
        expectSame(converted(header + text, "text"), header + text);
        // A name that is no name of an element cannot stand in XML.
        if (name == "class with markup")
            continue;
        expectLossless(header + text);
    }
}

TEST_F(Convert, ClassNamesThatXmlCannotCarryAreReported) {
    std::string const text = header + object("root") + child("Acme<int>", "a", object("a"));
    std::string const out = put("out", "old");
    Ending const result = run({"convert", "-", out, "--to", "xml"}, text);
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err, "");
    EXPECT_EQ(contentOf(out), "old");
}

TEST_F(Convert, LinksAreKept) {
    // Links are written from the lowest priority up.
    std::string const links =
        link("PreObserver", "/Nobody", 10, "PreNotify") + link("PreObserver", "/A", 50, "PreNotify") +
        link("PostObserver", "~/Nowhere", 10, "Notify") + link("PostObserver", "/A", 10, "Notify") +
        link("PostObserver", "/A", 20, "Propagate");
    std::string const ofApplications = link("PreObserver", "/A", 30, "Acme.Ask") +
                                       link("PreObserver", "/A", 40, "PreNotify") +
                                       link("PostObserver", "/A", 40, "Acme.Log");
    std::map<std::string, std::string> const documents = {
        {"of an attribute", attribute("int", "n", "1", links)},
        {"of an attribute without a value", attribute("int", "n", "", "\nWrite 1" + links)},
        {"of a container", links},
        {"with actions of applications", attribute("int", "n", "1", ofApplications) + ofApplications},
    };
    for (auto const& [name, text] : documents) {
        SCOPED_TRACE(name);
        expectLossless(header + object("root", text) + child("Object", "A", object("A", text)));
        expectLossless(header + container("root", text));
    }
}

/// The ids of a document, renamed in the order in which they come.
std::string withRenamedIds(std::string const& text) {
    std::regex const id("(InstanceID (?:value=\")?)([0-9]+)");
    std::map<std::string, std::string> names;
    std::string result;
    std::size_t end = 0;
    for (auto found = std::sregex_iterator(text.begin(), text.end(), id); found != std::sregex_iterator();
         ++found) {
        result += text.substr(end, static_cast<std::size_t>(found->position()) - end);
        std::string const name = "#" + std::to_string(names.size() + 1);
        result += found->str(1) + names.emplace(found->str(2), name).first->second;
        end = static_cast<std::size_t>(found->position() + found->length());
    }
    return result + text.substr(end);
}

TEST_F(Convert, SharedInstancesStayShared) {
    std::string const id7 = "\nInstanceID 7";
    std::string const id9 = "\nInstanceID 9";
    std::string const reference = "\nReferenceToShared ";
    std::map<std::string, std::string> const documents = {
        {"fields", container("root", field("AttrContainer", "a", id7 + container("x")) +
                                         field("AttrContainer", "b", id7 + reference))},
        {"nothing shared", container("root", field("AttrContainer", "a", id7 + container("x")))},
        {"what is around it",
         container("root", field("AttrContainer", "a",
                                 id7 + container("x", field("AttrContainer", "b",
                                                            id9 + container("y", field("AttrContainer", "up",
                                                                                       id7 + reference))))))},
        {"field of two children",
         object("root") +
             child("Object", "c", id7 + object("c", field("AttrContainer", "f", id9 + container("f")))) +
             child("Object", "d",
                   "\nInstanceID 18446744073709551615" +
                       object("d", field("AttrContainer", "f", id9 + reference)))},
        {"unknown class", container("root", field("Acme::X", "a", id7 + container("x")) +
                                                field("Acme::X", "b", id7 + reference))},
    };
    for (auto const& [name, text] : documents) {
        SCOPED_TRACE(name);
        expectSame(withRenamedIds(converted(text, "text")), withRenamedIds(text));
        std::string const xml = converted(text, "xml");
        expectSame(withRenamedIds(converted(xml, "xml")), withRenamedIds(xml));
        expectSame(withRenamedIds(converted(xml, "text")), withRenamedIds(text));
    }
}

TEST_F(Convert, ContentThatWouldBeLostStopsIt) {
    struct Row {
        std::string name, text, kept;
    };
    std::string const known = attribute("int", "n", "1");
    std::vector<Row> const rows = {
        {"unknown entry", container("root", "\nFoo 1" + known), container("root", known)},
        {"unknown block", container("root", "\nFoo { \nBar \"}\"\n}" + known), container("root", known)},
        {"unknown type", container("root", attribute("Foo", "f", "1") + known), container("root", known)},
        {"unknown content of an object", object("root", "\nFoo 1" + known), object("root", known)},
        {"reference to nothing",
         container("root", known + field("AttrContainer", "a", "\nInstanceID 5\nReferenceToShared ")),
         container("root", known)},
        {"reference without an id",
         container("root", known + field("AttrContainer", "a", "\nReferenceToShared ")),
         container("root", known)},
        {"second root", container("root", known) + container("other"), container("root", known)},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        std::string const in = put("in", row.text);
        std::string const out = put("out", "old");
        Ending const refused = run({"convert", in, out, "--to", "text"});
        EXPECT_EQ(refused.status, 2);
        EXPECT_NE(refused.err.find(in + ":"), std::string::npos) << refused.err;
        EXPECT_EQ(contentOf(out), "old");

        Ending const lossy = run({"convert", in, out, "--to", "text", "--lossy"});
        EXPECT_EQ(lossy.status, 0) << lossy.err;
        EXPECT_NE(lossy.err, "") << "what is lost is reported";
        expectSame(contentOf(out), row.kept);
    }
}

TEST_F(Convert, ManyPlaceholdersDoNotHideALoss) {
    std::string text = object("root");
    for (int i = 0; i < 150; ++i) {
        std::string const name = "p" + std::to_string(i);
        text += child("Acme::Pump", name, object(name));
    }
    expectSame(converted(text, "text"), text);
    text += child("Object", "c", "\nInstanceID 5\nReferenceToShared ");
    Ending const result = run({"convert", "-", "-", "--to", "text"}, text);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
}

TEST_F(Convert, DamagedDocumentsAreNotWrittenEvenWithLoss) {
    std::string const whole = header + object("root") + child("Object", "c", object("c"));
    for (std::string const& text : {std::string(), std::string("\n \n"), std::string("nonsense"), header,
                                    whole.substr(0, whole.size() - 1), whole.substr(0, whole.size() / 2),
                                    std::string("<?xml version=\"1.0\"?>\n<a/>\n")}) {
        SCOPED_TRACE(text);
        std::string const out = put("out", "old");
        Ending const result = run({"convert", "-", out, "--to", "xml", "--lossy"}, text);
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(result.err.starts_with("standard input:")) << result.err;
        EXPECT_EQ(contentOf(out), "old");
    }
}

TEST_F(Convert, FailureToWriteLeavesNothingBehind) {
    std::string const in = put("in", container("root"));
    fs::create_directory(path("folder"));
    std::vector<std::string> outs = {path("missing/out"), path("folder"), path("in/out"), "/dev/full"};
    fs::create_symlink("loop", path("loop"));
    outs.push_back(path("loop"));
    for (std::string const& out : outs) {
        SCOPED_TRACE(out);
        Ending const result = run({"convert", in, out, "--to", "text"});
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(result.err.starts_with(out + ": ")) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_EQ(fileNames().size(), 3u) << "in, folder and loop";

    Ending const full = runWithOutput({"convert", in, "-", "--to", "text"}, "/dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_TRUE(full.err.starts_with("standard output: ")) << full.err;
}

TEST_F(Convert, InputThatCannotBeReadIsNamed) {
    fs::create_directory(path("folder"));
    for (std::string const& in : {path("missing"), path("folder")}) {
        std::string const out = put("out", "old");
        Ending const result = run({"convert", in, out, "--to", "text"});
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(result.err.starts_with(in + ": ")) << result.err;
        EXPECT_EQ(contentOf(out), "old");
    }
}

TEST_F(Convert, OldFileIsReplacedInItsPlace) {
    std::string const text = container("root");
    std::string const file = put("file", text);
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    fs::create_symlink("file", path("link"));

    Ending const result = run({"convert", file, path("link"), "--to", "xml"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_FALSE(fs::is_symlink(file));
    EXPECT_TRUE(contentOf(file).starts_with("<?xml"));
    EXPECT_EQ(fs::status(file).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(fileNames().size(), 2u) << "nothing beside them";

    EXPECT_EQ(run({"convert", file, file, "--to", "text"}).status, 0);
    EXPECT_EQ(contentOf(file), text);
}

} // namespace
