// SPDX-License-Identifier: MIT
#include "DocumentFixture.h"

#include <AttributeContainer/FallbackObject.h>

#include <gtest/gtest.h>

#include <vector>

namespace Zorvan::AttributeContainer::Testing {

namespace {

std::string const PART = block("AttrContainer", attr("String", "Name", "Value \"u\"\n"));
std::string const NOT_VALID =
    block("AttrContainer", attr("String", "Name", "Value \"u\"\n") + attr("int", "a b", "Value 5\n"));
std::string const WITH_FIELD = block("AttrContainer", member("SubContainer", "AttrContainer", "f", PART));
std::string const UNREADABLE = block("AttrContainer", attr("int", "n", "Value x\n"));

std::string document(std::string const& entries) { return member("Child", "None", "u", entries); }

std::shared_ptr<FallbackObject> placeholderIn(Object const& root) {
    return std::dynamic_pointer_cast<FallbackObject>(root.children().getChild(0));
}

} // namespace

TEST(FallbackObjectTest, ContentIsParsedOrKeptAndIsWrittenBackInBothRenderings) {
    struct Row {
        std::string entries, header, body;
        bool isParsed;
        std::string tree;
    };
    std::vector<Row> const rows = {
        {PART, "", "", true, "FallbackObject u{}"},
        {NOT_VALID, "", "", true, "FallbackObject u{a b=5}"},
        {"MajorVersion 3\n" + PART, "MajorVersion 3\n", "", true, "FallbackObject u{}"},
        {block("Foo", PART) + "Bar \"}\"\n" + PART + member("Child", "Object", "c", ""),
         block("Foo", PART) + "Bar \"}\"\n", "", true, "FallbackObject u{}(Object c{})"},
        {PART + document(PART), "", "", true, "FallbackObject u{}(FallbackObject u{})"},
        {"", "", "", false, "FallbackObject u{}"},
        {"Foo 1\n" + block("Bar", "k 1\n"), "", "Foo 1\n" + block("Bar", "k 1\n"), false,
         "FallbackObject u{}"},
        // What cannot be parsed without loss stays as it is, and leaves nothing behind.
        {UNREADABLE, "", UNREADABLE, false, "FallbackObject u{}"},
        {"Foo 1\n" + NOT_VALID + member("Child", "Object", "c", "Foo 1\n"), "Foo 1\n",
         NOT_VALID + member("Child", "Object", "c", "Foo 1\n"), false, "FallbackObject u{}"},
        {WITH_FIELD + "Foo 1\n", "", WITH_FIELD + "Foo 1\n", false, "FallbackObject u{}"},
        {PART + "Foo 1\n", "", PART + "Foo 1\n", false, "FallbackObject u{}"},
        {PART + member("Child", "Object", "c", "ReferenceToShared \n"), "",
         PART + member("Child", "Object", "c", "ReferenceToShared \n"), false, "FallbackObject u{}"},
        {block("AttrContainer", member("SubContainer", "Object", "f", "ReferenceToShared \n")), "",
         block("AttrContainer", member("SubContainer", "Object", "f", "ReferenceToShared \n")), false,
         "FallbackObject u{}"},
        {block("AttrContainer", attr("int", "Event", "Value 5\n")), "",
         block("AttrContainer", attr("int", "Event", "Value 5\n")), false, "FallbackObject u{}"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.entries);
        auto const root = Object::create();
        std::string const expected = row.entries.empty() ? "UnknownClass" : "UnknownClass(ContentSkipped";
        EXPECT_EQ(verdict(read(*root, document(row.entries))).substr(0, expected.size()), expected);
        auto const placeholder = placeholderIn(*root);
        ASSERT_NE(placeholder, nullptr);
        EXPECT_EQ(placeholder->getHeaderText(), row.header);
        EXPECT_EQ(placeholder->getBodyText(), row.body);
        EXPECT_EQ(placeholder->isBodyParsed(), row.isParsed);
        EXPECT_EQ(placeholder->hasNothingPreserved(), row.entries.empty());
        EXPECT_EQ(outline(*placeholder), row.tree);
        // Read from either rendering, it is written alike in both.
        std::string const text = write(*root);
        std::string const xml = write(*root, XML);
        for (auto const format : {TEXT, XML}) {
            auto const again = Object::create();
            EXPECT_EQ(verdict(read(*again, format == TEXT ? text : xml, format)).substr(0, expected.size()),
                      expected);
            EXPECT_EQ(write(*again), text);
            EXPECT_EQ(write(*again, XML), xml);
            EXPECT_EQ(placeholderIn(*again)->isBodyParsed(), row.isParsed);
        }
    }
}

TEST(FallbackObjectTest, WhiteSpaceAroundKeptTextDoesNotGrow) {
    for (std::string const entries : {"Foo 1  \n\n\n", "Foo 1 }", "{ 1 }\n\n",
                                      "Foo \"a\n  b\" \n \n AttrContainer {\n} \n\n Bar 1\n\n"}) {
        SCOPED_TRACE(entries);
        auto const root = Object::create();
        static_cast<void>(
            read(*root, "Child {\n\"None\" \"u\"\n" + entries + (entries.ends_with('}') ? "\n" : "}\n")));
        std::string const text = write(*root);
        auto const again = Object::create();
        static_cast<void>(read(*again, text));
        EXPECT_EQ(write(*again), text);
        auto const fromXml = Object::create();
        std::string const spaced =
            "<Child>\n<None value=\"'u'\" />\n\n <Foo value=\"1\"/>\n <!-- c -->\n</Child>";
        static_cast<void>(read(*fromXml, xmlDocument(spaced), XML));
        EXPECT_NE(write(*fromXml, XML).find("<Foo value=\"1\"/>\n <!-- c -->\n</Child>"), std::string::npos);
    }
}

TEST(FallbackObjectTest, BlockIsReadFromBehindItsBraceToItsEnd) {
    auto const placeholder = FallbackObject::create();
    std::istringstream in("Foo 1\n" + PART + "}\nNext 1\n");
    {
        ReadFromScope scope(in, readContext(TEXT));
        EXPECT_EQ(verdict(placeholder->readFrom(in, readContext(TEXT))), "ContentSkipped");
        EXPECT_EQ(scope.getImf().getKeyword(), "}");
        scope.getImf().nextKeyword();
        EXPECT_EQ(scope.getImf().getKeyword(), "Next");
    }
    std::istringstream cut("Foo 1\n" + PART);
    EXPECT_EQ(verdict(placeholder->readFrom(cut, readContext(TEXT))), "StreamFailure");
    EXPECT_EQ(verdict(placeholder->readFrom(cut, nullptr)), "NoContext");
    std::ostringstream out;
    EXPECT_EQ(verdict(placeholder->writeTo(out, nullptr)), "NoContext");
}

TEST(FallbackObjectTest, CopiesKeepClassAndContent) {
    for (std::string const& entries : {"Foo 1\n" + NOT_VALID, "Foo 1\n" + UNREADABLE}) {
        auto const root = Object::create();
        static_cast<void>(read(*root, document(entries)));
        auto const copy =
            std::dynamic_pointer_cast<Object>(placeholderIn(*root)->duplicate(CreateType::Deep));
        auto const other = Object::create();
        ASSERT_TRUE(other->addChild(copy, 4));
        EXPECT_EQ(write(*other), write(*root));
        auto const blank = std::dynamic_pointer_cast<FallbackObject>(copy->duplicate(CreateType::Blank));
        EXPECT_EQ(blank->getFallbackClassName(), "None");
        EXPECT_TRUE(blank->hasNothingPreserved());
    }
}

TEST(FallbackObjectTest, DeepPlaceholdersKeepTheirTextAndErrorsTellPlacesOfTheDocument) {
    std::string text =
        block("AttrContainer", attr("int", "n", link("PreObserver", "a", "Action \"None\"\nFoo 1\n")));
    for (int depth = 0; depth < 40; ++depth)
        text = PART + document(text);
    auto const root = Object::create();
    EXPECT_EQ(verdict(read(*root, text)).substr(0, 12), "UnknownClass");
    int numParsed = 0;
    std::shared_ptr<FallbackObject> placeholder = placeholderIn(*root);
    for (; placeholder && placeholder->isBodyParsed(); placeholder = placeholderIn(*placeholder))
        ++numParsed;
    EXPECT_EQ(numParsed, 16);
    auto const again = Object::create();
    static_cast<void>(read(*again, write(*root)));
    EXPECT_EQ(write(*again), write(*root));

    std::string const unresolved = PART +
                                   document(PART + member("Child", "Object", "c", "ReferenceToShared \n")) +
                                   document("Foo 1\n" + PART + document("Bar 1\n"));
    Result const result = read(*Object::create(), unresolved);
    auto const& inner = result->getNested().back()->getNested().front()->getNested().front();
    EXPECT_EQ(std::any_cast<std::string>(inner->getInfos().at("Offset")),
              std::to_string(unresolved.find("Bar 1\n}") + 7));
}

} // namespace Zorvan::AttributeContainer::Testing
