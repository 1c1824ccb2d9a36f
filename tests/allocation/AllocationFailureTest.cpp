// SPDX-License-Identifier: MIT
#include "ScratchFolder.h"
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
#include <AttributeContainer/Visitors.h>
#include <AttributeContainer/XMLSerialization.h>

#include <cstdio>
#include <new>
#include <sstream>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

namespace fs = std::filesystem;

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

    friend void PrintTo(Step const& step, std::ostream* out) { *out << step.what; }
};

/// The document that holds one of everything.
std::string const& document(ModelFormat::Format format) {
    static std::string const text = documentCases("everything.txt").at(0).texts.at(0), xml = xmlOf(text);
    return format == TEXT ? text : xml;
}

class HookedDictionary final : public ReferenceDictionary {
    using Base = ReferenceDictionary;

public:
    KX_TEST_HOOK(std::shared_ptr<AttrContainer> resolveReference(std::uint64_t a), resolveReference(a))
    KX_TEST_HOOK(bool registerReference(std::uint64_t a, std::shared_ptr<AttrContainer> b),
                 registerReference(a, b))
    KX_TEST_HOOK(bool unregisterReference(std::uint64_t a), unregisterReference(a))
};

class HookedReading final : public ReadContextBase {
    using Base = ReadContextBase;

public:
    explicit HookedReading(ModelFormat::Format format, std::vector<std::uint64_t> ids = {})
        : hasDictionary_(!ids.empty()) {
        setFormat(format);
        dictionary_.initializeFromVector(ids);
    }
    KX_TEST_EVENT(std::shared_ptr<AttrContainer> createObject(std::string const& a), createObject(a))
    KX_TEST_EVENT(void idle() const, idle())
    ReferenceDictionary* getReferenceDictionary() const override {
        Hooks::runEvent("getReferenceDictionary");
        return hasDictionary_ ? &dictionary_ : nullptr;
    }

private:
    bool hasDictionary_;
    mutable HookedDictionary dictionary_;
};

class HookedWriting final : public SharingWriter {
public:
    using SharingWriter::SharingWriter;
    SharedInstanceCollection* getSharedInstances() const override {
        Hooks::run("getSharedInstances");
        return SharingWriter::getSharedInstances();
    }
};

template <class Root>
void readDocument(World& world, ModelFormat::Format format) {
    auto const root = Root::create();
    world.written = verdict(read(*root, document(format), std::make_shared<HookedReading>(format)));
    world.made = root;
}

class HookedComparer final : public AttrContComparerKeepDiffs {
    using Base = AttrContComparerKeepDiffs;

    KX_TEST_HOOK(void reset() const, reset())
    KX_TEST_HOOK(void enterField(OptionalContainer a) const, enterField(a))
    KX_TEST_HOOK(void exitField(OptionalContainer a) const, exitField(a))
    KX_TEST_HOOK(std::uint64_t handleAttributes(Attribute const* a, Attribute const* b) const,
                 handleAttributes(a, b))
};

/// Counts what it visits, as a visitor of attributes or of containers.
class HookedVisitor final : public AttributeVisitor {
    using Base = AttributeVisitor;

public:
    HookedVisitor() : AttributeVisitor(0, 9) {}
    VisitResult visit(Attribute&) override {
        Hooks::runEvent("visit");
        ++numVisited;
        return Continue;
    }
    KX_TEST_EVENT(VisitResult visitDone(Attribute& a), visitDone(a))
    KX_TEST_EVENT(VisitResult visitDone(AttrContainer& a), visitDone(a))
    KX_TEST_EVENT(VisitResult visit(AttrContainer& a), visit(a))
    int numVisited = 0;
};

/// A group with an action that tells the observer, and its registration.
class HookedActions final : public ActionDefinitionBase {
public:
    std::uint64_t getNumActions() override {
        Hooks::run("getNumActions");
        return 1;
    }
    std::optional<std::reference_wrapper<Action>> getActionAt(std::uint64_t) override {
        Hooks::run("getActionAt");
        return action_;
    }
    std::string getNameAt(std::uint64_t) override {
        Hooks::run("getNameAt");
        return "action-of-the-application";
    }

private:
    struct Telling final : ActionNotify {
        using Base = ActionNotify;
        using Base::Base;
        KX_TEST_EVENT(ExecReturn execute(Observable& a, Observer& b,
                                         std::optional<std::reference_wrapper<ObservingObject>> c),
                      execute(a, b, c))
    } action_{0};
};

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

/// The file in which a step keeps the registry.
fs::path const& registryFile() {
    static ScratchFolder const folder;
    static fs::path const file = folder.path / "kept.reg";
    return file;
}
/// What lies beside it.
std::string strayFiles() {
    std::string names;
    for (auto const& entry : fs::directory_iterator(registryFile().parent_path()))
        if (entry.path() != registryFile())
            names += entry.path().filename().string() + " is left; ";
    return names;
}

