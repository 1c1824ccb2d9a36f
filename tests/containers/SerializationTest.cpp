// SPDX-License-Identifier: MIT
#include "CapturedLog.h"
#include "DataFile.h"
#include "DocumentFixture.h"
#include "SmallStack.h"
#include "containers/ApplicationClasses.h"
#include "observation/RecordingObserver.h"

#include <bit>
#include <charconv>
#include <limits>
#include <random>

namespace Zorvan::AttributeContainer::Testing {

namespace {

std::string number(std::string const& name, std::string const& entries) { return attr("int", name, entries); }

std::shared_ptr<AttrContainer> containerOf(std::string const& text) {
    auto container = AttrContainer::create();
    EXPECT_EQ(verdict(read(*container, text)), "ok");
    return container;
}

bool writes(AttrContainer& root, std::shared_ptr<WriteContextBase> const& context, std::string const& text) {
    return write(root, context).find(text) != std::string::npos;
}

/// Holds no more than so many characters of its text ready.
class SparingBuffer : public std::streambuf {
public:
    SparingBuffer(std::string& text, std::size_t size) : text_(text), size_(size) {}

protected:
    int_type underflow() override {
        char* const from = text_.data() + position_;
        position_ = std::min(position_ + size_, text_.size());
        setg(text_.data(), from, text_.data() + position_);
        return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

private:
    std::string& text_;
    std::size_t size_, position_ = 0;
};

/// Writes to the stream to which it is written, whenever it is asked for a name or a definition.
class Interjector final : public AttrContainer {
public:
    using AttrContainer::AttrContainer;
    static std::shared_ptr<Interjector> create() {
        auto made = std::make_shared<Interjector>(ConstructorProtector(), CreateType::Deep, OptionalSource());
        made->init(CreateType::Deep, {});
        return made;
    }
    using AttrContainer::getAttrDefinition;
    using AttrContainer::getAttrName;
    std::optional<std::string> getAttrName(std::uint64_t token) override {
        interject();
        return AttrContainer::getAttrName(token);
    }
    AttrDefinition const* getAttrDefinition(std::uint64_t token) const override {
        interject();
        return AttrContainer::getAttrDefinition(token);
    }

