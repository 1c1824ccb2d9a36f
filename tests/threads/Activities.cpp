// SPDX-License-Identifier: MIT
#include "threads/Activities.h"

#include "attributes/ObservationScene.h"
#include "containers/DocumentFixture.h"
#include "observation/ObservationFixture.h"
#include "registry/RegistryFixture.h"
#include "traversal/TreeFixture.h"

#include <AttributeContainer/AttrRegistryVisitor.h>
#include <AttributeContainer/AttributeWriteProtection.h>
#include <AttributeContainer/Time.h>
#include <AttributeContainer/Version.h>
#include <AttributeContainer/Visitors.h>
#include <AttributeContainer/XMLSerialization.h>
#include <ErrorHandling/Logger.h>

#include <cstdlib>

namespace Zorvan::AttributeContainer::Testing {

namespace {

using ErrorHandling::Logger;

std::string numbered(std::string const& name, unsigned number) { return name + std::to_string(number); }

CustAttr<int>& levelOf(Object& tree) {
    return dynamic_cast<CustAttr<int>&>(*tree.getField("cfg").lock()->getAttr("level").lock());
}
int followerOf(Object& tree) {
    return dynamic_cast<CustAttr<int>&>(*tree.getAttr("follower").lock()).getValue();
}

/// Nobody reads what is logged of classes that this program does not know.
[[maybe_unused]] int const threshold = (Logger::setThreshold(2), 2);

// --- Activities

/// Both contexts are shared by all threads.
void documents(unsigned number) {
    static auto const writing = std::make_shared<WriteContextBase>();
    static auto const reading = readContext(TEXT);
    auto const tree = makeTree(number), again = Object::create();
    std::string const document = write(*tree, writing);
    EXPECT_EQ(verdict(read(*again, document, reading)), "ok");
    EXPECT_EQ(write(*again, writing), document);
}

void unknownContent(unsigned) {
    auto const root = Object::create();
    std::string const found = verdict(read(*root, documentCases("everything.txt").front().texts.front()));
    EXPECT_TRUE(found.starts_with("ObserverUnresolved")) << found;
    expectStable(*root, found);
    expectRead<Object>(documentCases("objects.txt"));
}

void copies(unsigned number) { useTree(*makeTree(number)); }

void mergesAndComparisons(unsigned) {
    Differing trees;
    EXPECT_NE(0U, differences(*trees.a, *trees.b));
    AttrContMerger::merge(*trees.a, *trees.b, AttrContMerger::TRIGGER_OBSERVERS_AFTER_MERGE_IS_COMPLETE,
                          nullptr);
    EXPECT_EQ(0U, differences(*trees.a, *trees.b, AttrContComparer::WithTolerances));
}

void observation(unsigned number) {
    expectObservationMatrix(number, 20);
    auto const value = std::make_shared<CustAttr<int>>(1);
    auto const protection = AttributeWriteProtection::create(value, [](Attribute&) { return "no"; });
    assignText(*value, std::to_string(number + 2));
    EXPECT_EQ(1, value->getValue());
}

void valuesOfAllTypes(unsigned) {
    int numTypes = 0;
    for (unsigned type = 0; type < AttrTypeUnknown; ++type)
        if (auto const attribute =
                AttrDefinition{0, "", static_cast<AttrType>(type), 0}.createAttr(CreateType::Deep, {}, {})) {
            ++numTypes;
            std::string const text = attribute->getValueAsText();
            assignText(*attribute, text);
            EXPECT_EQ(text, attribute->getValueAsText());
            EXPECT_TRUE(attribute->isEqual(*attribute->duplicate(CreateType::Deep, {})));
            EXPECT_NE(AttrTypeUnknown, AttrContainer::getTypeFromString(attribute->getClassName()));
        }
    EXPECT_LE(48, numTypes);
}

void walksAndPaths(unsigned number) {
    auto const tree = makeTree(number);
    auto const pump = tree->inqObject("/pump");
    EXPECT_EQ("/pump", pump->inqObjPath());
    EXPECT_EQ(tree, pump->inqObject("~"));
    CollectFields fields([](AttrContainer const&) { return true; }, 0, 8);
    tree->fieldVisitor(fields, 1);
    EXPECT_EQ(4U, fields.getNumElements());
    std::ostringstream out;
    EXPECT_FALSE(XMLSerialization::toWithChildren(out, *tree, std::make_shared<WriteContextBase>()));
    EXPECT_NE(std::string::npos, out.str().find("<level type=\"int\">1</level>"));
}

void registry(unsigned number) {
    auto const place = std::make_shared<RegKeys>(numbered("Software\\KxThreads\\", number),
                                                 RegKeys::predefinedKey("HKCU"), false);
    auto const tree = makeTree(number), again = makeTree(number + 1);
    AttrWriteRegistry writer(place, 0, 100);
    tree->attributeVisitor(writer, true);
    AttrReadRegistry reader(place, true, 0, 100);
    again->attributeVisitor(reader, true);
    EXPECT_EQ(again->getAttr("number").lock()->getValueAsText(), std::to_string(number));
    EXPECT_TRUE(place->deleteTree(""));
}

/// Application classes and actions come and go while others read documents and make links.
void registrations(unsigned number) {
    std::string const name = numbered("Class", number);
    auto const factory = FieldFactory::the();
    {
        auto const registration = FieldFactory::registerField<Station>(name);
        auto const names = factory->getAllRegisteredFields();
        EXPECT_EQ(1, std::count(names.begin(), names.end(), name));
        EXPECT_TRUE(std::dynamic_pointer_cast<Station>(factory->createObject(name)));
    }
    EXPECT_FALSE(factory->createField(name));

    Log log;
    auto const group = std::make_shared<ActionGroup>("M");
    ActionContainer& actions = *ActionContainer::the();
    EXPECT_TRUE(actions.registerActionDef(group) && !actions.registerActionDef(group));
    EXPECT_EQ("M", actions.getName(group->getBaseToken()));
    EXPECT_EQ("Notify", actions.getAction(actions.getToken("Notify")).value().get().getName());
    auto const observer = RecordingObserver::make("x", log);
    auto const observable = RecordingObservable::make();
    observable->addObserver(*observer, 1, group->getBaseToken(), true);
    observable->tell();
    EXPECT_TRUE(actions.unregisterActionDef(group));
    observable->tell();
    EXPECT_EQ(Log{"x"}, log);
}

void services(unsigned number) {
    for (int i = 0; i < 200; ++i) {
        Logger::setSink([](auto const& message) { EXPECT_EQ("m", message.message); });
        Logger::appendLogMsgExt("m", 1, nullptr, 0, nullptr);
    }
    EXPECT_EQ(2, Logger::getThreshold());
    version.setApiVersion(VersionNum("API", 2, 0, 24, 0, 0, ""));
    EXPECT_EQ(VersionNum().getReleaseNumbers(), Version(version).getFormatVersion()->getReleaseNumbers());
    EXPECT_FALSE(Time::now() < Time());
    auto const object = named<Object>(numbered("o", number));
    EXPECT_NE(object->getUuid(), Object::create()->getUuid());
    Result error = object->setName("not a name", 0);
    EXPECT_EQ("InvalidName", verdict(error));
    EXPECT_EQ("not a name", *error->clone()->findInfo("CheckedName"));
}

constexpr Activity all[] = {{"documents", documents},
                            {"unknown content", unknownContent},
                            {"copies", copies},
                            {"merges and comparisons", mergesAndComparisons},
                            {"observation", observation},
                            {"values of all types", valuesOfAllTypes},
                            {"walks and paths", walksAndPaths},
                            {"the registry", registry},
                            {"registrations", registrations},
                            {"services", services}};

} // namespace

std::span<Activity const> activities() { return all; }

std::shared_ptr<Object> makeTree(unsigned number) {
    auto const tree = std::dynamic_pointer_cast<Object>(
        TreeText("Object/plant { number=" + std::to_string(number) +
                 " follower=1 cfg:cfg { level=1 list=[1;2] } motor:Pump/motor { } "
                 "child:Object/pump { text='of;the;pump } child:Object/tank { } }")
            .make());
    auto const follower = tree->getAttr("follower").lock();
    follow(levelOf(*tree), *follower);
    levelOf(*tree).addObserver(*tree->getField("motor").lock(), 9, NOTIFY, false);
    levelOf(*tree).addObserver("/tank", 7, NOTIFY, false);
    follower->addPreObserver("~/nobody", 8, PRE_NOTIFY, false);
    return tree;
}

void useTree(Object& tree) {
    Log log;
    auto const observer = RecordingObserver::make("told ", log);
    levelOf(tree).addPreObserver(*observer, 20, PRE_NOTIFY, true);
    levelOf(tree).addObserver(*observer, 20, NOTIFY, true);
    levelOf(tree).setValue(5);
    EXPECT_EQ((Log{"told ?", "told "}), log);
    EXPECT_EQ(5, followerOf(tree));
    levelOf(tree).setValue(1);
    levelOf(tree).rmObserver(*observer);
    EXPECT_TRUE(tree.addChild(named<Object>("added"), 0));
    EXPECT_TRUE(outline(tree).ends_with("(Object added{})"));
    auto const copy = tree.duplicate(CreateType::Deep);
    EXPECT_EQ(0U, differences(tree, *copy));
    ObserverPath link({}, *copy->getField("motor").lock(), 9, NOTIFY);
    EXPECT_NE(NOT_FOUND, levelOf(dynamic_cast<Object&>(*copy)).lookupPath(link))
        << "links lead into the copy";
    EXPECT_TRUE(tree.rmChild(*tree.inqObject("added"), 0));
    EXPECT_NE(std::string::npos, write(tree, XML).find("of the pump"));
}

void onThreads(unsigned numThreads, std::function<void(unsigned)> const& act) {
    Meeting start(numThreads);
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < numThreads; ++number)
        threads.emplace_back([&, number] {
            start.arriveAndWait();
            act(number);
        });
    for (auto& thread : threads)
        thread.join();
}

unsigned numRounds() {
    char const* const rounds = std::getenv("KX_THREAD_ROUNDS");
    return rounds ? std::max(1U, static_cast<unsigned>(std::strtoul(rounds, nullptr, 10))) : 3;
}

} // namespace Zorvan::AttributeContainer::Testing