std::shared_ptr<RegKeys> registryPlace() {
    return std::make_shared<RegKeys>(registryKey, RegKeys::predefinedKey("HKEY_CURRENT_USER"), false);
}

void addStation(World& world) {
    auto const station = Station::create();
    world.root->addChild(station, 16);
}

using TextMap = std::map<std::string, std::string>;
TextMap const oldMap{{"a key that is long enough to need memory", "first"}},
    newMap{{"another key that is just as long", "a value that is long enough"}, {"short", "value"}};
std::vector<std::string> const oldTexts{"a text of some length that needs memory"},
    newTexts{"a text that is a good deal longer than the other one was",
             "and one behind it, for good measure"};

template <class T>
Attr<T>& collection(World const& world) {
    return dynamic_cast<Attr<T>&>(*world.attribute("collection-of-several-elements"));
}
template <class T>
void addCollection(World& world, T const& value) {
    world.root->addAttribute(std::make_shared<CustAttr<T>>(value), "collection-of-several-elements");
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
    {"add a child", Left::Nothing, addStation},
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
         auto const writer = std::make_shared<HookedWriting>(TEXT);
         std::ostringstream out;
         w.written = verdict(w.root->writeTo(out, writer));
         std::vector<std::uint64_t> ids;
         writer->instances.copyToVector(ids);
         w.written += std::to_string(ids.size());
     },
     [](World& w) { w.root->addField(w.pump(), "field-that-is-there-twice", 4); }},
    {"read shared instances", Left::Nothing,
     [](World& w) {
         auto const reader = std::make_shared<HookedReading>(TEXT, std::vector<std::uint64_t>{7});
         static std::string const references = documentCases("references.txt").at(0).texts.at(0);
         auto const root = Object::create();
         w.written = verdict(read(*root, references, reader));
         w.made = root;
     }},
    // --- Copies
    {"copy a tree", Left::Nothing, [](World& w) { w.made = w.root->duplicate(CreateType::Deep); },
     addStation},
    {"copy a tree and share its fields", Left::Nothing,
     [](World& w) { w.made = w.root->duplicate(CreateType::ShareFields); }},
    {"copy the links of an attribute", Left::Part, [](World& w) { w.text()->copyFrom(*w.number()); }},
    {"copy what an observer watches", Left::Part,
     [](World& w) { w.watchers[3]->copyObservationsFrom(*w.watchers[0]); }},
    {"take over what an observer watches", Left::Part,
     [](World& w) { w.watchers[3]->takeOverObservationsFrom(*w.watchers[0]); }},
    {"compare trees", Left::Nothing,
     [](World& w) {
         HookedComparer comparer;
         auto const other = otherTree();
         comparer.compare(*w.root, *other);
         w.written = comparer.getMismatch(0).value_or("none");
     }},
    {"visit a tree", Left::Nothing,
     [](World& w) {
         HookedVisitor visitor;
         w.root->attributeVisitor(visitor, true);
         FindField finder(
             [](AttrContainer const&) {
                 Hooks::runEvent("predicate");
                 return false;
             },
             0, 9);
         w.root->fieldAndStructureVisitor(finder, 3);
         w.written = std::to_string(visitor.numVisited);
     },
     addStation},
    {"merge a tree", Left::Some, [](World& w) { merge(w, 0); }},
    {"merge a tree and tell at the end", Left::Some,
     [](World& w) { merge(w, AttrContMerger::TRIGGER_OBSERVERS_AFTER_MERGE_IS_COMPLETE); }},
    // --- Values
    {"set values in each way", Left::Part,
     [](World& w) {
         w.number()->setValue(9);
         w.number()->assignFrom("8", nullptr, nullptr, nullptr);
         w.text()->setValue("a text that is longer than the old one was");
         w.text()->setValue(w.text()->getValue());
         w.number()->assignFrom(w.text()->getValue(), nullptr, nullptr, nullptr);
         static_cast<Attribute&>(*w.text()) = *w.attribute("list-of-some-numbers");
         static_cast<Attribute&>(*w.number()) = *w.attribute("follower-of-the-number");
         Attribute::NotificationResults results;
         w.number()->touch(nullptr, &results);
         w.written = std::to_string(results.size());
         BlockObserver const scope;
         w.text()->setValue("a text that nobody is asked about or told of");
     }},
    {"set a map", Left::Nothing, [](World& w) { collection<TextMap>(w).setValue(newMap); },
     [](World& w) { addCollection(w, oldMap); }},
    {"set a list of texts", Left::Nothing,
     [](World& w) { collection<std::vector<std::string>>(w).setValue(newTexts); },
     [](World& w) { addCollection(w, oldTexts); }},
    {"set a list of bits", Left::Nothing,
     [](World& w) { collection<std::vector<bool>>(w).setValue(std::vector<bool>(500, true)); },
     [](World& w) {
         addCollection(w, std::vector<bool>{true, false});
     }},
    {"commit a staged map", Left::Nothing,
     [](World& w) {
         auto& map = collection<TextMap>(w);
         Notes const notes(map);
         map.addNotifyInfo(
             std::make_shared<CachedAttributeInfo>(std::make_shared<CustAttr<TextMap>>(newMap)));
         Attribute::setIsCachedAttributePending(true);
         try {
             map.touch(nullptr, nullptr);
         } catch (...) {
             w.isStagedValueLost = !Attribute::isCachedAttributePending();
             throw;
         }
     },
     [](World& w) { addCollection(w, oldMap); }},
    {"set a value that is refused", Left::Nothing,
     [](World& w) {
         w.watchers[1]->refuses = true;
         w.number()->setValue(9);
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
             w.held =
                 AttributeWriteProtection::create(w.attribute("number-of-somethings"), [](Attribute& one) {
                     Hooks::runEvent("check");
                     return std::optional<std::string>(one.getValueAsText());
                 });
         w.number()->setValue(9);
         w.number()->assignFrom("9", nullptr, nullptr, nullptr);
     }},
    // --- Names
    {"rename the root", Left::Part,
     [](World& w) { w.written = verdict(w.root->setName("another-name-of-the-root", 0)); }},
    {"rename a child", Left::Part,
     [](World& w) {
         w.written = verdict(w.root->children().getChild(2)->setName("another-name-of-the-child", 0));
     },
     addStation},
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
    {"remove a child", Left::Nothing, [](World& w) { w.root->rmChild(std::uint64_t{2}, 0); }, addStation},
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
    {"link by an action of the application", Left::Part,
     [](World& w) {
         if (!w.actions)
             w.actions = std::make_shared<HookedActions>();
         ActionContainer::the()->registerActionDef(w.actions);
         w.number()->addObserver(*w.watchers[2], 1, w.actions->getBaseToken(), true);
         w.number()->setValue(9);
         w.number()->rmObserver(*w.watchers[2]);
         w.written = std::to_string(ActionContainer::the()->unregisterActionDef(w.actions));
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
         std::string const path = registryFile().string();
         std::remove(path.c_str());
         for (char const* const text : {"a text that is kept in a file", ""}) {
             RegistryFile file;
             w.written += verdict(file.attach(path));
             w.written += registryPlace()->queryKey("name-of-the-value");
             if (*text)
                 registryPlace()->setKey("name-of-the-value", text);
             w.written += verdict(file.detach());
         }
         w.written += contentOf(path);
     }},
};

