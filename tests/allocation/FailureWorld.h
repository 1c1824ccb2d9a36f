// SPDX-License-Identifier: MIT
#pragma once

#include "containers/ApplicationClasses.h"
#include "containers/ContainerAccess.h"
#include "observation/LinkReading.h"
#include "observation/ObservationAccess.h"
#include "serialization/ModelInFormatAccess.h"

#include <AttributeContainer/ActionContainer.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer::Testing {

// Names and texts are too long to be kept inside of a std::string, so that copies of them can fail.

/// Counts what it is asked and told, without need of memory.
class Watcher final : public Observer {
public:
    explicit Watcher(std::string name) : name_(std::move(name)) {}

    using Observer::getName;
    using Observer::inqObjPath;
    std::string getName() override {
        Hooks::run("getName");
        return name_;
    }
    // What runs an event may be the end of its object.
    std::optional<std::string> inqObjPath() override {
        std::string path = "/" + name_;
        Hooks::runEvent("inqObjPath");
        return path;
    }
    Action::ExecReturn changedNotify(Observable& observable,
                                     std::optional<std::reference_wrapper<ObservingObject>>&) override {
        ++told;
        auto* const react = reaction;
        Hooks::runEvent("changedNotify");
        if (react)
            react(observable, false);
        Hooks::runEvent("changedNotify, at its end");
        return Action::ExecOk;
    }
    Action::ExecReturn toChangeNotify(Observable& observable,
                                      std::optional<std::reference_wrapper<ObservingObject>>&) override {
        ++asked;
        auto* const react = reaction;
        bool const isRefusal = refuses;
        Hooks::runEvent("toChangeNotify");
        if (react)
            react(observable, true);
        if (isRefusal)
            observable.addNotifyInfo(std::make_shared<InfoFailed>(
                std::make_unique<Result::element_type>("Watcher", __LINE__, WriteProtected)));
        Hooks::runEvent("toChangeNotify, at its end");
        return isRefusal ? Action::ExecFailed : Action::ExecOk;
    }

    int asked = 0, told = 0;
    bool refuses = false;
    void (*reaction)(Observable& observable, bool isAsked) = nullptr;

private:
    std::string name_;
};

/// A tree with all kinds of members and links, observers outside of it, and what a step on them gives.
class FailureWorld {
public:
    static constexpr std::uint64_t NOTIFY = 0, PRE_NOTIFY = 1, PROPAGATE = 2;
    static constexpr std::size_t NUM_WATCHERS = 4;

    /// A crowded world has so many members and links that they are found by index.
    explicit FailureWorld(bool isCrowded) {
        makeAll();
        for (int i = 0; isCrowded && i < 20; ++i)
            addToCrowd(std::to_string(i) + "-of-those-in-the-crowd");
    }

    FailureWorld(FailureWorld const&) = delete;
    FailureWorld& operator=(FailureWorld const&) = delete;
    ~FailureWorld() { ActionContainer::the()->unregisterActionDef(actions); }

    /// The last references to the tree and the watchers are let go; new ones stand in their place.
    void replaceAll() {
        auto const oldRoot = std::move(root);
        auto const oldWatchers = std::exchange(watchers, {});
        held = nullptr;
        makeAll();
    }

    /// All members of the root go, and new ones stand in their places.
    void replaceMembers() {
        root->rmAllCustomAttributes();
        root->rmAllCustomFields();
        root->setField(0, Pump::create());
        while (root->children().getNumChildren() > 0)
            root->rmChild(std::uint64_t{0}, 0);
        fill(root);
        addLinks();
    }

    static std::shared_ptr<Station> makeTree(std::string const& name) {
        auto const station = Station::create();
        static_cast<void>(station->setName(name, 0));
        fill(station);
        return station;
    }
    static void fill(std::shared_ptr<Station> const& station) {
        station->addAttribute(std::make_shared<CustAttr<int>>(1), "number-of-somethings");
        station->addAttribute(
            std::make_shared<CustAttr<std::string>>("a text that is longer than a few words"),
            "text-that-somebody-wrote");
        station->addAttribute(std::make_shared<CustAttr<std::vector<double>>>(std::vector<double>{1, 2.5}),
                              "list-of-some-numbers");
        station->addAttribute(std::make_shared<CustAttr<int>>(3), "follower-of-the-number");
        auto const field = AttrContainer::create();
        static_cast<void>(field->setName("name-of-the-field-itself", 0));
        field->addAttribute(std::make_shared<CustAttr<std::string>>("a text within the field of the station"),
                            "text-within-the-field");
        station->addField(field, "field-of-the-station", 0);
        for (char const* const childName : {"first-child-of-the-station", "second-child-of-the-station"}) {
            auto const child = Object::create();
            static_cast<void>(child->setName(childName, 0));
            child->addAttribute(std::make_shared<CustAttr<double>>(0.5), "value-within-the-child");
            station->addChild(child, 0);
        }
    }

