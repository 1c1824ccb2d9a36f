// SPDX-License-Identifier: MIT
#include "allocation/FailingAllocations.h"
#include "allocation/FailureWorld.h"
#include "containers/DocumentFixture.h"

#include <AttributeContainer/AttrContComparer.h>
#include <AttributeContainer/AttrContMerger.h>
#include <AttributeContainer/AttrRegistryVisitor.h>
#include <AttributeContainer/AttributeWriteProtection.h>
#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/CachedAttributeInfo.h>
#include <AttributeContainer/RegistryFile.h>
#include <AttributeContainer/XMLSerialization.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <new>
#include <sstream>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

using World = FailureWorld;

/// What a step that has failed leaves behind.
enum class Left {
    Nothing, ///< All is as it was before.
    Part,    ///< A part of it is done; the step done once more does the rest.
    Some     ///< A part of it is done; done once more it gives the same in another order.
};

struct Step {
    char const* what;
    Left left;
    void (*take)(World& world);
    void (*prepare)(World& world) = nullptr;
};

/// The document that holds one of everything.
std::string const& document(ModelFormat::Format format) {
    static std::string const text = documentCases("everything.txt").at(0).texts.at(0), xml = xmlOf(text);
    return format == TEXT ? text : xml;
}

template <class Root>
void readDocument(World& world, ModelFormat::Format format) {
    auto const root = Root::create();
    world.written = verdict(read(*root, document(format), format));
    world.made = root;
}

void writeAs(World& world, AttrContainer& root, int format, bool isExport = false) {
    std::ostringstream out;
    auto const context = std::make_shared<WriteContextBase>(format);
    Result const result =
        isExport ? XMLSerialization::toWithChildren(out, root, context) : root.writeTo(out, context);
    world.written = result ? verdict(result) : out.str();
}

std::shared_ptr<Station> otherTree() {
    auto const other = World::makeTree("the-root-of-the-other-tree");
    other->rmAttribute("list-of-some-numbers");
    other->addAttribute(std::make_shared<CustAttr<int>>(8), "number-that-only-this-one-has");
    other->addField(AttrContainer::create(), "field-that-only-this-one-has", 0);
    static_cast<Attr<int>&>(*other->getAttr("number-of-somethings").lock()).setValue(5);
    return other;
}

void merge(World& world, unsigned int flags) {
    if (!world.other)
        world.other = otherTree();
    AttrContMerger::merge(*world.root, *world.other, flags, nullptr);
    world.written = std::to_string(AttrContComparer().compare(*world.root, *world.other));
}

/// What a step attaches to an attribute goes when the step ends.
class Notes {
public:
    explicit Notes(Attribute& attribute) : attribute_(attribute) {}
    Notes(Notes const&) = delete;
    Notes& operator=(Notes const&) = delete;
    ~Notes() {
        attribute_.removeNotifyInfos(true);
        Attribute::setIsCachedAttributePending(false);
    }

private:
    Attribute& attribute_;
};

constexpr char registryKey[] = "Software\\KxAllocationFailureTests";
constexpr char registryFile[] = "kx-allocation-failure-test.reg";

std::shared_ptr<RegKeys> registryPlace() {
    return std::make_shared<RegKeys>(registryKey, RegKeys::predefinedKey("HKEY_CURRENT_USER"), false);
}