/// What fails in a step.
struct Failure {
    bool isHook; ///< or an allocation
    bool followingToo = false;
    std::size_t number = 0; ///< none for 0
};

/// What came of a step: "done" and what it has given, or why it failed.
std::string take(Step const& step, World& world, Failure const& failure) {
    try {
        Hooks const hooks(failure.isHook ? failure.number : 0, failure.followingToo);
        FailingAllocations const allocations(failure.isHook ? 0 : failure.number, failure.followingToo);
        step.take(world);
    } catch (std::bad_alloc const&) {
        return "no memory";
    } catch (HookFailure const&) {
        return "a hook has thrown";
    } catch (std::exception const& other) {
        return other.what();
    }
    return "done";
}

struct Expected {
    std::string before, state, written;
};

void prepare(Step const& step, World& world) {
    if (step.prepare)
        step.prepare(world);
}

/// The step once more does what the failed one has left to do.
void expectRest(Step const& step, World& world, Expected const& expected) {
    world.restart();
    EXPECT_EQ(take(step, world, {false}), "done");
    EXPECT_EQ(step.left == Left::Some ? world.written : world.state(),
              step.left == Left::Some ? expected.written : expected.state);
    EXPECT_EQ(world.faults(), "");
}

/// Makes one allocation of a step fail, and checks what is left. False: it has no allocation of that number.
bool failAllocation(Step const& step, World& world, Failure const& failure, Expected const& expected) {
    std::string const outcome = take(step, world, failure);
    bool const hasFailed = FailingAllocations::haveFailed();
    std::string const state = world.state();
    EXPECT_EQ(world.faults() + strayFiles(), "");
    if (outcome == "done" && state == expected.state)
        return hasFailed;
    if (outcome != "done") {
        EXPECT_EQ(outcome, "no memory");
    }
    bool const isReported = outcome != "done" || world.written.find("StreamFailure") != std::string::npos;
    EXPECT_TRUE(isReported) << state << "\n instead of\n" << expected.state;
    world.restart();
    if (step.left == Left::Nothing) {
        EXPECT_EQ(world.state(), expected.before);
    }
    expectRest(step, world, expected);
    return true;
}

