// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttributeContainer.h>

#include <functional>
#include <stdexcept>

namespace Zorvan::AttributeContainer::Testing {

/// What a hook throws that was made to.
struct HookFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The calls of hooks and handlers of the tests' classes, of which one can be made to throw.
class Hooks {
public:
    /// From here on the `number`th call throws, and with `followingToo` all that follow it; none for 0.
    explicit Hooks(std::size_t number, bool followingToo = false) {
        next_ = number;
        followingToo_ = followingToo;
        failed_.clear();
    }
    /// From here on `act` is done in the `number`th call of those in which the application may do anything.
    Hooks(std::size_t number, std::function<void()> act) : Hooks(0) {
        nextEvent_ = number;
        act_ = std::move(act);
    }
    Hooks(Hooks const&) = delete;
    Hooks& operator=(Hooks const&) = delete;
    ~Hooks() { next_ = nextEvent_ = 0; }

    static void run(char const* hook) {
        if (next_ == 0 || (next_ > 1 && --next_ > 0))
            return;
        next_ = followingToo_ ? 1 : 0;
        failed_ += std::string(hook) + " ";
        throw HookFailure(hook);
    }
    /// A point at which the application may do anything; whoever calls this does not use its object any more.
    static void runEvent(char const* hook) {
        run(hook);
        if (nextEvent_ == 0 || --nextEvent_ > 0)
            return;
        failed_ = hook;
        std::exchange(act_, nullptr)();
    }
    /// The same behind what a hook does.
    template <class Call>
    static auto runEvent(char const* hook, Call const& call) {
        if constexpr (std::is_void_v<decltype(call())>) {
            call();
            runEvent(hook);
        } else {
            auto result = call();
            runEvent(hook);
            return result;
        }
    }
    /// The hooks that the scope that was opened last made throw, or in which it acted.
    static std::string const& failed() { return failed_; }

private:
    static inline std::size_t next_ = 0;
    static inline std::size_t nextEvent_ = 0;
    static inline bool followingToo_ = false;
    static inline std::function<void()> act_;
    static inline std::string failed_;
};

#define KX_TEST_HOOK(declaration, call)                                                                      \
    declaration override {                                                                                   \
        Hooks::run(#call);                                                                                   \
        return Base::call;                                                                                   \
    }

#define KX_TEST_EVENT(declaration, call)                                                                     \
    declaration override {                                                                                   \
        return Hooks::runEvent(#call, [&] { return Base::call; });                                           \
    }

/// A class of containers whose hooks go through `Hooks` before they do what those of `Base` do.
template <class Base>
class Hooked : public Base {
public:
    using Base::Base;
    using typename Base::CompareSelectTokens;
    using Visit = VisitorCore::VisitResult;
    using Container = std::shared_ptr<AttrContainer>;
    using Path = std::optional<std::string const>;
    using Cause = std::optional<std::reference_wrapper<ObservingObject>>;

    using Base::getAttrDefinition;
    using Base::getAttrName;
    using Base::getAttrToken;
    using Base::getFieldName;
    using Base::getFieldToken;
    using Base::getName;
    using Base::inqDisplayPath;
    using Base::inqObjPath;
    using Base::inqObserver;
    KX_TEST_HOOK(Container duplicate(CreateType a), duplicate(a))
    KX_TEST_HOOK(std::string getName(), getName())
    KX_TEST_HOOK(Result setName(std::string const& a, int b), setName(a, b))
    KX_TEST_HOOK(Result checkName(std::string const& a, int b) const, checkName(a, b))
    KX_TEST_HOOK(bool isNameUnique(std::string const& a) const, isNameUnique(a))
    KX_TEST_HOOK(std::string generateUniqueName(std::string const& a), generateUniqueName(a))
    KX_TEST_HOOK(std::uint64_t getAttrToken(std::string const& a) const, getAttrToken(a))
    KX_TEST_HOOK(std::optional<std::string> getAttrName(std::uint64_t a), getAttrName(a))
    KX_TEST_HOOK(AttrDefinition const* getAttrDefinition(std::uint64_t a) const, getAttrDefinition(a))
    KX_TEST_HOOK(std::uint64_t lastAttrToken() const, lastAttrToken())
    KX_TEST_HOOK(std::uint64_t getFieldToken(std::string const& a) const, getFieldToken(a))
    KX_TEST_HOOK(std::optional<std::string> getFieldName(std::uint64_t a), getFieldName(a))
    KX_TEST_HOOK(std::uint64_t lastFieldToken() const, lastFieldToken())
    KX_TEST_HOOK(Container checkCreateChildField(std::string const& a, std::string const& b,
                                                 std::uint64_t* c),
                 checkCreateChildField(a, b, c))
    KX_TEST_HOOK(Container checkCreateDefaultChildField(std::string const& a, std::string const& b,
                                                        std::uint64_t* c),
                 checkCreateDefaultChildField(a, b, c))
    KX_TEST_EVENT(void informParentAdded(Container a), informParentAdded(a))
    KX_TEST_EVENT(bool informParentRemoved(Container a), informParentRemoved(a))
    KX_TEST_HOOK(std::optional<std::string> getFieldRegistryPrefix(AttrContainer const& a),
                 getFieldRegistryPrefix(a))
    KX_TEST_HOOK(std::weak_ptr<ObservingObject> inqObserver(Path const& a), inqObserver(a))
    KX_TEST_HOOK(std::weak_ptr<ObservingObject const> inqObserver(Path const& a) const, inqObserver(a))
    KX_TEST_HOOK(std::optional<std::string> inqObjPath(), inqObjPath())
    KX_TEST_EVENT(Action::ExecReturn toChangeNotify(Observable& a, Cause& b), toChangeNotify(a, b))
    KX_TEST_EVENT(Action::ExecReturn changedNotify(Observable& a, Cause& b), changedNotify(a, b))
    KX_TEST_HOOK(std::optional<std::reference_wrapper<Observer>> lookupSelf(), lookupSelf())
    KX_TEST_HOOK(void informDelete(Observable const& a), informDelete(a))
    KX_TEST_HOOK(int copyFrom(Observer const& a), copyFrom(a))
    KX_TEST_EVENT(void updateObservers(ObserverRelationTableObserver& a), updateObservers(a))
    KX_TEST_HOOK(Visit fieldVisitor(GeneralVisitor<AttrContainer&>& a, int b), fieldVisitor(a, b))
    KX_TEST_HOOK(Visit fieldAndStructureVisitor(GeneralVisitor<AttrContainer&>& a, int b),
                 fieldAndStructureVisitor(a, b))
    KX_TEST_HOOK(Visit observerVisitor(ObserverVisitor& a, bool b), observerVisitor(a, b))
    KX_TEST_HOOK(Visit attributeVisitor(AttributeVisitor& a, bool b), attributeVisitor(a, b))
    KX_TEST_HOOK(bool isEqualTo(AttrContainer const& a, std::vector<std::uint64_t>* b,
                                CompareSelectTokens const* c) const,
                 isEqualTo(a, b, c))
    KX_TEST_HOOK(Result readFrom(std::istream& a, std::shared_ptr<ReadContextBase const> b), readFrom(a, b))
    KX_TEST_HOOK(Result writeTo(std::ostream& a, std::shared_ptr<WriteContextBase const> b), writeTo(a, b))
    KX_TEST_HOOK(void initRead(), initRead())

protected:
    KX_TEST_HOOK(Result readField(std::istream& a, std::shared_ptr<ReadContextBase const> b), readField(a, b))
    KX_TEST_HOOK(Result writeField(std::ostream& a, std::uint64_t b,
                                   std::shared_ptr<WriteContextBase const> c),
                 writeField(a, b, c))
};

/// The same with the hooks of objects.
template <class Base0>
class HookedObject : public Hooked<Base0> {
    using Base = Hooked<Base0>;

public:
    using Base::Base;
    KX_TEST_HOOK(bool rmChild(Object& a, int b), rmChild(a, b))
    KX_TEST_HOOK(bool rmChild(std::uint64_t a, int b), rmChild(a, b))
    KX_TEST_EVENT(bool acceptChild(Object& a, int b), acceptChild(a, b))
    KX_TEST_EVENT(bool acceptParent(Object& a), acceptParent(a))
    KX_TEST_HOOK(VisitorCore::VisitResult structureVisitor(GeneralVisitor<Object&>& a, int b),
                 structureVisitor(a, b))

protected:
    KX_TEST_HOOK(Result readChild(std::istream& a, std::shared_ptr<ReadContextBase const> b), readChild(a, b))
};

} // namespace Zorvan::AttributeContainer::Testing
