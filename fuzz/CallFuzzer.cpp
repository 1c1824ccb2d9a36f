// SPDX-License-Identifier: MIT
// The input is a sequence of public calls on trees, made in any order and from inside of handlers too. After
// each of them what must always hold is checked.
#include "Fuzzing.h"

#include <AttributeContainer/AttributeContainer.h>
#include <ErrorHandling/Logger.h>

#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

using namespace Zorvan::AttributeContainer;
using fuzzing::Input;
using fuzzing::require;

namespace {

constexpr std::uint64_t noToken = ~std::uint64_t{0};
constexpr std::size_t maxContainers = 10, maxWatchers = 6, maxNesting = 3, maxSteps = 200, maxMembers = 60;
char const* const names[] = {"a", "b", "c", "n1", "n2", "A", "not valid", ""};
using Cause = std::optional<std::reference_wrapper<ObservingObject>>;

class World;

/// An observer whose handlers go on with the input.
class Watcher : public Observer {
public:
    Watcher(World& world, std::string name) : world_(world), name_(std::move(name)) {}

    using Observer::getName;
    using Observer::inqObjPath;
    std::string getName() override { return name_; }
    std::optional<std::string> inqObjPath() override { return "/" + name_; }
    Action::ExecReturn changedNotify(Observable& observable, Cause& cause) override;
    Action::ExecReturn toChangeNotify(Observable& observable, Cause& cause) override;

    bool watches(Observable const& observable) const {
        return params().lookupObservedByMe(observable) != noToken;
    }

private:
    World& world_;
    std::string name_;
};

/// What a handler throws.
struct Thrown : std::runtime_error {
    Thrown() : std::runtime_error("thrown by a handler") {}
};

class World {
public:
    explicit World(Input& input) : input_(input) {}
    ~World() {
        // Containers that lie in one another keep each other.
        for (auto const& one : rings_)
            if (auto const container = one.lock())
                for (std::uint64_t token = container->getNumFields(); token > 0; --token)
                    container->rmField(token - 1);
    }
    World(World const&) = delete;
    World& operator=(World const&) = delete;

    void run() {
        while (!input_.empty() && numSteps_ < maxSteps) {
            try {
                step();
            } catch (Thrown const&) {
            }
            check();
        }
    }

    /// What a handler does: a few steps, unless it is deep already.
    Action::ExecReturn react(Observable& observable, bool isAsked) {
        std::size_t const kind = input_.below(16);
        if (nesting_ < maxNesting && kind >= 8) {
            struct Nested {
                std::size_t& nesting;
                ~Nested() { --nesting; }
            } const nested{++nesting_};
            for (std::size_t i = 0; i < kind - 7 && !input_.empty(); ++i)
                step();
        }
        if (kind == 1)
            throw Thrown();
        if (kind < 4 && isAsked) {
            observable.addNotifyInfo(std::make_shared<InfoFailed>(
                std::make_unique<Result::element_type>("CallFuzzer", __LINE__, WriteProtected)));
            return Action::ExecFailed;
        }
        return Action::ExecOk;
    }

private:
    using Containers = std::vector<std::shared_ptr<AttrContainer>>;

    std::string name() { return names[input_.below(std::size(names))]; }
    std::shared_ptr<AttrContainer> container() {
        return containers_.empty() ? nullptr : containers_[input_.below(containers_.size())];
    }
    std::shared_ptr<Object> object() { return std::dynamic_pointer_cast<Object>(container()); }
    std::shared_ptr<Watcher> watcher() {
        return watchers_.empty() ? nullptr : watchers_[input_.below(watchers_.size())];
    }
    std::shared_ptr<Attribute> attribute() {
        auto const from = container();
        return from && from->getNumAttributes() != 0
                   ? from->getAttr(input_.below(from->getNumAttributes())).lock()
                   : nullptr;
    }
    void keep(std::shared_ptr<AttrContainer> made) {
        if (!made)
            return;
        if (containers_.size() < maxContainers)
            containers_.push_back(std::move(made));
        else
            std::swap(containers_[input_.below(maxContainers)], made); // the old one goes last
    }

    void step() {
        if (++numSteps_ > maxSteps)
            return;
        switch (input_.below(11)) {
        case 0:
            return make();
        case 1:
        case 2:
            return change();
        case 3:
        case 4:
            return changeAttributes();
        case 5:
            return changeFields();
        case 6:
            return changeChildren();
        case 7:
        case 8:
            return changeLinks();
        case 9:
            return letGo();
        default:
            return traverse();
        }
    }

    void make() {
        switch (input_.below(6)) {
        case 0:
            return keep(AttrContainer::create());
        case 1:
        case 2:
            return keep(Object::create());
        case 3:
            if (auto const source = container(); source && numMembers(*source) < maxMembers)
                keep(source->duplicate(CreateType::Deep));
            return;
        case 4:
            if (watchers_.size() < maxWatchers)
                watchers_.push_back(std::make_shared<Watcher>(*this, "w" + std::to_string(watchers_.size())));
            return;
        default:
            if (auto const protectedOne = attribute())
                protections_.push_back(AttributeWriteProtection::create(protectedOne, [this](Attribute& one) {
                    return input_.below(2) ? std::optional(one.getValueAsText()) : std::nullopt;
                }));
        }
    }