    std::shared_ptr<Attribute> attribute(std::string const& name) const { return root->getAttr(name).lock(); }
    /// Held by nobody but the tree.
    Attr<int>* number() const { return dynamic_cast<Attr<int>*>(attribute("number-of-somethings").get()); }
    Attr<std::string>* text() const {
        return dynamic_cast<Attr<std::string>*>(attribute("text-that-somebody-wrote").get());
    }
    std::shared_ptr<AttrContainer> pump() const { return root->getField("Pump").lock(); }

    /// Nothing in a tree was written before, as far as shared instances go.
    static void clearFlags(AttrContainer& of) {
        of.setIsSerialized(false);
        forEachMember(of, [](auto const&, AttrContainer& member) { clearFlags(member); });
    }

    /// Forgets what earlier steps have given and counted.
    void restart() {
        made = nullptr;
        written.clear();
        for (auto const& watcher : watchers)
            watcher->asked = watcher->told = 0;
    }

    /// The tree, what was made, and the links of both.
    std::string state() const {
        std::string text = describe(*root, "");
        if (made)
            text += "made: " + describe(*made, "");
        return text + written;
    }
    std::string counts() const {
        std::string text;
        for (auto const& watcher : watchers)
            text += std::to_string(watcher->asked) + "/" + std::to_string(watcher->told) + " ";
        return text;
    }

    /// What is wrong with the state of the thread, of the links, and of the notification; empty when nothing
    /// is.
    std::string faults() {
        std::string text;
        if (Attribute::isObservingBlocked() || Attribute::isCachedAttributePending())
            text += "a switch of the thread is left on; ";
        if (ObservationAccess::relationTable())
            text += "a scope of copying is left open; ";
        if (LinkReadingScope::isOpen())
            text += "a scope of reading is left open; ";
        if (ModelInFormatAccess::isPropagated())
            text += "a keyword is left; ";
        if (ObservationAccess::hasNotifyInfosOnThread())
            text += "infos are left; ";
        if (isStagedValueLost)
            text += "a value that could not be stored is not staged any more; ";
        entries_.clear();
        visited_.clear();
        for (auto const& watcher : watchers)
            entries_[watcher.get()] += 0;
        countEntries(*root, text);
        if (made)
            countEntries(*made, text);
        for (auto const& [observer, count] : entries_)
            if (ObservationAccess::numEntries(*observer) != count)
                text += "\"" + observer->getName() + "\" knows " +
                        std::to_string(ObservationAccess::numEntries(*observer)) + " links of " +
                        std::to_string(count) + "; ";
        if (auto const observed = number(); observed && !held)
            tell(*observed, text);
        return text;
    }

    std::shared_ptr<Station> root;
    std::vector<std::shared_ptr<Watcher>> watchers;
    std::shared_ptr<AttrContainer> made;
    std::string written;
    bool isStagedValueLost = false;
    std::shared_ptr<AttrContainer> other;          ///< a tree besides that one
    std::shared_ptr<ActionDefinitionBase> actions; ///< that a step registers
    std::shared_ptr<void> held; ///< what a step needs until the end; the number may be changed by nobody then

private:
    std::unique_ptr<FieldFactory::FactoryRegistration> registration_ =
        FieldFactory::registerField<Pump>("Pump");

    void makeAll() {
        for (std::size_t i = 0; i < NUM_WATCHERS; ++i)
            watchers.push_back(std::make_shared<Watcher>("watcher-outside-of-the-tree-" + std::to_string(i)));
        root = makeTree("the-root-of-the-whole-tree");
        addLinks();
    }
    void addLinks() {
        auto const of = number();
        of->addPreObserver(*watchers[0], 2, PRE_NOTIFY, false);
        of->addPreObserver(*watchers[1], 1, PRE_NOTIFY, true);
        of->addObserver(*watchers[0], 3, NOTIFY, false);
        of->addObserver(*watchers[1], 2, NOTIFY, true);
        of->addObserver(*pump(), 4, NOTIFY, false);
        of->addObserver("second-child-of-the-station", 1, NOTIFY, false);
        of->addObserver("nobody-of-this-name-is-there", 1, NOTIFY, false);
        auto const follower = attribute("follower-of-the-number")->getObserver().lock();
        of->addObserver(*follower, 1, PROPAGATE, true);
        text()->addObserver(*watchers[2], 1, NOTIFY, false);
        root->Attr_name().addObserver(*watchers[3], 1, NOTIFY, false);
        root->observable()->addObserver(*pump(), 1, NOTIFY, false);
        root->observable()->addObserver(*watchers[3], 1, NOTIFY, false);
    }

