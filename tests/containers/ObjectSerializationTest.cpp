// SPDX-License-Identifier: MIT
#include "CapturedLog.h"
#include "DocumentFixture.h"
#include "observation/RecordingObserver.h"

#include <AttributeContainer/FieldFactory.h>

namespace Zorvan::AttributeContainer::Testing {

namespace {

/// A class of the application, which reads nothing by itself.
class Pump : public Object {
public:
    using Object::Object;
    static std::shared_ptr<Pump> create(CreateType type = CreateType::Deep, OptionalSource source = {}) {
        auto pump = std::make_shared<Pump>(ConstructorProtector(), type, source);
        pump->init(type, source);
        return pump;
    }
    std::string const& getClassName() const override {
        static std::string const name = "Pump";
        return name;
    }
    bool acceptParent(Object& parent) override { return parent.name() != "loner"; }
};

/// Makes pumps for one class name, and counts the ends of containers.
class PumpContext : public ReadContextBase {
public:
    std::shared_ptr<AttrContainer> createObject(std::string const& typeName) override {
        return typeName == "PumpV2" || typeName == "Object" ? Pump::create() : nullptr;
    }
    void idle() const override { ++numIdle; }
    mutable int numIdle = 0;
};

} // namespace

TEST(ObjectSerializationTest, EveryEntryIsReadOrReportedInBothRenderings) {
    expectRead<Object>(documentCases("objects.txt"));
}

TEST(ObjectSerializationTest, ClassIsMadeByTheFactoryThenByTheContextThenByAPlaceholder) {
    auto const context = std::make_shared<PumpContext>();
    auto const registration = FieldFactory::registerField<Pump>("GenericBinaryObjectV2");
    std::string const text = part("r") + child("Object", "a", "") + child("PumpV2", "b", "") +
                             child("Pump", "c", part("c")) + child("GenericBinaryObject", "d", "") +
                             child("GenericBinaryObjectV2", "e", part("e"));
    auto const object = Object::create();
    EXPECT_EQ(verdict(read(*object, text, context)), "UnknownClass(ContentSkipped)");
    EXPECT_EQ(outline(*object), "Object r{}(Object a{})(Pump b{})(FallbackObject "
                                "c{})(Pump d{})(Pump e{})");
    EXPECT_EQ(context->numIdle, 3);

    auto const loner = Object::create();
    EXPECT_EQ(
        verdict(read(*loner, part("loner") + child("PumpV2", "b", "") + child("Object", "c", ""), context)),
        "ContentSkipped");
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
    ASSERT_EQ(verdict(read(*object, part("r") + child("Object", "a", "") + child("Object", "b", ""))), "ok");
    auto const context = std::make_shared<WriteContextBase>();
    auto const has = [&](char const* text) {
        return write(*object, context).find(text) != std::string::npos;
    };
    context->setWriteOnlyMarkedObjects(true);
    EXPECT_FALSE(has("Child"));
    object->children().getChild(1)->Attr_name().setMarked(true);
    EXPECT_TRUE(has("\"b\"") && !has("\"a\""));
    context->setWriteChildren(false);
    EXPECT_FALSE(has("Child"));
    EXPECT_TRUE(std::as_const(*object).getUuid().isNil());
    context->setCreateObjectUuid(true);
    EXPECT_FALSE(has("Value 00000000") || std::as_const(*object).getUuid().isNil());
    std::ostringstream out;
    EXPECT_EQ(object->writeTo(out, nullptr)->getLine(), 702);
    context->setFormat(XML);
    context->setWriteChildren(true);
    context->setWriteOnlyMarkedObjects(false);
    auto const placeholder = Object::create();
    static_cast<void>(read(*placeholder, part("r") + child("no name", "a", "Foo 1\n")));
    EXPECT_EQ(write(*placeholder, context), "StreamFailure");
}

// Links resolve when the whole document was read, from its root, after an error
// too.
TEST(ObjectSerializationTest, LinksOfALoadedTreeWork) {
    std::string const links =
        attr("int", "n",
             "Value 1\n" + link("PostObserver", "/b", "Priority 5\nAction \"Notify\"\n") +
                 link("PostObserver", "/none", "Priority 4\nAction \"Notify\"\n"));
    std::string const text =
        part("r") + child("Object", "a", part("a", links)) + child("Object", "b", part("b"));
    for (std::string const behind : {"", "Child {"}) {
        auto const root = Object::create();
        EXPECT_EQ(verdict(read(*root, text + behind)), behind.empty() ? "ok" : "StreamFailure");
        auto const n = root->inqObject("/a")->getAttr("n").lock();
        EXPECT_EQ(n->getPath(0).isActive() + n->getPath(1).isActive(), 1);
        if (behind.empty()) {
            std::string const written = write(*root);
            EXPECT_LT(written.find("\"/none\""), written.find("\"/b\""));
            expectStable(*root, "ok");
        }
    }
}

} // namespace Zorvan::AttributeContainer::Testing