    std::ostream* out = nullptr;
    mutable std::size_t length = 0; ///< of what is written next

private:
    void interject() const {
        if (out)
            *out << std::string(length += 100, '~');
    }
};

/// A string buffer that lets the application act whenever it is given something.
class ActingBuffer : public std::stringbuf {
public:
    explicit ActingBuffer(std::function<void()> act) : act_(std::move(act)) {}

protected:
    std::streamsize xsputn(char const* text, std::streamsize size) override {
        auto const taken = std::stringbuf::xsputn(text, size);
        act_();
        return taken;
    }
    int sync() override {
        act_();
        return 0;
    }

private:
    std::function<void()> act_;
};

/// Makes stations for a class name, and counts the ends of containers.
class StationContext : public ReadContextBase {
public:
    std::shared_ptr<AttrContainer> createObject(std::string const& typeName) override {
        if (typeName != "StationV2" && typeName != "Object")
            return nullptr;
        auto const station = Station::create();
        station->acceptsParent = [](Object& parent) { return parent.name() != "loner"; };
        return station;
    }
    void idle() const override { ++numIdle; }
    mutable int numIdle = 0;
};

} // namespace

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
    // Each also in a container behind one that begins in the same way.
    std::vector<std::pair<std::string, ModelFormat::Format>> documents;
    for (DocumentCase const& one : cases)
        for (std::string const& text :
             {part("r", one.texts[0]),
              part("r", number("n", "Value 1\n") + field("AttrContainer", "f", part("f", one.texts[0])))}) {
            documents.emplace_back(text, TEXT);
            documents.emplace_back(xmlOf(text), XML);
        }
    for (auto& [document, format] : documents) {
        SCOPED_TRACE(document);
        std::string expected;
        for (std::size_t const size : {std::size_t{1}, std::size_t{10}, std::size_t{60}, document.size()}) {
            SparingBuffer buffer(document, size);
            std::istream in(&buffer);
            auto const container = AttrContainer::create();
            std::string const found = verdict(read(*container, in, readContext(format))) + write(*container);
            EXPECT_EQ(found, size == 1 ? expected = found : expected) << size;
        }
    }
}

TEST(ContainerSerializationTest, DecimalsAreReadAsTheNearestValue) {
    std::mt19937_64 random(23); // NOLINT: the same numbers in every run
    std::vector<std::string> numbers = {"-0",
                                        "-0.0",
                                        "0.1",
                                        "007.50",
                                        "5.",
                                        "123456789012345.6",
                                        "1.5e3",
                                        "0.30000000000000004",
                                        "999999999999999",
                                        "-1#INF"};
    for (int i = 0; i < 5000; ++i) {
        std::string digits = std::to_string(random() >> (i % 60));
        digits.insert(random() % (digits.size() + 1), ".");
        numbers.push_back((i % 2 == 0 ? "-" : "") + (digits.front() == '.' ? "0" + digits : digits));
    }
    std::string values;
    for (std::string const& text : numbers)
        values += text + " ";
    auto const container =
        containerOf(block("AttrContainer", attr("DVector", "v", "Value { " + values + "}\n")));
    auto const read = std::dynamic_pointer_cast<Attr<std::vector<double>>>(container->getAttr("v").lock());
    ASSERT_TRUE(read);
    ASSERT_EQ(read->getValue().size(), numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        std::string const& text = numbers[i];
        double expected = -std::numeric_limits<double>::infinity();
        if (text != "-1#INF")
            std::from_chars(text.data(), text.data() + text.size(), expected);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(read->getValue()[i]), std::bit_cast<std::uint64_t>(expected))
            << text;
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

TEST(ContainerSerializationTest, ApplicationMayWriteToTheStreamInBetween) {
    auto const container = Interjector::create();
    for (int i = 0; i < 20; ++i)
        container->addAttribute(std::make_shared<CustAttr<int>>(i + 1), "n" + std::to_string(i));
    for (auto const format : {TEXT, XML, ModelFormat::Xml})
        for (bool const isForeign : {false, true}) {
            std::ostringstream plain;
            ActingBuffer acting([] {});
            std::ostream out(isForeign ? &acting : plain.rdbuf());
            auto const context = std::make_shared<WriteContextBase>(format);
            std::ostringstream expected;
            EXPECT_EQ(verdict(container->writeTo(expected, context)), "ok");
            container->out = &out;
            EXPECT_EQ(verdict(container->writeTo(out, context)), "ok");
            container->out = nullptr;
            std::string text = isForeign ? acting.str() : plain.str();
            std::string const name = format == TEXT ? "~\nAttr<int> { \nName \"n0\"" : "~<Attr type=\"int\">";
            EXPECT_NE(text.find(name), text.npos);
            std::erase(text, '~');
            EXPECT_EQ(text, expected.str());
        }
}

TEST(ContainerSerializationTest, BufferMaySetTheAttributeThatItIsGiven) {
    auto const container = AttrContainer::create();
    auto const text = std::make_shared<CustAttr<std::string>>();
    auto const list = std::make_shared<CustAttr<std::vector<std::string>>>();
    container->addAttribute(text, "text");
    container->addAttribute(list, "list");
    auto const setValues = [&](bool hasText, bool hasList) {
        text->setValue(hasText ? std::string(5000, 't') : std::string());
        list->setValue(std::vector<std::string>(hasList ? 300 : 0, "an entry that is allocated"));
    };
    for (auto const format : {TEXT, XML, ModelFormat::Xml}) {
        auto const context = std::make_shared<WriteContextBase>(format);
        std::set<std::string> expected, found;
        for (auto const& [hasText, hasList] : {std::pair(true, true), {true, false}, {false, false}}) {
            setValues(hasText, hasList);
            std::ostringstream out;
            EXPECT_EQ(verdict(container->writeTo(out, context)), "ok");
            expected.insert(out.str());
        }
        int numCalls = 1;
        for (int acting = 0; acting < numCalls; ++acting) {
            setValues(true, true);
            numCalls = 0;
            ActingBuffer buffer([&] {
                if (numCalls++ == acting)
                    setValues(false, false);
            });
            std::ostream out(&buffer);
            EXPECT_EQ(verdict(container->writeTo(out, context)), "ok");
            found.insert(buffer.str());
        }
        EXPECT_EQ(found, expected);
    }
}

TEST(ContainerSerializationTest, OptionsDecideWhatIsWrittenAndRead) {
    auto const container =
        containerOf(part("r", number("n", "") + field("None", "f", part("r", number("k", "")))));
    auto const context = std::make_shared<WriteContextBase>();
    auto const has = [&](char const* text) { return writes(*container, context, text); };
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
}

TEST(ContainerSerializationTest, ContainersNestTo256LevelsOnAStackOf1MiB) {
    CapturedLog const unheard{0};
    for (char const* kind : {"AttrContainer", "Object", "None", "Child"})
        for (int depth : {255, 256, 3000}) {
            bool const isChild = std::string(kind) == "Child";
            std::string text = isChild ? part("r") : "AttrContainer {\n";
            for (int i = 0; i < depth; ++i)
                text += isChild ? "Child {\n\"Object\" \"c\"\n" + part("c")
                                : "SubContainer {\n\"" + std::string(kind) + "\" \"f\"\nAttrContainer {\n";
            for (int i = isChild ? 0 : -depth - 1; i < depth; ++i)
                text += "}\n";
            runOnSmallStack([&] {
                auto const root = Object::create();
                Result const result = read(*root, text);
                EXPECT_EQ(verdict(result), depth == 255 ? "ok" : "StreamFailure") << kind << depth;
                if (result)
                    EXPECT_EQ(result->getInfos().count("Description"), 1u);
                else
                    expectStable(*root, "ok");
            });
        }
}

TEST(ObjectSerializationTest, EveryEntryIsReadOrReportedInBothRenderings) {
    expectRead<Object>(documentCases("objects.txt"));
}

TEST(ObjectSerializationTest, ClassIsMadeByTheFactoryThenByTheContextThenByAPlaceholder) {
    auto const context = std::make_shared<StationContext>();
    auto const registration = FieldFactory::registerField<Station>("GenericBinaryObjectV2");
    std::string const text = part("r") + child("Object", "a", "") + child("StationV2", "b", "") +
                             child("Unknown", "c", part("c")) + child("GenericBinaryObject", "d", "") +
                             child("GenericBinaryObjectV2", "e", part("e"));
    auto const object = Object::create(), loner = Object::create();
    EXPECT_EQ(verdict(read(*object, text, context)), "UnknownClass(ContentSkipped)");
    Names classes;
    for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
        classes.push_back(object->children().getChild(i)->getClassName());
    EXPECT_EQ(joined(classes), "Object Station FallbackObject Station Station");
    EXPECT_EQ(context->numIdle, 3);

    std::string const refused = part("loner") + child("StationV2", "b", "") + child("Object", "c", "");
    EXPECT_EQ(verdict(read(*loner, refused, context)), "ContentSkipped");
    EXPECT_EQ(outline(*loner), "Object loner{}(Object c{})");
}

TEST(ObjectSerializationTest, ReadingIsTracedAndProblemsAreLogged) {
    CapturedLog const log(8);
    static_cast<void>(
        read(*Object::create(), child("Object", "a", part("a", member("SubContainer", "None", "f", "")))));
    EXPECT_EQ(log.messages, (Log{"8 554 Object::readChild - a of type Object ...",
                                 "3 1830 Error creating container with typeName None",
                                 "3 1895 Failed to create container of type None. Using "
                                 "UnknownAttrContainer instead.",
                                 "8 616 ... Object::readChild - a of type Object done"}));
}

TEST(ObjectSerializationTest, OptionsDecideWhichChildrenAreWritten) {
    auto const object = Object::create();
    std::string const text = part("r") + child("Object", "a", "") + child("no name", "b", "Foo 1\n");
    ASSERT_EQ(verdict(read(*object, text)), "UnknownClass(ContentSkipped)");
    auto const context = std::make_shared<WriteContextBase>();
    auto const has = [&](char const* part) { return writes(*object, context, part); };
    context->setWriteOnlyMarkedObjects(true);
    EXPECT_FALSE(has("Child"));
    object->children().getChild(1)->Attr_name().setMarked(true);
    EXPECT_TRUE(has("\"b\"") && !has("\"a\""));
    context->setFormat(XML);
    EXPECT_EQ(write(*object, context), "StreamFailure") << "its class is no name there";
    context->setWriteChildren(false);
    EXPECT_FALSE(has("Child"));
    EXPECT_TRUE(std::as_const(*object).getUuid().isNil());
    context->setCreateObjectUuid(true);
    EXPECT_FALSE(has("Value 00000000") || std::as_const(*object).getUuid().isNil());
}

// Links resolve when the whole document was read, from its root, after an error
// too.
TEST(ObjectSerializationTest, LinksOfALoadedTreeWork) {
    std::string const links = link("PostObserver", "/b", "Priority 5\nAction \"Notify\"\n") +
                              link("PostObserver", "/none", "Priority 4\nAction \"Notify\"\n");
    for (std::string const behind : {"", "Child {"}) {
        auto const root = Object::create();
        std::string const a = child("Object", "a", part("a", attr("int", "n", links))),
                          b = child("Object", "b", part("b"));
        EXPECT_EQ(verdict(read(*root, part("r") + a + b + behind)), behind.empty() ? "ok" : "StreamFailure");
        auto const n = root->inqObject("/a")->getAttr("n").lock();
        EXPECT_EQ(n->getPath(0).isActive() + n->getPath(1).isActive(), 1);
    }
}

TEST(SharedInstancesTest, SecondOccurrenceIsWrittenAndReadAsAReference) {
    for (auto const format : {TEXT, XML}) {
        auto const root = Object::create();
        auto const child = Object::create();
        auto const shared = AttrContainer::create();
        root->addChild(child, 0);
        ASSERT_TRUE(root->addField(shared, "a", 0) && root->addField(shared, "b", 4) &&
                    child->addField(shared, "c", 0));
        auto const writer = std::make_shared<SharingWriter>(format);
        std::string const document = write(*root, writer);
        std::vector<std::uint64_t> ids;
        writer->instances.copyToVector(ids);
        EXPECT_EQ(ids, std::vector<std::uint64_t>{shared->getInstanceIdentifier()});

        auto const reader = std::make_shared<SharingReader>(format, ids);
        auto const again = Object::create();
        EXPECT_EQ(verdict(read(*again, document, reader)), "ok");
        auto const a = again->getField("a").lock();
        EXPECT_TRUE(a && a == again->getField("b").lock());
        EXPECT_EQ(again->children().getChild(0)->getField("c").lock(), a);
        // The flags stay: without clearing them, a second write has references
        // only.
        auto const isWhole = [&] { return write(*root, writer) == document; };
        EXPECT_FALSE(isWhole());
        shared->setIsSerialized(false);
        child->setIsSerialized(false);
        EXPECT_TRUE(isWhole());
    }
}

TEST(SharedInstancesTest, ReferencesResolveOrAreReported) {
    std::string const seven = "InstanceID 7\n", reference = seven + "ReferenceToShared\n";
    auto const inner = [](std::string const& name, std::string const& entries) {
        return field("AttrContainer", name, entries);
    };
    auto const makeReader = [](ModelFormat::Format format) {
        return std::make_shared<SharingReader>(format, std::vector<std::uint64_t>{7});
    };
    expectRead<Object>(documentCases("references.txt"), makeReader);
    // An ancestor resolves.
    auto const root = Object::create();
    std::string const middle = inner("m", part("m", inner("up", reference)));
    EXPECT_EQ(verdict(read(*root, part("r", inner("a", seven + part("x", middle))), makeReader(TEXT))), "ok");
    auto const a = root->getField("a").lock();
    EXPECT_EQ(a->getField("m").lock()->getField("up").lock(), a);
    a->rmField("m"); // A cycle keeps itself alive.
}

TEST(SharedInstancesTest, AncestorIsNamedAndNotEnteredAgain) {
    auto const root = AttrContainer::create();
    auto const below = AttrContainer::create();
    ASSERT_TRUE(root->addField(below, "f", 0) && below->addField(root, "up", 0));
    for (auto const format : {TEXT, XML}) {
        auto const again = AttrContainer::create();
        EXPECT_EQ(verdict(read(*again, write(*root, format), format)), "ok");
        EXPECT_EQ(outline(*again), "AttrContainer AttrContainer{}[f:AttrContainer "
                                   "AttrContainer{}[up:AttrContainer AttrContainer{}]]");
    }
    below->rmField("up");
}

} // namespace Zorvan::AttributeContainer::Testing
