// SPDX-License-Identifier: MIT
#include "DocumentFixture.h"
#include "observation/RecordingObserver.h"

#include <AttributeContainer/AttrDefinition.h>

#include <gtest/gtest.h>

#include <any>
#include <vector>

namespace Zorvan::AttributeContainer::Testing {

namespace {

std::string const NAMED = attr("String", "Name", "Value \"r\"\n");
std::string const NOTIFY_A = link("PostObserver", "a", "Priority 5\nAction \"Notify\"\n");

std::string document(std::string const& entries) { return block("AttrContainer", NAMED + entries); }

std::shared_ptr<AttrContainer> containerOf(std::string const& text) {
    auto container = AttrContainer::create();
    EXPECT_EQ(verdict(read(*container, text)), "ok");
    return container;
}

} // namespace

TEST(ContainerSerializationTest, DocumentIsWrittenAsItIsRead) {
    std::string const text =
        "\nAttrContainer { \nAttr<String> { \nName \"Name\"\nValue \"root\"\n}\nAttr<int> { "
        "\nName \"count\"\nValue 5\nWrite 1\n}\nSubContainer { \n\"AttrContainer\" "
        "\"settings\"\nAttrContainer { \nAttr<String> { \nName \"Name\"\nValue \"cfg\"\n}\n}\n}\n}";
    auto const container = containerOf(text);
    EXPECT_EQ(outline(*container), "AttrContainer root{count=5}[settings:AttrContainer cfg{}]");
    std::string written = write(*container);
    for (std::size_t at; (at = written.find("\" \n")) != std::string::npos;)
        written.erase(at + 1, 1); // Behind the names of a member.
    EXPECT_EQ(written, text);
}

TEST(ContainerSerializationTest, EveryEntryIsReadOrReportedInBothRenderings) {
    struct Row {
        std::string entries, verdict, tree;
    };
    std::string const five = attr("int", "n", "Value 5\n");
    std::string const unknown = "UnknownContent(UnknownKeyword)";
    std::vector<Row> const rows = {
        {five, "ok", "{n=5}"},
        {attr("int", "n", ""), "ok", "{n=0}"},
        {five + five, "ok", "{n=5 n=5}"},
        {attr("int", "not valid", "Value 5\n"), "ContentSkipped", "{AttrContainer=5}"},
        {attr("int", "", "Value 5\n"), "ContentSkipped", "{}"},
        // What is unknown is passed over, whole, and the rest is read.
        {"Foo 1 \"}\"\n" + five, unknown, "{n=5}"},
        {block("Foo", "Bar \"}\" {\n}\n") + five, unknown, "{n=5}"},
        {"\"Name\" \"x\"\n" + five, unknown, "{n=5}"},
        {"InstanceID 7\nFieldHandle 1 2\n" + five, "UnknownContent(UnknownKeyword UnknownKeyword)", "{n=5}"},
        {document(five) + five, unknown, "{n=5}"},
        {block("Attr<Foo>", "Name \"m\"\nValue 1\n") + "Name \"k\"\n" + five,
         "UnknownContent(UnknownKeyword UnknownKeyword)", "{n=5}"},
        {block("Attr<int>", "Value 1\n") + five, unknown, "{n=5}"},
        {block("Attr<int>", "") + five, unknown, "{n=5}"},
        {attr("int", "n", "Foo \"}\"\nName \"m\"\nValue 5\n"),
         "UnknownContent(UnknownContent(UnknownKeyword))", "{n=5}"},
        {"SubContainer\nAttrContainer\n" + five, "UnknownContent(UnknownKeyword UnknownKeyword)", "{n=5}"},
        // Types without a class, and values that do not parse, end the read.
        {attr("Json::Value", "n", "Value 5\n"), "AttributeNotCreated", ""},
        {attr("int", "n", "Value x\n"), "StreamFailure", ""},
        {attr("int16_t", "n", "Value 70000\n"), "StreamFailure", ""},
        // Links stand before, between and behind the other entries.
        {attr("int", "n", "Value 5\n" + NOTIFY_A) + NOTIFY_A + five, "ok", "{n=5 n=5}"},
        {NOTIFY_A + member("SubContainer", "AttrContainer", "f", document("")), "ok",
         "{}[f:AttrContainer r{}]"},
        {attr("int", "n", NOTIFY_A + "Write 1\nValue 5\n"), "ok", "{n=5}"},
        {attr("int", "n", link("PreObserver", "a", "Action \"None\"\n") + "Value 5\n"), "ObserverUnresolved",
         "{n=5}"},
        {link("PostObserver", "a", "Foo 1\nAction \"Notify\"\n") + five, unknown, "{n=5}"},
        {attr("int", "n", link("PostObserver", "a", "Foo 1\n") + "Value 5\n"),
         "UnknownContent(UnknownContent(UnknownKeyword))", "{n=5}"},
        // Fields.
        {member("SubContainer", "AttrContainer", "f", ""), "ok", "{}[f:AttrContainer AttrContainer{}]"},
        {member("SubContainer", "AttrContainer", "f", five) + five, "ok",
         "{n=5}[f:AttrContainer AttrContainer{n=5}]"},
        {member("SubContainer", "Object", "f", document(five) + member("Child", "Object", "c", "")) + five,
         "ok", "{n=5}[f:Object r{n=5}(Object c{})]"},
        {member("SubContainer", "AttrContainer", "f", document("")) +
             member("SubContainer", "AttrContainer", "f", document(five)),
         "ok", "{}[f:AttrContainer r{}][f:AttrContainer r{n=5}]"},
        {member("SubContainer", "AttrContainer", "f", "FieldToken 9\n" + document("Foo 1\n")),
         "UnknownContent(UnknownContent(UnknownContent(UnknownKeyword)))", "{}[f:AttrContainer r{}]"},
        {member("SubContainer", "AttrContainer", "f", document("") + "Foo 1\n"), "ContentSkipped",
         "{}[f:AttrContainer r{}]"},
        {block("SubContainer", document(five)) + five, unknown, "{n=5}"},
    };
    for (Row const& row : rows)
        for (auto const format : {TEXT, XML}) {
            std::string const text = document(row.entries);
            SCOPED_TRACE(format == TEXT ? text : xmlOf(text));
            auto const container = AttrContainer::create();
            EXPECT_EQ(verdict(read(*container, format == TEXT ? text : xmlOf(text), format)), row.verdict);
            if (!row.tree.empty()) {
                EXPECT_EQ(outline(*container), "AttrContainer r" + row.tree);
            }
        }
}

TEST(ContainerSerializationTest, InputEndsOnlyWhereABlockMay) {
    struct Row {
        ModelFormat::Format format;
        std::string text, verdict;
    };
    std::string const xml = xmlOf(document(""));
    std::string const open = xml.substr(0, xml.find("</VOXA>"));
    std::vector<Row> const rows = {
        {TEXT, "", "StreamFailure"},
        {TEXT, " \n", "StreamFailure"},
        {TEXT, "AttrContainer", "StreamFailure"},
        {TEXT, "AttrContainer \n", "StreamFailure"},
        {TEXT, "AttrContainer {", "StreamFailure"},
        {TEXT, NAMED, "ok"},
        {TEXT, NAMED + "Attr<int> ", "StreamFailure"},
        {TEXT, document(""), "ok"},
        {XML, xml, "ok"},
        {XML, open, "StreamFailure"},
        {XML, open + "</VOX", "StreamFailure"},
        {XML, open + "<", "StreamFailure"},
        {XML, open + "<!-- end --></VOXA>", "ok"},
        {XML, open + "<Other/></VOXA>", "ok"},
        {XML, document(""), "StreamFailure"},
        {TEXT, xml, "StreamFailure"},
        {TEXT, "Foo 1\n", "StreamFailure"},
        {TEXT, "Foo {\n}\n", "UnknownContent(UnknownKeyword)"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.text);
        auto const container = AttrContainer::create();
        EXPECT_EQ(verdict(read(*container, row.text, row.format)), row.verdict);
    }
}

// The "}" of what was read is current for whoever reads on, in XML too; an end tag of its own block follows
// it.
TEST(ContainerSerializationTest, ApplicationReadsOnBehindAContainer) {
    for (auto const format : {TEXT, XML})
        for (std::string const behind : {"Next {\n}\n", "}\nNext {\n}\n"}) {
            std::string const text = document("");
            std::string const whole = behind[0] == '}' ? block("Mine", text) + "Next {\n}\n" : text + behind;
            std::istringstream in(format == TEXT ? whole : xmlOf(whole));
            ReadFromScope scope(in, readContext(format));
            ModelInFormat& imf = scope.getImf();
            std::string title;
            if (format == XML) {
                imf.determineFormat();
                imf.readHeader(title);
            }
            if (behind[0] == '}') {
                ASSERT_EQ(imf.getKeyword(), "Mine");
                imf.nextKeyword();
                imf.nextKeyword();
            }
            EXPECT_EQ(verdict(AttrContainer::create()->readFrom(in, readContext(format))), "ok");
            ASSERT_EQ(imf.getKeyword(), "}");
            imf.nextKeyword();
            if (behind[0] == '}') {
                ASSERT_EQ(imf.getKeyword(), "}");
                imf.nextKeyword();
            }
            EXPECT_EQ(imf.getKeyword(), "Next");
        }
}

TEST(ContainerSerializationTest, AttributeIsReadAloneOrInItsBlock) {
    for (auto const format : {TEXT, XML}) {
        auto const written = std::make_shared<CustAttr<int>>(5);
        AttrContainer::create()->addAttribute(written, "n");
        std::ostringstream out;
        ASSERT_EQ(verdict(written->writeTo(out, std::make_shared<WriteContextBase>(format))), "ok");
        std::istringstream in(out.str());
        CustAttr<int> attribute;
        EXPECT_EQ(verdict(attribute.readFrom(in, readContext(format))), "ok");
        EXPECT_EQ(attribute.getValue(), 5);
    }
    CustAttr<int> attribute;
    std::istringstream in("Value 7\nWrite 1\n}\nrest");
    EXPECT_EQ(verdict(attribute.readFrom(in, readContext(TEXT))), "ok");
    EXPECT_EQ(attribute.getFlags().write, 1);
    std::istringstream cut("Valu");
    EXPECT_EQ(verdict(attribute.readFrom(cut, readContext(TEXT))), "StreamFailure");
    EXPECT_EQ(verdict(attribute.readFrom(in, nullptr)), "NoContext");
}

TEST(ContainerSerializationTest, LiveTreeHearsWhatADocumentStoresAndKeepsWhatItIsNotToTake) {
    auto const container =
        containerOf(document(attr("int", "n", "Value 1\n") + attr("int", "m", "Value 2\n")));
    auto const n = std::dynamic_pointer_cast<Attr<int>>(container->getAttr("n").lock());
    Log log;
    auto const listener = RecordingObserver::make("told", log);
    n->addObserver(*listener, 5, NOTIFY, true);
    n->addPreObserver(*listener, 5, PRE_NOTIFY, true);
    std::string const text =
        document(attr("int", "n", "Value 5\nWrite 1\n" + link("PostObserver", "", "Action \"Notify\"\n")) +
                 attr("int", "m", ""));
    EXPECT_EQ(verdict(read(*container, text)), "ok");
    EXPECT_EQ(log, Log{"told"});
    EXPECT_EQ(outline(*container), "AttrContainer r{n=5 m=0}");
    EXPECT_EQ(n->getFlags().write, 1);

    auto const marked = readContext(TEXT);
    marked->setReadMarked(true);
    n->setMarked(true);
    EXPECT_EQ(verdict(read(*container,
                           document(attr("int", "n", "Value 6\n") + attr("int", "m", "Value 7\n")), marked)),
              "ok");
    EXPECT_EQ(outline(*container), "AttrContainer r{n=6 m=0}");
    // Another type's value is taken over as text; what that changes is reported.
    EXPECT_EQ(verdict(read(*container, document(attr("double", "n", "Value 8\n")))), "ok");
    EXPECT_EQ(verdict(read(*container, document(attr("String", "n", "Value \"x\"\n")))), "ContentSkipped");
}

TEST(ContainerSerializationTest, ListenerMayLetGoOfTheTreeOrReadAnotherDocument) {
    auto container = containerOf(document(attr("int", "n", "")));
    auto const n = container->getAttr("n").lock();
    auto const other = AttrContainer::create();
    Log log;
    auto const listener = RecordingObserver::make("told", log);
    listener->changed = [&](Observable&, Cause const&) {
        container.reset();
        EXPECT_EQ(verdict(read(*other, xmlOf(document(attr("int", "k", "Value 1\n"))), XML)), "ok");
        EXPECT_EQ(verdict(read(*other, "AttrContainer {")), "StreamFailure");
        return Action::ExecOk;
    };
    n->addObserver(*listener, 5, NOTIFY, true);
    EXPECT_EQ(verdict(read(*container, document(attr("int", "n", "Value 1\n") +
                                                member("SubContainer", "AttrContainer", "f", document(""))))),
              "ok");
    EXPECT_EQ(container, nullptr);
    EXPECT_EQ(outline(*other), "AttrContainer r{k=1}");
}

TEST(ContainerSerializationTest, OptionsDecideWhatIsWrittenAndRead) {
    auto const container = containerOf(
        document(attr("int", "n", "") + member("SubContainer", "None", "f", document(attr("int", "k", "")))));
    auto const context = std::make_shared<WriteContextBase>();
    auto const has = [&](char const* text) {
        return write(*container, context).find(text) != std::string::npos;
    };
    EXPECT_FALSE(has("Value 0"));
    context->setWriteDefaultValues(true);
    EXPECT_TRUE(has("Value 0"));
    context->setWriteFields(false);
    EXPECT_FALSE(has("SubContainer"));
    context->setWriteFields(true);
    context->setWriteOnlyMarked(true);
    EXPECT_FALSE(has("Attr<") || has("SubContainer"));
    container->getField("f").lock()->getAttr("k").lock()->setMarked(true);
    EXPECT_TRUE(has("SubContainer") && has("\"k\""));
    EXPECT_FALSE(has("\"n\""));

    auto const strict = readContext(TEXT);
    strict->setAreUnknownContainersAccepted(false);
    auto const target = AttrContainer::create();
    Result const result = read(
        *target, document(member("SubContainer", "None", "f", document("")) + attr("int", "n", "Value 5\n")),
        strict);
    EXPECT_EQ(verdict(result), "UnknownContent(UnknownKeyword)");
    auto const& infos = result->getNested().front()->getInfos();
    EXPECT_EQ(std::any_cast<std::string>(infos.at("Description")),
              "Unknown Key: AttrContainer Unknown type: None");
    EXPECT_EQ(infos.count("Offset"), 1u);
    EXPECT_EQ(outline(*target), "AttrContainer r{n=5}");
    std::istringstream in;
    std::ostringstream out;
    EXPECT_EQ(verdict(target->readFrom(in, nullptr)), "NoContext");
    EXPECT_EQ(target->writeTo(out, nullptr)->getLine(), 1301);
}

} // namespace Zorvan::AttributeContainer::Testing
