// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "DocumentFixture.h"
#include "observation/RecordingObserver.h"

#include <AttributeContainer/AttrDefinition.h>

#include <algorithm>
#include <streambuf>

namespace Zorvan::AttributeContainer::Testing {

namespace {

std::string const NOTIFY_A = link("PostObserver", "a", "Priority 5\nAction \"Notify\"\n");

std::string number(std::string const& name, std::string const& entries) { return attr("int", name, entries); }

std::shared_ptr<AttrContainer> containerOf(std::string const& text) {
    auto container = AttrContainer::create();
    EXPECT_EQ(verdict(read(*container, text)), "ok");
    return container;
}

/// Holds no more than so many characters of its text ready.
class SparingBuffer : public std::streambuf {
public:
    SparingBuffer(std::string text, std::size_t size) : text_(std::move(text)), size_(size) {}

protected:
    int_type underflow() override {
        char* const from = text_.data() + position_;
        position_ = std::min(position_ + size_, text_.size());
        setg(text_.data(), from, text_.data() + position_);
        return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

private:
    std::string text_;
    std::size_t size_, position_ = 0;
};

/// What is read of a document, and what is said about it.
std::string readSparingly(std::string const& document, ModelFormat::Format format, std::size_t size) {
    SparingBuffer buffer(document, size);
    std::istream in(&buffer);
    ReadFromScope scope(in, readContext(format));
    if (format == XML) {
        std::string title;
        scope.getImf().determineFormat();
        scope.getImf().readHeader(title);
    }
    auto const container = AttrContainer::create();
    return verdict(container->readFrom(in, readContext(format))) + write(*container);
}

} // namespace

TEST(ContainerSerializationTest, DocumentIsWrittenAsItIsRead) {
    std::string const text =
        part("r", number("count", "Value 5\nWrite 1\n") + field("AttrContainer", "settings", part("cfg")));
    EXPECT_EQ(write(*containerOf(text)) + "\n", "\n" + text);
}

TEST(ContainerSerializationTest, EveryEntryIsReadOrReportedInBothRenderings) {
    auto cases = documentCases("entries.txt");
    for (DocumentCase& one : cases) {
        one.texts[0] = part("r", one.texts[0]);
        one.tree = one.tree.empty() ? "" : "AttrContainer r" + one.tree;
    }
    expectRead<AttrContainer>(cases);
}

TEST(ContainerSerializationTest, HowMuchTheStreamHoldsReadyMakesNoDifference) {
    std::vector<DocumentCase> cases = documentCases("entries.txt");
    cases.push_back({"all types", "", "", {""}});
    for (auto const& row : dataRows("attributes/types.txt"))
        if (!row[2].empty())
            cases.back().texts[0] += attr(row[1], "n" + row[0], "Value " + row[2] + "\n");
    for (DocumentCase const& one : cases)
        for (auto const format : {TEXT, XML}) {
            std::string const text = part("r", one.texts[0]);
            std::string const document = format == TEXT ? text : xmlOf(text);
            SCOPED_TRACE(one.place + "\n" + document);
            std::string const expected = readSparingly(document, format, 1);
            for (std::size_t const size : {std::size_t{10}, std::size_t{60}, document.size()})
                EXPECT_EQ(readSparingly(document, format, size), expected) << size;
        }
}

// The "}" of what was read is current for whoever reads on, in XML too; an end
// tag of its own block follows it.
TEST(ContainerSerializationTest, ApplicationReadsOnBehindAContainer) {
    for (auto const format : {TEXT, XML})
        for (int const numBlocks : {0, 1}) {
            std::string const whole = (numBlocks ? block("Mine", part("r")) : part("r")) + "Next {\n}\n";
            std::istringstream in(format == TEXT ? whole : xmlOf(whole));
            ReadFromScope scope(in, readContext(format));
            ModelInFormat& imf = scope.getImf();
            std::string title;
            if (format == XML) {
                imf.determineFormat();
                imf.readHeader(title);
            }
            for (int i = 0; i < 2 * numBlocks; ++i, imf.nextKeyword())
                EXPECT_EQ(imf.getKeyword(), i == 0 ? "Mine" : "{");
            EXPECT_EQ(verdict(AttrContainer::create()->readFrom(in, readContext(format))), "ok");
            for (int i = 0; i <= numBlocks; ++i, imf.nextKeyword())
                EXPECT_EQ(imf.getKeyword(), "}");
            EXPECT_EQ(imf.getKeyword(), "Next");
        }
}

TEST(ContainerSerializationTest, LiveTreeHearsWhatADocumentStoresAndKeepsWhatItIsNotToTake) {
    auto const container = containerOf(part("r", number("n", "Value 1\n") + number("m", "Value 2\n")));
    auto const n = container->getAttr("n").lock();
    Log log;
    auto const listener = RecordingObserver::make("told", log);
    n->addObserver(*listener, 5, NOTIFY, true);
    n->addPreObserver(*listener, 5, PRE_NOTIFY, true);
    std::string const linked = "Value 5\nWrite 1\n" + link("PostObserver", "", "Action \"Notify\"\n");
    EXPECT_EQ(verdict(read(*container, part("r", number("n", linked) + number("m", "")))), "ok");
    EXPECT_EQ(log, Log{"told"});
    EXPECT_EQ(outline(*container), "AttrContainer r{n=5 m=0}");
    EXPECT_EQ(n->getFlags().write, 1);

    auto const marked = readContext(TEXT);
    marked->setReadMarked(true);
    n->setMarked(true);
    std::string const both = number("n", "Value 6\n") + number("m", "Value 7\n");
    EXPECT_EQ(verdict(read(*container, part("r", both), marked)), "ok");
    EXPECT_EQ(outline(*container), "AttrContainer r{n=6 m=0}");
    // Another type's value is taken over as text; what that changes is reported.
    EXPECT_EQ(verdict(read(*container, part("r", attr("double", "n", "Value 8\n")))), "ok");
    EXPECT_EQ(outline(*container), "AttrContainer r{n=8 m=0}");
    EXPECT_EQ(verdict(read(*container, part("r", attr("String", "n", "Value \"x\"\n")))), "ContentSkipped");
}

TEST(ContainerSerializationTest, ListenerMayLetGoOfTheTreeOrReadAnotherDocument) {
    auto container = containerOf(part("r", number("n", "")));
    auto const n = container->getAttr("n").lock();
    auto const other = AttrContainer::create();
    Log log;
    auto const listener = RecordingObserver::make("told", log);
    listener->changed = [&](Observable&, Cause const&) {
        container.reset();
        EXPECT_EQ(verdict(read(*other, xmlOf(part("r", number("k", "Value 1\n"))), XML)), "ok");
        EXPECT_EQ(verdict(read(*other, "AttrContainer {")), "StreamFailure");
        return Action::ExecOk;
    };
    n->addObserver(*listener, 5, NOTIFY, true);
    std::string const text = part("r", number("n", "Value 1\n") + field("AttrContainer", "f", part("r")));
    EXPECT_EQ(verdict(read(*container, text)), "ok");
    EXPECT_EQ(container, nullptr);
    EXPECT_EQ(outline(*other), "AttrContainer r{k=1}");
}

TEST(ContainerSerializationTest, OptionsDecideWhatIsWrittenAndRead) {
    auto const container =
        containerOf(part("r", number("n", "") + field("None", "f", part("r", number("k", "")))));
    auto const context = std::make_shared<WriteContextBase>();
    auto const has = [&](char const* text) {
        return write(*container, context).find(text) != std::string::npos;
    };
    EXPECT_FALSE(has("Value 0"));
    context->setWriteDefaultValues(true);
    context->setWriteFields(false);
    EXPECT_TRUE(has("Value 0") && !has("SubContainer"));
    context->setWriteFields(true);
    context->setWriteOnlyMarked(true);
    EXPECT_FALSE(has("Attr<") || has("SubContainer"));
    container->getField("f").lock()->getAttr("k").lock()->setMarked(true);
    EXPECT_TRUE(has("SubContainer") && has("\"k\"") && !has("\"n\""));

    auto const strict = readContext(TEXT);
    strict->setAreUnknownContainersAccepted(false);
    auto const target = AttrContainer::create();
    Result const result =
        read(*target, part("r", field("None", "f", part("r")) + number("n", "Value 5\n")), strict);
    EXPECT_EQ(verdict(result), "UnknownContent(UnknownKeyword)");
    auto const& error = *result->getNested().front();
    EXPECT_EQ(*error.findInfo("Description"), "Unknown Key: AttrContainer Unknown type: None");
    EXPECT_TRUE(error.findInfo("Offset"));
    EXPECT_EQ(outline(*target), "AttrContainer r{n=5}");
    std::istringstream in;
    std::ostringstream out;
    EXPECT_EQ(verdict(target->readFrom(in, nullptr)), "NoContext");
    EXPECT_EQ(target->writeTo(out, nullptr)->getLine(), 1301);
}

} // namespace Zorvan::AttributeContainer::Testing
