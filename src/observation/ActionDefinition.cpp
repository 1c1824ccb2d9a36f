// SPDX-License-Identifier: MIT
#include <AttributeContainer/ActionContainer.h>

#include <array>
#include <mutex>
#include <stdexcept>

namespace Zorvan::AttributeContainer {

namespace {

struct Row {
    char const* name;
    std::shared_ptr<Action> (*make)(std::uint64_t token);
};

template <class T>
std::shared_ptr<Action> make(std::uint64_t token) {
    return std::make_shared<T>(token);
}

// The position of a row is its local index, and its token in a fresh registry.
constexpr std::array<Row, 3> rows{
    Row{"Notify", &make<ActionNotify>},
    Row{"PreNotify", &make<ActionPreNotify>},
    Row{"Propagate", &make<ActionPropagate>},
};

DataStructures::KeyTable const& names() {
    static DataStructures::KeyTable const& table = *[] {
        auto* made = new DataStructures::KeyTable();
        for (std::uint64_t index = 0; index < rows.size(); ++index)
            made->add(index, rows[index].name);
        return made;
    }();
    return table;
}

// Never destroyed: links may be made while the program ends.
std::mutex& creation() {
    static auto& mutex = *new std::mutex();
    return mutex;
}

} // namespace

ActionDefinitionBase::~ActionDefinitionBase() = default;

std::string const& ActionDefinitionBase::getStaticClassName() {
    static std::string const& name = *new std::string("ActionDefinitionBase");
    return name;
}

std::string const& ActionDefinitionBase::getClassName() const { return getStaticClassName(); }

std::uint64_t ActionDefinitionBase::getNumActions() { return 0; }

std::optional<std::reference_wrapper<Action>> ActionDefinitionBase::getActionAt(std::uint64_t) {
    return std::nullopt;
}

std::string ActionDefinitionBase::getNameAt(std::uint64_t) { return {}; }

ActionDefinition::ActionDefinition() {
    for (std::uint64_t index = 0; index < rows.size(); ++index)
        actions_.emplace(index, rows[index].make(index));
}

ActionDefinition::~ActionDefinition() = default;

// Never destroyed: links may be made while the program ends.
std::shared_ptr<ActionDefinition>& ActionDefinition::actionDef() {
    static auto& definition = *new std::shared_ptr<ActionDefinition>();
    return definition;
}

std::shared_ptr<ActionDefinition> ActionDefinition::the() {
    std::lock_guard const lock(creation());
    auto& definition = actionDef();
    if (definition == nullptr)
        definition = std::make_shared<ActionDefinition>();
    return definition;
}

void ActionDefinition::cleanup() {
    std::shared_ptr<ActionDefinition> released;
    std::lock_guard const lock(creation());
    released.swap(actionDef());
}

std::string const& ActionDefinition::getStaticClassName() {
    static std::string const& name = *new std::string("ActionDefinition");
    return name;
}

std::string const& ActionDefinition::getClassName() const { return getStaticClassName(); }

std::uint64_t ActionDefinition::getNumActions() { return actions_.size(); }

std::optional<std::reference_wrapper<Action>> ActionDefinition::getActionAt(std::uint64_t index) {
    if (index >= actions_.size())
        return std::nullopt;
    auto const found = actions_.find(index);
    if (found == actions_.end())
        throw std::out_of_range("invalid unordered_map<K, T> key");
    return *found->second;
}

std::string ActionDefinition::getNameAt(std::uint64_t index) {
    return names().getName(index).value_or(std::string());
}

std::uint64_t ActionDefinition::getIndexOf(std::string const& name) { return names().getToken(name); }

} // namespace Zorvan::AttributeContainer
