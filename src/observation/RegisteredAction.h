// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

class Action;
class ActionDefinitionBase;

/// What a link holds of its action: enough to tell it, and to write its name after the action was
/// unregistered. It owns the action's group, so that nothing dangles whatever becomes of the registry.
struct RegisteredAction {
    Action* action = nullptr;
    std::shared_ptr<ActionDefinitionBase> group;
    std::string name;
    bool isRegistered = true; ///< cleared by unregistering the group: links are not told any more
};

} // namespace Zorvan::AttributeContainer
