// SPDX-License-Identifier: MIT
#include <AttributeContainer/Action.h>

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/Observable.h>
#include <AttributeContainer/Observer.h>

namespace Zorvan::AttributeContainer {

namespace {

bool isCause(Observer const& observer, std::optional<std::reference_wrapper<ObservingObject>> const& cause) {
    return cause && &cause->get() == &observer;
}

} // namespace

Action::~Action() = default;

std::string const& Action::getStaticClassName() {
    static std::string const& name = *new std::string("Action");
    return name;
}

std::string const& Action::getClassName() const { return getStaticClassName(); }

std::string Action::getName() const {
    return ActionContainer::the()->getName(token_).value_or(std::string());
}

ActionNotify::~ActionNotify() = default;

std::string const& ActionNotify::getStaticClassName() {
    static std::string const& name = *new std::string("ActionNotify");
    return name;
}

std::string const& ActionNotify::getClassName() const { return getStaticClassName(); }

Action::ExecReturn ActionNotify::execute(Observable& observable, Observer& observer,
                                         std::optional<std::reference_wrapper<ObservingObject>> cause) {
    return isCause(observer, cause) ? ExecNotHandled : observer.changedNotify(observable, cause);
}

ActionPreNotify::~ActionPreNotify() = default;

std::string const& ActionPreNotify::getStaticClassName() {
    static std::string const& name = *new std::string("ActionPreNotify");
    return name;
}

std::string const& ActionPreNotify::getClassName() const { return getStaticClassName(); }

Action::ExecReturn ActionPreNotify::execute(Observable& observable, Observer& observer,
                                            std::optional<std::reference_wrapper<ObservingObject>> cause) {
    return isCause(observer, cause) ? ExecNotHandled : observer.toChangeNotify(observable, cause);
}

// How a propagation runs stands with the attributes, which this layer does not know.

} // namespace Zorvan::AttributeContainer
