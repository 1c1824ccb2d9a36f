// SPDX-License-Identifier: MIT
#include <AttributeContainer/ActionContainer.h>

#include "observation/RegisteredAction.h"

#include <algorithm>
#include <atomic>
#include <mutex>
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

} // namespace

ActionContainer::ActionContainer() { registerActionDef(ActionDefinition::the()); }

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

std::optional<std::reference_wrapper<Action>> ActionContainer::getAction(std::uint64_t token) {
    if (token >= actions_.size() || actions_[token] == nullptr)
        return std::nullopt;
    return *actions_[token]->action;
}

std::optional<std::string> ActionContainer::getName(std::uint64_t token) { return names_.getName(token); }

std::uint64_t ActionContainer::getToken(std::string const& name) const { return names_.getToken(name); }

bool ActionContainer::registerActionDef(std::shared_ptr<ActionDefinitionBase> definition) {
    if (definition == nullptr || std::ranges::find(definitions_, definition) != definitions_.end())
        return false;
    // The group is asked before anything is changed: it may be foreign, throw, or register another one.
    std::vector<std::pair<std::string, std::shared_ptr<RegisteredAction>>> asked;
    std::uint64_t const count = definition->getNumActions();
    for (std::uint64_t index = 0; index < count; ++index) {
        std::string name = definition->getNameAt(index);
        std::shared_ptr<RegisteredAction> record;
        if (auto const action = definition->getActionAt(index))
            record =
                std::make_shared<RegisteredAction>(RegisteredAction{&action->get(), definition, name, true});
        asked.emplace_back(std::move(name), std::move(record));
    }
    std::uint64_t const base = actions_.size();
    definition->baseToken_ = base;
    definitions_.push_back(std::move(definition));
    for (auto& [name, record] : asked) {
        std::uint64_t const token = actions_.size();
        names_.add(token, name);
        if (record != nullptr)
            record->action->setToken(token);
        actions_.push_back(std::move(record));
    }
    return true;
}

bool ActionContainer::unregisterActionDef(std::shared_ptr<ActionDefinitionBase const> definition) {
    auto const found = std::ranges::find(definitions_, definition);
    if (found == definitions_.end())
        return false;
    // The group goes with its last link; keep it until the tables are in order.
    std::shared_ptr<ActionDefinitionBase> const group = *found;
    definitions_.erase(found);
    std::uint64_t const base = group->baseToken_;
    std::uint64_t const count = group->getNumActions();
    for (std::uint64_t token = base; token < base + count && token < actions_.size(); ++token) {
        if (auto const name = names_.getName(token))
            names_.remove(token, *name);
        if (auto& record = actions_[token]) {
            record->isRegistered = false;
            record = nullptr;
        }
    }
    return true;
}

} // namespace Zorvan::AttributeContainer