    void addToCrowd(std::string const& name) {
        root->addField(AttrContainer::create(), "field-" + name, 0);
        auto const child = Object::create();
        static_cast<void>(child->setName("child-" + name, 0));
        root->addChild(child, 0);
        root->addAttribute(std::make_shared<CustAttr<int>>(1), "attribute-" + name);
        attribute("attribute-" + name)->addObserver(*watchers[0], 1, NOTIFY, false);
        number()->addObserver("path-" + name, 1, NOTIFY, false);
        text()->addObserver(*child, 1, NOTIFY, false);
    }

    template <class Use>
    static void forEachMember(AttrContainer& of, Use const& use) {
        for (std::uint64_t token = 0; token < of.getNumFields(); ++token)
            if (auto const field = of.getField(token).lock())
                use("." + of.getFieldName(token).value_or(""), *field);
        if (auto* const object = dynamic_cast<Object*>(&of))
            for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
                use("/" + std::to_string(i), *object->children().getChild(i));
    }
    template <class Use>
    static void forEachObservable(AttrContainer& of, Use const& use) {
        for (std::uint64_t token = 0; token < of.getNumAttributes(); ++token)
            if (auto const attribute = of.getAttr(token).lock())
                use(*attribute);
        if (auto* const own = ContainerAccess::observable(of))
            use(*own);
    }
    template <class Use>
    static void forEachLink(Observable& of, Use const& use) {
        std::uint64_t const numPre = of.getNumPrePaths();
        for (std::uint64_t i = 0; i < numPre + of.getNumPostPaths(); ++i)
            use(i < numPre, of.getPath(i));
    }

    static std::string describe(AttrContainer& of, std::string const& place) {
        std::string text = place + " " + of.getClassName() + " " + of.getName() + "\n";
        for (std::uint64_t token = 0; token < of.getNumAttributes(); ++token) {
            auto const attribute = of.getAttr(token).lock();
            if (!attribute)
                continue;
            std::string const name = attribute->getName();
            text +=
                " " + std::to_string(of.getAttrToken(name)) + " " + name + "=" + attribute->getValueAsText();
            text += attribute->getToken() == token && &attribute->getLocation()->get() == &of ? "" : " lost";
            text += attribute->isMarked() ? " marked\n" : "\n";
        }
        forEachObservable(of, [&](Observable& observable) {
            forEachLink(observable, [&](bool isPre, ObserverPath& link) {
                text += " " + observable.getName() + (isPre ? "? " : "! ") +
                        std::to_string(link.getPriority()) + (link.isActive() ? " on" : " off") +
                        (link.isTemporary() ? " temporary " : " ") + link.getPath().value_or("-") + " " +
                        link.getActionName().value_or("-") + "\n";
            });
            text += observable.isNotificationEnabled() ? "" : " silent\n";
        });
        forEachMember(of, [&](std::string const& name, AttrContainer& member) {
            auto const* const child = dynamic_cast<Object*>(&member);
            if (name.starts_with('/') ? child->getParent().get() != &of
                                      : of.getFieldName(of.getFieldToken(member)) != name.substr(1))
                text += " not a member:\n";
            text += describe(member, place + name);
        });
        return text;
    }

    void countEntries(AttrContainer& of, std::string& faultsFound) {
        if (!visited_.insert(&of).second)
            return; // shared
        entries_.try_emplace(&of);
        forEachObservable(of, [&](Observable& observable) {
            if (ObservationAccess::isWalking(observable))
                faultsFound += "a walk is left open; ";
            forEachLink(observable, [&](bool, ObserverPath& link) {
                if (link.isActive())
                    ++entries_[&link.lookupObserver()->get()];
            });
        });
        forEachMember(of, [&](auto const&, AttrContainer& member) { countEntries(member, faultsFound); });
    }

    /// Sets an attribute to the value that it has, which everybody who observes it must hear of.
    void tell(Attr<int>& observed, std::string& faultsFound) {
        std::map<Observer*, std::pair<int, int>> expected;
        forEachLink(observed, [&](bool isPre, ObserverPath& link) {
            if (link.isActive())
                ++(isPre ? expected[&link.lookupObserver()->get()].first
                         : expected[&link.lookupObserver()->get()].second);
        });
        for (auto const& watcher : watchers) {
            watcher->asked = watcher->told = 0;
            watcher->refuses = false;
            watcher->reaction = nullptr;
        }
        auto const& follower = attribute("follower-of-the-number");
        int const followed = follower ? dynamic_cast<Attr<int>&>(*follower).getValue() : 0;
        observed.setValue(observed.getValue());
        for (auto const& watcher : watchers)
            if (std::pair(watcher->asked, watcher->told) != expected[watcher.get()])
                faultsFound += "\"" + watcher->getName() + "\" does not hear of the number; ";
        if (follower)
            dynamic_cast<Attr<int>&>(*follower).setValue(followed);
    }

    std::map<Observer*, std::size_t> entries_;
    std::set<AttrContainer const*> visited_;
};

} // namespace Zorvan::AttributeContainer::Testing
