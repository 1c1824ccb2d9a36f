// SPDX-License-Identifier: MIT
#include "Program.h"

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/WriteContextBase.h>

#include <map>
#include <regex>
#include <set>

using namespace kxmodel_test;
using namespace Zorvan::AttributeContainer;
namespace fs = std::filesystem;

namespace {

std::string sample(std::string const& name) { return std::string(KX_SAMPLE_DATA_DIR) + "/" + name; }

class Convert : public Program {
protected:
    /// The document comes back from itself and from XML, and XML from itself.
    void expectLossless(std::string const& text, std::string const& throughXml) const {
        SCOPED_TRACE(text.substr(0, 300));
        expectSame(converted(text, "text"), text);
        std::string const xml = converted(text, "xml");
        expectSame(converted(xml, "xml"), xml);
        expectSame(converted(xml, "text"), throughXml);
    }
    void expectLossless(std::string const& text) const { expectLossless(text, text); }
};

TEST_F(Convert, SampleDocumentsConvertIntoEachOther) {
    std::string const text = sample("world-110m.model");
    std::string const xml = sample("world-110m.model.xml");
    for (std::string const& in : {text, xml})
        for (std::string const& expected : {text, xml}) {
            SCOPED_TRACE(in + " to " + expected);
            Ending const result = run({"convert", in, path("out"), "--to", expected == xml ? "xml" : "text"});
            EXPECT_EQ(result.status, 0) << result.err;
            EXPECT_EQ(result.out + result.err, "");
            EXPECT_TRUE(contentOf(path("out")) == contentOf(expected));
        }
}

TEST_F(Convert, HeadersAreKept) {
    std::string const own = "\n\"WtLib\" 9.1.0.0\n\"RootModel\" 0.0.0.0";
    // XML with versions comes back with the root model's, which it does not carry.
    std::vector<std::pair<std::string, std::string>> rows = {
        {"\"Title\"\n\"WtLib\" 9.1.0.0", "\"Title\"" + own},
        {"\"Title\"\n\"OtherLib\" 3.1.4.1\n\"Acme model\" 2.7.1.8",
         "\"Title\"\n\"OtherLib\" 3.1.4.1\n\"RootModel\" 0.0.0.0"},
    };
    for (std::string const header : {"", "\"Title\"\n", "\"\"\n", "\"{ AttrContainer {\"\n"})
        rows.emplace_back(header, header);
    for (std::string const title :
         {"Title", "", " blanks ", "quote \\\" apostrophe ' backslash \\\\", "'begins like a string'",
          "\\\"so does this\\\"", "two lines\\nand -- dashes --> <VOXA>",
          "\\uFFC3\\uFFA9t\\uFFC3\\uFFA9 & <b>"})
        rows.emplace_back('"' + title + '"' + own, '"' + title + '"' + own);
    for (auto const& [header, throughXml] : rows)
        expectLossless(header + container("root"), throughXml + container("root"));
}

/// Attributes of every type, as the library writes them: with each of the values that is one of the type, and
/// without a value.
std::string attributesOfAllTypes() {
    // One a line.
    std::istringstream values(
        "true\n-128\n200\n-32768\n65535\n-2147483648\n4294967295\n-9223372036854775808\n"
        "18446744073709551615\n1234567.891\n2.2250738585072014e-308\n0 -1\n65535 0 1\n"
        "0.1 -1e300 3e-30\n-0.1 1.17549435e-38 3.40282347e38 4\n"
        "1 0 0 0  0 0.1 0 0  0 0 1 0  -4 0 0 1\n{ true false }\n{ 0 1 }\n{ -128 127 }\n{ }\n"
        "{ 0 255 65535 4294967295 18446744073709551615 }\n"
        "{ -9223372036854775808 -1e-10 }\n{ 1 2 3 4 5 6 7 8 9 10 11 65535 }\n"
        "{ 1 0 0 0  0 0.1 0 0  0 0 1 0  -4 0 0 1 }\n{ { 1 2 3 4 5 6 } { 7 8 9 } { } }\n"
        "970b1fae-00c4-5822-82d6-de95d462e519\n"
        "{ 970b1fae-00c4-5822-82d6-de95d462e519 00000000-0000-0000-0000-000000000000 }\n"
        "2 \"}\" \"a\"\n1 \"=>\"=>\"\"\n\"}\"");
    std::set<std::string> types;
    std::string content;
    for (std::string value; std::getline(values, value);)
        for (std::uint32_t type = 0; type < AttrTypeUnknown; ++type) {
            auto const made = AttrDefinition{0, "", static_cast<AttrType>(type)}.createAttr(
                CreateType::Blank, std::nullopt, std::nullopt);
            std::istringstream in(value);
            if (made)
                made->readValueFrom(in, std::make_shared<ReadContextBase>());
            if (!made || in.fail() || !(in >> std::ws).eof())
                continue;
            std::string const shortType = made->getClassName().substr(5, made->getClassName().size() - 6);
            if (types.insert(shortType).second)
                content += attribute(shortType, "initial." + shortType, "", "\nWrite 1");
            std::ostringstream written;
            EXPECT_FALSE(made->writeTo(written, std::make_shared<WriteContextBase>()));
            content += attribute(shortType, "a" + std::to_string(content.size()), "", written.str());
        }
    EXPECT_EQ(types.size(), 48u);
    return content;
}

TEST_F(Convert, ValuesThatAreHardToCarryAreKept) {
    std::string content = attributesOfAllTypes();
    int count = 0;
    std::istringstream texts(
        "| |quote \\\" and backslash \\\\|\\\\\\\"|apostrophe '|{|}|} }\\n}|a\\nb\\r\\nc|tab\there|"
        "<b>&amp;</b>|&lt;|]]> -->|/>\\\"|value=\\\"|\\uFFC3\\uFFA9 \\uFFE2\\uFF82\\uFFAC \\uFFFF|\\\\uFFC3|"
        "\\\\n|Child|AttrContainer {|InstanceID 5|=>|''|\x01\x1f\x7f|trailing blank ");
    for (std::string text; std::getline(texts, text, '|');) {
        std::string const number = std::to_string(++count), quoted = '"' + text + '"';
        content += attribute("String", "s" + number, text.empty() ? "" : quoted) +
                   attribute("StringArray", "a" + number, "2 " + quoted + " " + quoted) +
                   attribute("StringMap", "m" + number, "1 " + quoted + "=>" + quoted);
    }
    expectLossless(header + container("root", content));
}

TEST_F(Convert, ContentOfUnknownClassesIsKept) {
    std::string const odd = "\nSerial 17 \"x } y\"\nData { \nBits \"}{ ' <\"\nMore { \nLess 1\n}\n}";
    std::string const mark = attribute("int", "mark", "3");
    expectLossless(
        header +
        object("root", field("Acme::Gauge", "gauge",
                             container("g", mark + field("Acme::Needle", "needle", container("n")))) +
                           field("Acme::Node", "node",
                                 object("n") + child("Acme::Leaf", "leaf", object("leaf")) +
                                     child("Object", "known", object("known"))) +
                           field("Acme::Gauge", "no valid name",
                                 container("a name", attribute("int", "not a name", "3")))) +
        child("Acme::Pump", "pump", object("pump", mark)) +
        child("Acme::Pump", "header", odd + object("header")) + child("Acme::Blob", "no object", odd) +
        child("Object", "next", object("next")) + child("Acme::Blob", "blob", object("blob", odd)) +
        child("Acme::A", "a",
              object("a", field("Acme::F", "f", container("f"))) +
                  child("Acme::B", "b", object("b") + child("Object", "c", object("c")))));
    std::string const text = object("root") + child("Acme<int>", "a", object("a"));
    expectSame(converted(text, "text"), text);
    EXPECT_EQ(run({"convert", "-", "-", "--to", "xml"}, text).status, 2) << "XML has no such name";
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
    std::string const text = attribute("int", "n", "1", links) + attribute("int", "m", "1", ofApplications) +
                             attribute("int", "k", "", "\nWrite 1" + links);
    for (std::string const& own : {links, ofApplications})
        expectLossless(header + object("root", text + own) + child("Object", "A", object("A", text + own)));
}

/// The ids of a document, renamed in the order in which they come.
std::string withRenamedIds(std::string text) {
    std::regex const id("InstanceID (?:value=\")?([0-9]+)");
    std::map<std::string, std::string> names;
    std::smatch found;
    for (auto begin = text.cbegin(); std::regex_search(begin, text.cend(), found, id);) {
        std::string const name =
            names.emplace(found[1], "#" + std::to_string(names.size() + 1)).first->second;
        auto const at = found[1].first - text.cbegin();
        text.replace(found[1].first, found[1].second, name);
        begin = text.cbegin() + at;
    }
    return text;
}

TEST_F(Convert, SharedInstancesStayShared) {
    std::string const id7 = "\nInstanceID 7", id9 = "\nInstanceID 9", reference = "\nReferenceToShared ";
    auto const known = [](char const* name, std::string const& content) {
        return field("AttrContainer", name, content);
    };
    for (std::string const& text :
         {container("root", known("a", id7 + container("x")) + known("b", id7 + reference)),
          container(
              "up",
              known("a",
                    id7 + container("x", known("b", id9 + container("y", known("up", id7 + reference)))))),
          object("root") + child("Object", "c", id7 + object("c", known("f", id9 + container("f")))) +
              child("Object", "d",
                    "\nInstanceID 18446744073709551615" + object("d", known("f", id9 + reference))),
          container("unknown",
                    field("Acme::X", "a", id7 + container("x")) + field("Acme::X", "b", id7 + reference))}) {
        SCOPED_TRACE(text);
        std::string const xml = converted(text, "xml");
        expectSame(withRenamedIds(converted(text, "text")), withRenamedIds(text));
        expectSame(withRenamedIds(converted(xml, "xml")), withRenamedIds(xml));
        expectSame(withRenamedIds(converted(xml, "text")), withRenamedIds(text));
    }
}

TEST_F(Convert, ContentThatWouldBeLostStopsIt) {
    std::string const known = attribute("int", "n", "1"), kept = container("root", known);
    std::string const reference = "\nReferenceToShared ";
    std::string placeholders = object("root");
    for (int i = 0; i < 150; ++i)
        placeholders += child("Acme::Pump", "p" + std::to_string(i), object("p" + std::to_string(i)));
    std::pair<std::string, std::string> const rows[] = {
        {container("root", "\nFoo 1" + known), kept},
        {container("root", "\nFoo { \nBar \"}\"\n}" + known), kept},
        {container("root", attribute("Foo", "f", "1") + known), kept},
        {object("root", "\nFoo 1" + known), object("root", known)},
        {container("root", known + field("AttrContainer", "a", "\nInstanceID 5" + reference)), kept},
        {container("root", known + field("AttrContainer", "a", reference)), kept},
        {kept + container("other"), kept},
    };
    for (auto const& [text, expected] : rows) {
        SCOPED_TRACE(text.substr(0, 300));
        std::string const in = put("in", text), out = put("out", "old");
        Ending const refused = run({"convert", in, out, "--to", "text"});
        EXPECT_EQ(refused.status, 2);
        EXPECT_NE(refused.err.find(in + ":"), std::string::npos) << refused.err;
        EXPECT_EQ(contentOf(out), "old");
        Ending const lossy = run({"convert", in, out, "--to", "text", "--lossy"});
        EXPECT_EQ(lossy.status, 0) << lossy.err;
        EXPECT_NE(lossy.err, "") << "what is lost is reported";
        expectSame(contentOf(out), expected);
    }
    expectSame(converted(placeholders, "text"), placeholders);
    placeholders += child("Object", "c", "\nInstanceID 5" + reference);
    EXPECT_EQ(run({"convert", "-", "-", "--to", "text"}, placeholders).status, 2) << "hidden by the others";
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

TEST_F(Convert, FilesThatCannotBeReadOrWrittenAreNamed) {
    std::string const in = put("in", container("root"));
    fs::create_directory(path("folder"));
    std::vector<std::string> outputs = {path("missing/out"), path("folder"), path("in/out")};
    if (hasPosixFiles) {
        fs::create_symlink("loop", path("loop"));
        outputs.insert(outputs.end(), {path("loop"), "/dev/full"});
    }
    for (std::string const& out : outputs) {
        Ending const result = run({"convert", in, out, "--to", "text"});
        EXPECT_EQ(result.status, 2) << out;
        EXPECT_TRUE(result.err.starts_with(out + ": ")) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    for (std::string const& missing : {path("missing"), path("folder")})
        EXPECT_TRUE(run({"convert", missing, in, "--to", "xml"}).err.starts_with(missing + ": "));
    EXPECT_EQ(contentOf(in), container("root"));
    EXPECT_EQ(numFiles(), hasPosixFiles ? 3 : 2) << "in, folder and loop";

    if (!hasPosixFiles)
        return;
    Ending const full = runWithOutput({"convert", in, "-", "--to", "text"}, "/dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_TRUE(full.err.starts_with("standard output: ")) << full.err;
}

TEST_F(Convert, NamesOfFilesAreUtf8) {
    std::string const in = put("Gr\xc3\xb6\xc3\x9f"
                               "e \xd0\xb6\xf0\x9f\x98\x80 'a' & b",
                               container("root"));
    EXPECT_EQ(run({"convert", in, in + " copy", "--to", "text"}).status, 0);
    EXPECT_EQ(contentOf(in + " copy"), container("root"));
    Ending const missing = run({"show", in + " missing"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_TRUE(missing.err.starts_with(in + " missing: ")) << missing.err;
}

TEST_F(Convert, OldFileIsReplacedInItsPlace) {
    std::string const text = container("root");
    std::string const file = put("file", text);
    fs::perms const permissions = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
    if (hasPosixFiles) {
        fs::permissions(file, permissions);
        fs::create_symlink("file", path("link"));
    }

    Ending const result = run({"convert", file, hasPosixFiles ? path("link") : file, "--to", "xml"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(contentOf(file).starts_with("<?xml"));
    if (hasPosixFiles) {
        EXPECT_TRUE(fs::is_symlink(path("link")));
        EXPECT_FALSE(fs::is_symlink(file));
        EXPECT_EQ(fs::status(file).permissions(), permissions);
    }
    EXPECT_EQ(numFiles(), hasPosixFiles ? 2 : 1) << "nothing beside them";

    EXPECT_EQ(run({"convert", file, file, "--to", "text"}).status, 0);
    EXPECT_EQ(contentOf(file), text);
}

} // namespace
