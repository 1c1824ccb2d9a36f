// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Action.h>
#include <AttributeContainer/KeyTable.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Zorvan::AttributeContainer {

class ObservationAccess;
struct RegisteredAction;

/// A group of actions that is registered together. A group owns its actions; the registry and every link that
/// uses one of them own the group.
class KX_ATTRIBUTECONTAINER_API ActionDefinitionBase {
public:
    ActionDefinitionBase() = default;
    ActionDefinitionBase(ActionDefinitionBase const&) = delete;
    ActionDefinitionBase& operator=(ActionDefinitionBase const&) = delete;

    /// "ActionDefinitionBase".
    static std::string const& getStaticClassName();
    /// The name of the object's class.
    virtual std::string const& getClassName() const;
    /// Number of actions in the group.
    virtual std::uint64_t getNumActions();
    /// The action with a local index; no value when there is none.
    virtual std::optional<std::reference_wrapper<Action>> getActionAt(std::uint64_t index);
    /// The name of a local index; empty when there is none.
    virtual std::string getNameAt(std::uint64_t index);
    virtual ~ActionDefinitionBase();

    /// Token of the group's first action; all ones until the group is registered.
    std::uint64_t getBaseToken() const { return baseToken_; }

private:
    friend class ActionContainer;
    std::uint64_t baseToken_ = ~std::uint64_t{0};
    std::uint64_t numTokens_ = 0;
};

/// The library's own group: "Notify", "PreNotify" and "Propagate", with the tokens 0, 1 and 2.
class KX_ATTRIBUTECONTAINER_API ActionDefinition : public ActionDefinitionBase {
public:
    ActionDefinition();

    /// The group, made on the first call (safe from any thread).
    static std::shared_ptr<ActionDefinition> the();
    /// Forgets the group; links that use its actions keep it alive. The next the() makes a new one. For the
    /// end of a program, behind ActionContainer::cleanup.
    static void cleanup();

    /// "ActionDefinition".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;
    std::uint64_t getNumActions() override;
    /// Throws std::out_of_range when an index below getNumActions() has no action.
    std::optional<std::reference_wrapper<Action>> getActionAt(std::uint64_t index) override;
    std::string getNameAt(std::uint64_t index) override;
    ~ActionDefinition() override;
    /// The local index of a name; all ones when there is none.
    virtual std::uint64_t getIndexOf(std::string const& name);

private:
    static std::shared_ptr<ActionDefinition>& actionDef();
    std::unordered_map<std::uint64_t, std::shared_ptr<Action>> actions_;
};

/// The process-wide registry of actions. Tokens that it has handed out stay valid for its life; those of an
/// unregistered group become empty and are not used again. Any thread may use it, register and unregister at
/// any time; a group is called back on the thread that registers it.
class KX_ATTRIBUTECONTAINER_API ActionContainer {
public:
    ActionContainer(ActionContainer const&) = delete;
    ActionContainer& operator=(ActionContainer const&) = delete;

    /// The registry, made on the first call with the library's own group registered (safe from any thread).
    static ActionContainer* the();
    /// Destroys the registry; the next the() makes a fresh one. Links keep working: they own what they use.
    /// For the end of a program: no other thread may be using the registry, or making or reading links.
    static void cleanup();

    virtual ~ActionContainer();
    /// The action of a token; no value for an unknown token or an unregistered group. It belongs to its group
    /// and goes with that, at the earliest when the group is unregistered.
    virtual std::optional<std::reference_wrapper<Action>> getAction(std::uint64_t token);
    /// The name of a token; no value when there is none.
    virtual std::optional<std::string> getName(std::uint64_t token);
    /// The token of a name; all ones when there is none.
    virtual std::uint64_t getToken(std::string const& name) const;
    /// Gives the group's actions the next tokens. False for a null group or one that is registered already.
    virtual bool registerActionDef(std::shared_ptr<ActionDefinitionBase> definition);
    /// Empties the group's tokens: links that use them are not told any more, and keep the actions' names.
    /// False when the group is not registered.
    virtual bool unregisterActionDef(std::shared_ptr<ActionDefinitionBase const> definition);

private:
    friend class ObservationAccess;
    ActionContainer();
    bool isDefined(std::shared_ptr<ActionDefinitionBase const> const& definition) const;

    DataStructures::KeyTable names_;
    std::vector<std::shared_ptr<RegisteredAction>> actions_;
    std::vector<std::shared_ptr<ActionDefinitionBase>> definitions_;
};

} // namespace Zorvan::AttributeContainer