    void change() {
        auto const changed = attribute();
        if (!changed)
            return;
        auto* const number = dynamic_cast<Attr<int>*>(changed.get());
        auto* const text = dynamic_cast<Attr<std::string>*>(changed.get());
        switch (input_.below(8)) {
        case 0:
        case 1:
            if (number)
                number->setValue(static_cast<int>(input_.below(4)));
            else if (text)
                text->setValue(name());
            return;
        case 2:
            return changed->assignFrom(name(), nullptr, nullptr, nullptr);
        case 3:
            return changed->touch(nullptr, nullptr);
        case 4:
            if (auto const source = attribute())
                *changed = *source;
            return;
        case 5:
            changed->addNotifyInfo(
                std::make_shared<CachedAttributeInfo>(changed->duplicate(CreateType::Deep, std::nullopt)));
            return Attribute::setIsCachedAttributePending(input_.below(2) == 1);
        case 6:
            return changed->setNotificationEnabled(input_.below(2) == 1);
        default:
            if (auto const named = container())
                static_cast<void>(named->setName(name(), 0));
        }
    }

    void changeAttributes() {
        auto const of = container();
        if (!of)
            return;
        switch (input_.below(6)) {
        case 0:
            of->rmAttribute(name());
            return;
        case 1:
            of->rmAllCustomAttributes();
            return;
        case 2:
            if (auto const other = attribute())
                of->addAttribute(other, name());
            return;
        case 3:
            of->addAttribute(std::make_shared<CustAttr<std::string>>(name()), name());
            return;
        default:
            of->addAttribute(std::make_shared<CustAttr<int>>(static_cast<int>(input_.below(4))), name());
        }
    }

    void changeFields() {
        auto const of = container();
        auto const field = container();
        if (!of || numMembers(*of) + numMembers(*field) > maxMembers)
            return;
        rings_.push_back(of); // May become one.
        std::uint64_t const token = input_.below(4);
        switch (input_.below(6)) {
        case 0:
            of->setField(token, field);
            return;
        case 1:
            of->replaceField(of->getField(token).lock(), field);
            return;
        case 2:
            of->rmField(token);
            return;
        case 3:
            of->rmField(name());
            return;
        default:
            of->addField(field, name(), static_cast<int>(input_.below(3)) * 8 & 20);
        }
    }

    void changeChildren() {
        auto const parent = object();
        auto const child = object();
        if (!parent || !child)
            return;
        switch (input_.below(4)) {
        case 0:
            parent->rmChild(*child, 0);
            return;
        case 1:
            parent->rmChild(input_.below(4), 0);
            return;
        default:
            parent->addChild(child, static_cast<int>(input_.below(3)) * 8 & 20);
        }
    }

    void changeLinks() {
        auto const of = attribute();
        if (!of)
            return;
        auto const observer = watcher();
        auto const priority = static_cast<short>(input_.below(4));
        std::uint64_t const numLinks = of->getNumPrePaths() + of->getNumPostPaths();
        std::uint64_t const link = numLinks == 0 ? noToken : input_.below(numLinks);
        switch (input_.below(10)) {
        case 0:
        case 1:
            if (observer)
                of->addPreObserver(*observer, priority, 1, input_.below(2) == 1);
            return;
        case 2:
        case 3:
            if (observer)
                of->addObserver(*observer, priority, 0, input_.below(2) == 1);
            return;
        case 4:
            if (observer)
                of->rmObserver(*observer);
            return;
        case 5:
            if (link != noToken)
                of->removePath(link);
            return;
        case 6:
            if (link != noToken && !of->getPath(link).activate())
                of->getPath(link).deactivate();
            return;
        case 7:
            if (link != noToken && observer)
                of->getPath(link).setObserver(*observer, input_.below(2) == 1);
            return;
        case 8:
            if (auto const follower = attribute())
                if (auto const following = follower->getObserver().lock())
                    of->addObserver(*following, priority, 2, true);
            return;
        default:
            of->addObserver("/" + name(), priority, 0, false);
            of->updateObserverLists(true);
        }
    }

    void letGo() {
        switch (input_.below(6)) {
        case 0:
            if (!watchers_.empty())
                std::exchange(watchers_[input_.below(watchers_.size())], nullptr);
            std::erase(watchers_, nullptr);
            return;
        case 1:
            protections_.clear();
            return;
        case 2:
            Attribute::setIsCachedAttributePending(false);
            return;
        default:
            if (!containers_.empty()) {
                std::size_t const index = input_.below(containers_.size());
                auto const gone = std::move(containers_[index]); // goes when the list is whole again
                containers_.erase(containers_.begin() + static_cast<std::ptrdiff_t>(index));
            }
        }
    }