Step const steps[] = {
    // --- Creation
    {"create a tree", Left::Nothing, [](World& w) { w.made = World::makeTree("a-tree-that-is-made-anew"); }},
    {"add an attribute", Left::Nothing,
     [](World& w) { w.root->addAttribute(std::make_shared<CustAttr<int>>(5), "an-attribute-that-is-new"); }},
    {"add many attributes", Left::Part,
     [](World& w) {
         for (int i = 0; i < 20; ++i)
             if (std::string const name = "one-attribute-of-many-" + std::to_string(i);
                 w.root->getAttr(name).expired())
                 w.root->addAttribute(std::make_shared<CustAttr<int>>(i), name);
     }},
    {"add a field", Left::Nothing,
     [](World& w) { w.root->addField(AttrContainer::create(), "a-field-of-the-root-that-is-new", 0); }},
    {"add a field of a taken name", Left::Nothing,
     [](World& w) { w.root->addField(AttrContainer::create(), "field-of-the-station", 16); }},
    {"add many fields", Left::Part,
     [](World& w) {
         for (int i = 0; i < 20; ++i)
             if (std::string const name = "one-field-of-many-" + std::to_string(i);
                 w.root->isNameUnique(name))
                 w.root->addField(AttrContainer::create(), name, 0);
     }},
    {"put a field into a slot", Left::Nothing,
     [](World& w) { w.root->setField(w.root->getFieldToken("Pump"), Pump::create()); }},
    {"add a child", Left::Nothing, [](World& w) { w.root->addChild(Object::create(), 16); }},
    {"add many children", Left::Part,
     [](World& w) {
         for (auto i = w.root->children().getNumChildren(); i < 22; ++i)
             w.root->addChild(Object::create(), 16);
     }},
    // --- Documents
    {"read a text", Left::Nothing, [](World& w) { readDocument<Station>(w, TEXT); }},
    {"read XML", Left::Nothing, [](World& w) { readDocument<Object>(w, XML); }},
    {"read a text into a living tree", Left::Part,
     [](World& w) {
         w.written =
             verdict(read(*w.root, part("a-name-that-was-read",
                                        attr("int", "number-of-somethings",
                                             "Value 7\n" + link("PostObserver", "second-child-of-the-station",
                                                                "Priority 5\nAction \"Notify\"\n")) +
                                            attr("String", "text-that-somebody-wrote",
                                                 "Value \"a text that stands in a document\"\n"))));
     }},
    {"write a text", Left::Nothing, [](World& w) { writeAs(w, *w.root, TEXT); }},
    {"write XML", Left::Nothing, [](World& w) { writeAs(w, *w.root, XML); }},
    {"export XML", Left::Nothing, [](World& w) { writeAs(w, *w.root, ModelFormat::Xml, true); }},
    {"write what was kept of a document in the other rendering", Left::Nothing,
     [](World& w) { writeAs(w, *w.other, XML); },
     [](World& w) {
         readDocument<Station>(w, TEXT);
         w.other.swap(w.made);
         w.restart();
     }},
    {"write shared instances", Left::Nothing,
     [](World& w) {
         World::clearFlags(*w.root);
         auto const writer = std::make_shared<SharingWriter>(TEXT);
         std::ostringstream out;
         w.written = verdict(w.root->writeTo(out, writer));
         std::vector<std::uint64_t> ids;
         writer->instances.copyToVector(ids);
         w.written += std::to_string(ids.size());
     },
     [](World& w) { w.root->addField(w.pump(), "field-that-is-there-twice", 4); }},
    {"read shared instances", Left::Nothing,
     [](World& w) {
         auto const reader = std::make_shared<SharingReader>(TEXT, std::vector<std::uint64_t>{7});
         static std::string const references = documentCases("references.txt").at(0).texts.at(0);
         auto const root = Object::create();
         w.written = verdict(read(*root, references, reader));
         w.made = root;
     }},
    // --- Copies
    {"copy a tree", Left::Nothing, [](World& w) { w.made = w.root->duplicate(CreateType::Deep); }},
    {"copy a tree and share its fields", Left::Nothing,
     [](World& w) { w.made = w.root->duplicate(CreateType::ShareFields); }},
    {"copy the links of an attribute", Left::Part, [](World& w) { w.text()->copyFrom(*w.number()); }},
    {"copy what an observer watches", Left::Part,
     [](World& w) { w.watchers[3]->copyObservationsFrom(*w.watchers[0]); }},
    {"take over what an observer watches", Left::Part,
     [](World& w) { w.watchers[3]->takeOverObservationsFrom(*w.watchers[0]); }},
    {"compare trees", Left::Nothing,
     [](World& w) {
         AttrContComparerKeepDiffs comparer;
         comparer.compare(*w.root, *otherTree());
         w.written = comparer.getMismatch(0).value_or("none");
     }},
    {"merge a tree", Left::Some, [](World& w) { merge(w, 0); }},
    {"merge a tree and tell at the end", Left::Some,
     [](World& w) { merge(w, AttrContMerger::TRIGGER_OBSERVERS_AFTER_MERGE_IS_COMPLETE); }},
    // --- Values
    {"set a value", Left::Part, [](World& w) { w.number()->setValue(9); }},
    {"set a text", Left::Part,
     [](World& w) { w.text()->setValue("a text that is longer than the old one was"); }},
    {"set a value that is refused", Left::Nothing,
     [](World& w) {
         w.watchers[1]->refuses = true;
         w.number()->setValue(9);
     }},
    {"assign a text", Left::Part, [](World& w) { w.number()->assignFrom("9", nullptr, nullptr, nullptr); }},
    {"ask who was told", Left::Part,
     [](World& w) {
         Attribute::NotificationResults results;
         w.number()->touch(nullptr, &results);
         w.written = std::to_string(results.size());
     }},
    {"set the value from within a handler", Left::Part,
     [](World& w) {
         w.watchers[0]->reaction = [](Observable& observable, bool isAsked) {
             auto& changed = dynamic_cast<Attr<int>&>(observable);
             if (isAsked && ObservationAccess::walkDepth(observable) == 1)
                 changed.setValue(4);
         };
         w.number()->setValue(9);
     }},
    {"commit a staged value", Left::Part,
     [](World& w) {
         Notes const notes(*w.number());
         w.number()->addNotifyInfo(std::make_shared<CachedAttributeInfo>(std::make_shared<CustAttr<int>>(9)));
         Attribute::setIsCachedAttributePending(true);
         w.number()->touch(nullptr, nullptr);
     }},
    {"protect an attribute and change it", Left::Part,
     [](World& w) {
         if (!w.held)
             w.held = AttributeWriteProtection::create(
                 w.number(), [](Attribute& one) { return std::optional<std::string>(one.getValueAsText()); });
         w.number()->setValue(9);
         w.number()->assignFrom("9", nullptr, nullptr, nullptr);
     }},
    {"set a value while observation is blocked", Left::Part,
     [](World& w) {
         BlockObserver const scope;
         w.text()->setValue("a text that nobody is asked about or told of");
     }},
    // --- Names
    {"rename the root", Left::Part,
     [](World& w) { w.written = verdict(w.root->setName("another-name-of-the-root", 0)); }},
    {"rename a child", Left::Part,
     [](World& w) {
         w.written = verdict(w.root->children().getChild(0)->setName("another-name-of-the-child", 0));
     }},
    {"rename to what is no name", Left::Nothing,
     [](World& w) { w.written = verdict(w.root->setName("what is written here is no name", 0)); }},
    {"make a UUID", Left::Nothing,
     [](World& w) {
         static_cast<void>(w.root->getUuid());
         w.root->setUuid({});
     }},
    // --- Members that go
    {"remove an attribute", Left::Nothing, [](World& w) { w.root->rmAttribute("number-of-somethings"); }},
    {"remove all attributes", Left::Nothing, [](World& w) { w.root->rmAllCustomAttributes(); }},
    {"remove a field", Left::Nothing, [](World& w) { w.root->rmField("field-of-the-station"); }},
    {"empty a slot", Left::Nothing, [](World& w) { w.root->rmField("Pump"); }},
    {"remove a child", Left::Nothing, [](World& w) { w.root->rmChild(std::uint64_t{1}, 0); }},
    {"end a tree", Left::Nothing, [](World& w) { w.made = nullptr; },
     [](World& w) {
         w.made = w.root->duplicate(CreateType::Deep);
         for (auto const* name : {"number-of-somethings", "text-that-somebody-wrote"})
             w.made->getAttr(name).lock()->addObserver(*w.watchers[0], 5, World::NOTIFY, true);
     }},
    // --- Links
    {"add a link", Left::Nothing,
     [](World& w) { w.text()->addObserver(*w.watchers[0], 2, World::NOTIFY, false); }},
    {"add a link that is there", Left::Nothing,
     [](World& w) { w.number()->addObserver(*w.watchers[0], 2, World::NOTIFY, false); }},
    {"add a temporary link", Left::Nothing,
     [](World& w) { w.text()->addPreObserver(*w.watchers[3], 2, World::PRE_NOTIFY, true); }},
    {"add a link by path", Left::Nothing,
     [](World& w) { w.text()->addObserver("first-child-of-the-station", 1, World::NOTIFY, false); }},
    {"add many links", Left::Part,
     [](World& w) {
         for (int i = 0; i < 20; ++i)
             w.text()->addObserver("a-path-of-which-there-are-many-" + std::to_string(i), 1, World::NOTIFY,
                                   false);
         for (std::uint64_t token = 0; token < w.root->getNumHardCodedAttributes(); ++token)
             w.root->getAttr(token).lock()->addObserver(*w.watchers[2], 1, World::NOTIFY, true);
     }},
    {"resolve links", Left::Part,
     [](World& w) {
         if (w.root->getField("nobody-of-this-name-is-there").expired())
             w.root->addField(AttrContainer::create(), "nobody-of-this-name-is-there", 0);
         w.number()->updateObserverLists(true);
     }},
    {"remove the links of an observer", Left::Nothing,
     [](World& w) { w.number()->rmObserver(*w.watchers[0]); }},
    {"remove a link", Left::Nothing, [](World& w) { w.number()->removePath(std::uint64_t{3}); }},
    {"remove an equal link", Left::Nothing,
     [](World& w) {
         ObserverPath like(*w.number(), *w.watchers[0], 1, World::NOTIFY);
         w.number()->removePath(like);
     }},
    {"remove links from within a handler", Left::Part,
     [](World& w) {
         w.watchers[0]->reaction = [](Observable& observable, bool) {
             while (observable.getNumPostPaths() > 1)
                 observable.removePath(observable.getNumPrePaths() + 1);
         };
         w.number()->setValue(9);
     }},
    {"end an observer", Left::Nothing,
     [](World& w) {
         auto const gone = std::make_shared<Watcher>("watcher-that-goes-before-the-others");
         for (auto const& attribute :
              {w.attribute("number-of-somethings"), w.attribute("text-that-somebody-wrote")})
             attribute->addObserver(*gone, 5, World::NOTIFY, true);
     }},
    {"redirect a link", Left::Nothing,
     [](World& w) { w.number()->getPath(3).setObserver(*w.watchers[3], true); }},
    {"name an observer by its path", Left::Nothing,
     [](World& w) { w.number()->getPath(3).setObserverAsPath(std::nullopt); }},
    {"switch links off and on", Left::Part,
     [](World& w) {
         auto const number = w.number();
         for (std::uint64_t i = 0; i < number->getNumPrePaths() + number->getNumPostPaths(); ++i)
             if (number->getPath(i).deactivate())
                 number->getPath(i).activate();
         number->resortPostObservers();
     }},
    {"change priorities", Left::Nothing,
     [](World& w) {
         auto& path = w.number()->getPath(3);
         ObserverPath changed(path);
         changed.setAction(World::NOTIFY);
         path = changed;
         path.activate();
         w.number()->resortPostObservers();
     }},
    // --- Notes
    {"attach notes", Left::Part,
     [](World& w) {
         Notes const notes(*w.number());
         auto const lasting = std::make_shared<ObserverInfo>();
         lasting->setExpire(false);
         w.number()->addNotifyInfo(lasting);
         w.number()->addNotifyInfo(std::make_shared<InfoFailed>(nullptr));
         w.number()->touch(nullptr, nullptr);
         w.number()->setNotifyInfos(w.number()->copyNotifyInfos());
     }},
    {"attach an info container", Left::Nothing,
     [](World& w) { AttrContInfoSetter const setter(w.root, w.pump()); }},
    // --- The registry
    {"save and load by the registry", Left::Part,
     [](World& w) {
         auto const place = registryPlace();
         place->deleteTree("");
         w.attribute("follower-of-the-number")->assignFrom("3", nullptr, nullptr, nullptr);
         AttrWriteRegistry writer(place, 0, 9);
         w.root->attributeVisitor(writer, true);
         AttrReadRegistry reader(place, true, 0, 9);
         w.root->attributeVisitor(reader, true);
         w.written = std::to_string(reader.getNumRead());
         registryPlace()->deleteTree("");
     }},
    {"keep the registry in a file", Left::Nothing,
     [](World& w) {
         registryPlace()->deleteTree("");
         RegKeys("", RegKeys::predefinedKey("HKEY_CURRENT_USER"), false).deleteKey("Software");
         std::remove(registryFile);
         for (char const* const text : {"a text that is kept in a file", ""}) {
             RegistryFile file;
             w.written += verdict(file.attach(registryFile)) + registryPlace()->queryKey("name-of-the-value");
             if (*text)
                 registryPlace()->setKey("name-of-the-value", text);
             w.written += verdict(file.detach());
         }
         std::ifstream in(registryFile, std::ios::binary);
         w.written += std::string(std::istreambuf_iterator<char>(in), {});
     }},
};

