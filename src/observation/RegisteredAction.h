// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace Zorvan::AttributeContainer {

class Action;
class ActionDefinitionBase;

/// What a link holds of its action: enough to tell it, and to write its name after the action was
/// unregistered. It owns the action's group, so that nothing dangles whatever becomes of the registry.
struct RegisteredAction {
    /// What is done for a link: the library's own notifying actions only hand the call on, which takes no
    /// virtual call of theirs, nor the action and its group to be held meanwhile.
    enum class Call : unsigned char { None, Execute, ChangedNotify, ToChangeNotify };

    RegisteredAction(Action& registered, std::shared_ptr<ActionDefinitionBase> itsGroup, std::string itsName,
                     Call itsCall)
        : action(&registered), group(std::move(itsGroup)), name(std::move(itsName)), call(itsCall) {}

    Action* action;
    std::shared_ptr<ActionDefinitionBase> group;
    std::string name;
    /// None once the group was unregistered, on whatever thread: links are not told any more.
    std::atomic<Call> call;
};

} // namespace Zorvan::AttributeContainer
