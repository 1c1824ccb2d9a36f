// SPDX-License-Identifier: MIT
#include <AttributeContainer/ActionContainer.h>

#include "observation/ObservationAccess.h"
#include "observation/RegisteredAction.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <typeinfo>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

// Constant-initialised and without destructors that matter, so that links can be made at any time during
// start and exit. The instance is deliberately left alive when nobody calls cleanup.
constinit std::atomic<ActionContainer*> instance{nullptr};
// Never destroyed: links may be made while the program ends.
std::mutex& creation() {
    static auto& mutex = *new std::mutex();
    return mutex;
}
// Guards the tables of the registry. No foreign code runs while it is held.
std::mutex& tables() {
    static auto& mutex = *new std::mutex();
    return mutex;
}

RegisteredAction::Call callOf(Action const& action) {
    if (typeid(action) == typeid(ActionNotify))
        return RegisteredAction::Call::ChangedNotify;
    if (typeid(action) == typeid(ActionPreNotify))
        return RegisteredAction::Call::ToChangeNotify;
    return RegisteredAction::Call::Execute;
}

} // namespace

ActionContainer::ActionContainer() { ActionContainer::registerActionDef(ActionDefinition::the()); }

ActionContainer::~ActionContainer() = default;

ActionContainer* ActionContainer::the() {
    ActionContainer* container = instance.load(std::memory_order_acquire);
    if (container != nullptr)
        return container;
    std::lock_guard const lock(creation());
    container = instance.load(std::memory_order_relaxed);
    if (container == nullptr) {
        container = new ActionContainer();
        instance.store(container, std::memory_order_release);
    }
    return container;
}

void ActionContainer::cleanup() { delete instance.exchange(nullptr); }

std::shared_ptr<RegisteredAction> ObservationAccess::action(std::uint64_t token) {
    ActionContainer const& container = *ActionContainer::the();
    std::lock_guard const lock(tables());
    return token < container.actions_.size() ? container.actions_[token] : nullptr;
}

std::optional<std::reference_wrapper<Action>> ActionContainer::getAction(std::uint64_t token) {
    std::lock_guard const lock(tables());
    if (token >= actions_.size() || actions_[token] == nullptr)
        return std::nullopt;
    return *actions_[token]->action;
}

std::optional<std::string> ActionContainer::getName(std::uint64_t token) {
    std::lock_guard const lock(tables());
    return names_.getName(token);
}

std::uint64_t ActionContainer::getToken(std::string const& name) const {
    std::lock_guard const lock(tables());
    return names_.getToken(name);
}

bool ActionContainer::isDefined(std::shared_ptr<ActionDefinitionBase const> const& definition) const {
    return std::ranges::find(definitions_, definition) != definitions_.end();
}

bool ActionContainer::registerActionDef(std::shared_ptr<ActionDefinitionBase> definition) {
    if (definition == nullptr)
        return false;
    {
        std::lock_guard const lock(tables());
        if (isDefined(definition))
            return false;
    }
    // The group is asked before anything is changed: it may be foreign, throw, or register another one.
    std::vector<std::pair<std::string, std::shared_ptr<RegisteredAction>>> asked;
    std::uint64_t const count = definition->getNumActions();
    for (std::uint64_t index = 0; index < count; ++index) {
        std::string name = definition->getNameAt(index);
        std::shared_ptr<RegisteredAction> record;
        if (auto const action = definition->getActionAt(index))
            record = std::make_shared<RegisteredAction>(*action, definition, name, callOf(*action));
        asked.emplace_back(std::move(name), std::move(record));
    }
    std::lock_guard const lock(tables());
    if (isDefined(definition))
        return false;
    std::uint64_t const base = actions_.size();
    std::size_t numNamed = 0;
    definitions_.push_back(definition);
    try {
        actions_.resize(base + asked.size());
        for (; numNamed < asked.size(); ++numNamed)
            names_.add(base + numNamed, asked[numNamed].first);
    } catch (...) {
        while (numNamed-- > 0)
            names_.remove(base + numNamed, asked[numNamed].first);
        actions_.resize(base);
        definitions_.pop_back();
        throw;
    }
    definition->baseToken_ = base;
    definition->numTokens_ = asked.size();
    for (std::uint64_t token = base; auto& [name, record] : asked) {
        if (record != nullptr)
            record->action->setToken(token);
        actions_[token++] = std::move(record);
    }
    return true;
}

bool ActionContainer::unregisterActionDef(std::shared_ptr<ActionDefinitionBase const> definition) {
    // The group goes with its last link; it is kept until the tables are in order.
    std::shared_ptr<ActionDefinitionBase> group;
    std::vector<std::shared_ptr<RegisteredAction>> released;
    std::lock_guard const lock(tables());
    auto const found = std::ranges::find(definitions_, definition);
    if (found == definitions_.end())
        return false;
    std::uint64_t token = (*found)->baseToken_;
    std::uint64_t const end = std::min<std::uint64_t>(token + (*found)->numTokens_, actions_.size());
    released.reserve(end - token);
    group = std::move(*found);
    definitions_.erase(found);
    for (; token < end; ++token) {
        if (auto const* const name = names_.findName(token))
            names_.remove(token, *name);
        if (auto& record = actions_[token]) {
            record->call.store(RegisteredAction::Call::None, std::memory_order_relaxed);
            released.push_back(std::move(record));
        }
    }
    return true;
}

} // namespace Zorvan::AttributeContainer