/// Makes one call of a hook throw. What the library had done before it called the hook stays done.
bool failHook(Step const& step, World& world, Failure const& failure, Expected const& expected) {
    std::string const outcome = take(step, world, failure);
    std::string const state = world.state();
    SCOPED_TRACE(Hooks::failed());
    EXPECT_EQ(world.faults() + strayFiles(), "");
    if (Hooks::failed().empty())
        return false;
    // From a destructor nothing passes through.
    EXPECT_TRUE(outcome == "a hook has thrown" || Hooks::failed().starts_with("informParentRemoved"));
    if (state != expected.state)
        expectRest(step, world, expected);
    return true;
}

// Tables that the library keeps, and makes when they are first needed, are no leak: what is left behind each
// time is one.
void failEach(Step const& step, bool isCrowded, Failure failure, std::size_t& numFailures) {
    Expected expected;
    {
        World world(isCrowded);
        prepare(step, world);
        expected.before = world.state();
        ASSERT_EQ(take(step, world, {false}), "done");
        expected.state = world.state();
        expected.written = world.written;
        ASSERT_EQ(expected.written.find("NotSupported"), std::string::npos) << expected.written;
        ASSERT_EQ(world.faults(), "");
    }
    bool goesOn = true;
    for (numFailures = 0; goesOn && !testing::Test::HasFailure(); ++numFailures) {
        failure.number = numFailures + 1;
        SCOPED_TRACE((failure.isHook ? "hook " : "allocation ") + std::to_string(failure.number) +
                     (failure.followingToo ? " and all that follow" : "") + (isCrowded ? ", crowded" : ""));
        std::ptrdiff_t left = 1;
        for (int attempt = 0; attempt < 3 && left != 0; ++attempt) {
            std::ptrdiff_t const blocks = FailingAllocations::numBlocks();
            {
                World world(isCrowded);
                prepare(step, world);
                goesOn = (failure.isHook ? failHook : failAllocation)(step, world, failure, expected);
            }
            left = FailingAllocations::numBlocks() - blocks;
        }
        if (!testing::Test::HasFailure()) { // which is kept, too
            EXPECT_EQ(left, 0) << "blocks are left behind";
        }
    }
}

class FailureTest : public testing::TestWithParam<Step> {};

TEST_P(FailureTest, OfAllocationsLeavesAllAsItWasOrAsItIsSaid) {
    std::size_t numAllocations = 0;
    failEach(GetParam(), false, {false, true}, numAllocations);
    failEach(GetParam(), false, {false}, numAllocations);
    // What needs much memory goes over the whole tree; in a crowd it does the same again and again.
    if (numAllocations < 60)
        failEach(GetParam(), true, {false}, numAllocations);
}

TEST_P(FailureTest, OfHooksPassesThroughAndLeavesAllInOrder) {
    std::size_t numHooks = 0;
    failEach(GetParam(), false, {true, true}, numHooks);
    failEach(GetParam(), false, {true}, numHooks);
}

TEST_P(FailureTest, DoesNotComeFromHandlersThatEndAllThereIs) {
    void (*const acts[])(World&) = {[](World& world) { world.replaceAll(); },
                                    [](World& world) { world.replaceMembers(); }};
    for (auto const act : acts) {
        bool hasActed = true;
        for (std::size_t number = 1; hasActed && !HasFailure(); ++number) {
            World world(false);
            prepare(GetParam(), world);
            std::weak_ptr<AttrContainer> const old = world.root->getField("field-of-the-station");
            {
                Hooks const hooks(number, [&] { act(world); });
                GetParam().take(world);
            }
            SCOPED_TRACE(std::to_string(number) + ". call: " + Hooks::failed());
            hasActed = !Hooks::failed().empty();
            EXPECT_EQ(world.faults(), "");
            world.made = nullptr; // which may share it
            EXPECT_TRUE(old.expired() || !hasActed);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Steps, FailureTest, testing::ValuesIn(steps));

TEST(WarmChange, NeedsNoMemory) {
    for (int const numWatchers : {0, 1, 8}) {
        std::vector<std::shared_ptr<Watcher>> watchers;
        auto const attribute = std::make_shared<CustAttr<int>>(0);
        while (watchers.size() < static_cast<std::size_t>(numWatchers)) {
            watchers.push_back(std::make_shared<Watcher>("w"));
            attribute->addPreObserver(*watchers.back(), 10, 1, true);
            attribute->addObserver(*watchers.back(), 10, 0, true);
        }
        attribute->setValue(1);
        {
            FailingAllocations const none(1, true);
            attribute->setValue(2);
        }
        EXPECT_FALSE(FailingAllocations::haveFailed()) << numWatchers;
        EXPECT_EQ(attribute->getValue(), 2);
    }
}

} // namespace