/// What came of a step: "done" and what it has given, or why it failed.
std::string take(Step const& step, World& world, std::size_t number, FailingAllocations::Mode mode) {
    try {
        FailingAllocations const scope(number, mode);
        step.take(world);
    } catch (std::bad_alloc const&) {
        return "no memory";
    } catch (std::exception const& other) {
        return other.what();
    }
    return "done";
}

struct Expected {
    std::string before, state, written;
};

/// Makes one allocation of a step fail, and checks what is left. False: it has no allocation of that number.
bool failOne(Step const& step, bool isCrowded, std::size_t number, FailingAllocations::Mode mode,
             Expected const& expected) {
    World world(isCrowded);
    if (step.prepare)
        step.prepare(world);
    std::string const outcome = take(step, world, number, mode);
    bool const hasFailed = FailingAllocations::haveFailed();
    if (outcome == "done" && world.state() == expected.state) {
        EXPECT_EQ(world.faults(), "");
        return hasFailed;
    }
    if (outcome != "done") {
        EXPECT_EQ(outcome, "no memory");
    }
    bool const isReported = outcome != "done" || world.written.find("StreamFailure") != std::string::npos;
    EXPECT_TRUE(isReported) << world.state() << "\n instead of\n" << expected.state;
    EXPECT_EQ(world.faults(), "");
    world.restart();
    if (step.left == Left::Nothing) {
        EXPECT_EQ(world.state(), expected.before);
    }
    EXPECT_EQ(take(step, world, 0, mode), "done");
    EXPECT_EQ(step.left == Left::Some ? world.written : world.state(),
              step.left == Left::Some ? expected.written : expected.state);
    EXPECT_EQ(world.faults(), "");
    return true;
}