    void traverse() {
        auto const first = container();
        auto const second = container();
        if (!first || numMembers(*first) + numMembers(*second) > maxMembers)
            return;
        switch (input_.below(6)) {
        case 0:
            AttrContMerger::merge(*first, *second, input_.byte(), nullptr);
            return;
        case 1:
            AttrContComparer(-1, static_cast<int>(input_.below(8))).compare(*first, *second);
            return;
        case 2: {
            std::ostringstream out;
            static_cast<void>(
                XMLSerialization::to(out, *first, std::make_shared<WriteContextBase>(ModelFormat::Xml)));
            return;
        }
        case 3: {
            BlockObserver const scope;
            require(Attribute::isObservingBlocked(), "a scope blocks observation");
            return step();
        }
        default:
            return writeAndRead(*first, *second);
        }
    }

    void writeAndRead(AttrContainer& from, AttrContainer& into) {
        auto const format = input_.below(2) ? ModelFormat::Text : ModelFormat::XmlV2;
        std::stringstream document;
        if (auto const error = from.writeTo(document, std::make_shared<WriteContextBase>(format)))
            if (!error->isWarning())
                return;
        auto const context = std::make_shared<ReadContextBase>();
        context->setFormat(format);
        static_cast<void>(into.readFrom(document, context));
    }

    /// The containers that are reached from one, each as often as it is reached; counts no further than the
    /// limit.
    std::size_t numMembers(AttrContainer& from) {
        std::size_t count = 1;
        Containers level{from.weak_from_this().lock()
                             ? std::static_pointer_cast<AttrContainer>(from.shared_from_this())
                             : nullptr};
        while (!level.empty() && level.back() && count <= maxMembers) {
            auto const one = std::move(level.back());
            level.pop_back();
            count += one->getNumAttributes() / 8;
            forEachMember(*one, [&](std::shared_ptr<AttrContainer> const& member) {
                ++count;
                level.push_back(member);
            });
        }
        return count;
    }

    template <class Use>
    static void forEachMember(AttrContainer& of, Use const& use) {
        for (std::uint64_t token = 0; token < of.getNumFields(); ++token)
            if (auto const field = of.getField(token).lock())
                use(field);
        if (auto* const object = dynamic_cast<Object*>(&of))
            for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
                use(object->children().getChild(i));
    }

    void check() {
        require(!Attribute::isObservingBlocked(), "observation is not left blocked");
        for (auto const& one : containers_)
            check(*one);
    }

    void check(AttrContainer& of) {
        for (std::uint64_t token = 0; token < of.getNumAttributes(); ++token) {
            auto const attribute = of.getAttr(token).lock();
            if (!attribute)
                continue;
            auto const location = attribute->getLocation();
            require(location && &location->get() == &of, "an attribute knows its container");
            require(of.getAttrToken(*attribute) == token, "an attribute is found at its token");
            std::uint64_t const named = of.getAttrToken(attribute->getName());
            require(attribute->getName().empty() || of.getAttrName(named) == attribute->getName(),
                    "an attribute's name names an attribute of that name");
            require(!attribute->lookupNotifyInfo(typeid(InfoFailed)), "no refusal is left behind");
            check(*attribute);
        }
        for (std::uint64_t token = 0; token < of.getNumFields(); ++token)
            if (auto const field = of.getField(token).lock()) {
                std::uint64_t const found = of.getFieldToken(*field);
                require(of.getField(found).lock() == field, "a field is found at its token");
                require(found <= token, "the first slot of a field is found");
            }
        if (auto* const object = dynamic_cast<Object*>(&of))
            for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
                require(object->children().getChild(i)->getParent().get() == object,
                        "a child knows its parent");
    }

    /// Both halves of every link agree.
    void check(Attribute& attribute) {
        std::vector<Observer*> active;
        for (std::uint64_t i = 0; i < attribute.getNumPrePaths() + attribute.getNumPostPaths(); ++i) {
            ObserverPath& path = attribute.getPath(i);
            if (!path.isActive())
                continue;
            auto const observer = path.lookupObserver();
            require(observer.has_value(), "an active link has an observer");
            active.push_back(&observer->get());
        }
        for (auto const& one : watchers_)
            require(one->watches(attribute) == (std::count(active.begin(), active.end(), one.get()) != 0),
                    "an observer knows what it watches");
    }

    Input& input_;
    std::size_t numSteps_ = 0;
    std::size_t nesting_ = 0;
    Containers containers_;
    std::vector<std::weak_ptr<AttrContainer>> rings_;
    std::vector<std::shared_ptr<Watcher>> watchers_;
    std::vector<std::shared_ptr<AttributeWriteProtection>> protections_;
};

Action::ExecReturn Watcher::changedNotify(Observable& observable, Cause&) {
    return world_.react(observable, false);
}

Action::ExecReturn Watcher::toChangeNotify(Observable& observable, Cause&) {
    return world_.react(observable, true);
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static bool const isQuiet = [] {
        Zorvan::ErrorHandling::Logger::setSink([](Zorvan::ErrorHandling::LogMessage const&) {});
        return true;
    }();
    static_cast<void>(isQuiet);
    Input input(data, size);
    World(input).run();
    Attribute::setIsCachedAttributePending(false);
    return 0;
}
