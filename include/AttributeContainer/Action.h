// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

class Attribute;
class Observable;
class Observer;
class ObservingObject;

/// What happens when an observation link is told: an action is executed for the observable, the observer and
/// the cause of the change. Actions are registered in groups with the ActionContainer, which gives them their
/// tokens.
class KX_ATTRIBUTECONTAINER_API Action {
public:
    /// Outcome of one execution. Only ExecStop influences the walk over the links.
    enum ExecReturn : std::int32_t {
        ExecOk = 0,         ///< the observer handled the notification
        ExecNotHandled = 1, ///< nothing was done, or the observer itself caused the change
        ExecFailed = 3,     ///< the observer refused or could not act
        ExecStop = 100      ///< the walk over the current list ends after this observer
    };

    Action(Action const&) = default;
    Action& operator=(Action const&) = default;

    /// "Action".
    static std::string const& getStaticClassName();
    /// The name of the object's class.
    virtual std::string const& getClassName() const;
    virtual ~Action();
    /// Tells the observer. The cause is the object that made the change, if any. May throw what the
    /// observer's handler throws; the handler may destroy the observable, the observer or the link.
    virtual ExecReturn execute(Observable& observable, Observer& observer,
                               std::optional<std::reference_wrapper<ObservingObject>> cause) = 0;

    /// The number under which the action is registered.
    std::uint64_t getToken() const { return token_; }
    /// Set by the ActionContainer on registration.
    void setToken(std::uint64_t token) { token_ = token; }
    /// The registered name of the action's token; empty when there is none.
    std::string getName() const;

protected:
    explicit Action(std::uint64_t token) : token_(token) {}

private:
    std::uint64_t token_;
};

/// Tells an observer after a change (Observer::changedNotify), unless it is the cause itself.
class KX_ATTRIBUTECONTAINER_API ActionNotify : public Action {
public:
    explicit ActionNotify(std::uint64_t token) : Action(token) {}
    ActionNotify(ActionNotify const&) = default;
    ActionNotify(ActionNotify&&) = default;
    ActionNotify& operator=(ActionNotify const&) = default;
    ActionNotify& operator=(ActionNotify&&) = default;
    ~ActionNotify() override;

    /// "ActionNotify".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;
    ExecReturn execute(Observable& observable, Observer& observer,
                       std::optional<std::reference_wrapper<ObservingObject>> cause) override;
};

/// Asks an observer before a change (Observer::toChangeNotify), unless it is the cause itself.
class KX_ATTRIBUTECONTAINER_API ActionPreNotify : public Action {
public:
    explicit ActionPreNotify(std::uint64_t token) : Action(token) {}
    ActionPreNotify(ActionPreNotify const&) = default;
    ActionPreNotify(ActionPreNotify&&) = default;
    ActionPreNotify& operator=(ActionPreNotify const&) = default;
    ActionPreNotify& operator=(ActionPreNotify&&) = default;
    ~ActionPreNotify() override;

    /// "ActionPreNotify".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;
    ExecReturn execute(Observable& observable, Observer& observer,
                       std::optional<std::reference_wrapper<ObservingObject>> cause) override;
};

/// Copies a changed attribute's value into the attribute whose propagation observer is told.
class KX_ATTRIBUTECONTAINER_API ActionPropagate : public Action {
public:
    explicit ActionPropagate(std::uint64_t token);
    ActionPropagate(ActionPropagate const&) = default;
    ActionPropagate(ActionPropagate&&) = default;
    ActionPropagate& operator=(ActionPropagate const&) = default;
    ActionPropagate& operator=(ActionPropagate&&) = default;
    ~ActionPropagate() override;

    /// "ActionPropagate".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;
    /// ExecFailed when the observable is no attribute, the observer no propagation observer or its target
    /// gone.
    ExecReturn execute(Observable& observable, Observer& observer,
                       std::optional<std::reference_wrapper<ObservingObject>> cause) override;
    /// Assigns the source to the target, asking the target's pre-observers first. ExecNotHandled when they
    /// refuse or the target is already being propagated to.
    virtual ExecReturn propagate(Attribute& source, Attribute& target,
                                 std::optional<std::reference_wrapper<ObservingObject>> cause);
};

} // namespace Zorvan::AttributeContainer