class AllocationFailureTest : public testing::TestWithParam<Step> {};

// Tables that the library keeps, and makes when they are first needed, are no leak: what is left behind each
// time is one.
void failEach(Step const& step, bool isCrowded, FailingAllocations::Mode mode, std::size_t& numAllocations) {
    Expected expected;
    {
        World world(isCrowded);
        if (step.prepare)
            step.prepare(world);
        expected.before = world.state();
        ASSERT_EQ(take(step, world, 0, mode), "done");
        expected.state = world.state();
        expected.written = world.written;
        ASSERT_EQ(world.faults(), "");
    }
    bool goesOn = true;
    for (numAllocations = 0; goesOn && !testing::Test::HasFailure(); ++numAllocations) {
        SCOPED_TRACE("allocation " + std::to_string(numAllocations + 1) +
                     (mode == FailingAllocations::Mode::Once ? "" : " and all that follow") +
                     (isCrowded ? ", crowded" : ""));
        std::ptrdiff_t left = 1;
        for (int attempt = 0; attempt < 3 && left != 0; ++attempt) {
            std::ptrdiff_t const blocks = FailingAllocations::numBlocks();
            goesOn = failOne(step, isCrowded, numAllocations + 1, mode, expected);
            left = FailingAllocations::numBlocks() - blocks;
        }
        if (!testing::Test::HasFailure()) { // which is kept, too
            EXPECT_EQ(left, 0) << "blocks are left behind";
        }
    }
}

TEST_P(AllocationFailureTest, LeavesAllAsItWasOrAsItIsSaid) {
    std::size_t numAllocations = 0;
    failEach(GetParam(), false, FailingAllocations::Mode::FromThenOn, numAllocations);
    failEach(GetParam(), false, FailingAllocations::Mode::Once, numAllocations);
    // What needs much memory goes over the whole tree; in a crowd it does the same again and again.
    if (numAllocations < 60)
        failEach(GetParam(), true, FailingAllocations::Mode::Once, numAllocations);
}

/// The words of a step, as a name.
std::string nameOf(testing::TestParamInfo<Step> const& info) {
    std::string name;
    bool begins = true;
    for (char const* c = info.param.what; *c != '\0'; ++c) {
        if (*c != ' ')
            name += begins && *c >= 'a' ? static_cast<char>(*c - 'a' + 'A') : *c;
        begins = *c == ' ';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Steps, AllocationFailureTest, testing::ValuesIn(steps), nameOf);

} // namespace
