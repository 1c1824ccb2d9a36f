// SPDX-License-Identifier: MIT
#include "attributes/AttributeChange.h"

#include <AttributeContainer/Action.h>
#include <AttributeContainer/AttributePropagationObserver.h>
#include <AttributeContainer/WtAttribute.h>

#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

/// A propagation that runs on this thread.
///
/// Two attributes that follow each other, or a ring of them, would propagate for ever, and each hop of a
/// chain would double the calls of the next. So a target that is being propagated to turns further
/// propagations away, and the post-walk that tells the target's observers of the source does not propagate.
class RunningPropagation {
public:
    RunningPropagation(Attribute const& source, Attribute const& target)
        : source_(source), target_(target), enclosing_(innermost()) {
        innermost() = this;
    }
    ~RunningPropagation() { innermost() = enclosing_; }
    RunningPropagation(RunningPropagation const&) = delete;
    RunningPropagation& operator=(RunningPropagation const&) = delete;

    /// Whether `target` is being propagated to; the propagations that are running learn that one was turned
    /// away.
    static bool turnsAway(Attribute const& target) {
        auto* running = innermost();
        while (running && &running->target_ != &target)
            running = running->enclosing_;
        if (!running)
            return false;
        for (auto* one = innermost(); one; one = one->enclosing_)
            one->hasTurnedAway_ = true;
        return true;
    }

    /// Whether `source` is only telling its observers once more about what it follows. A change that an
    /// observer makes meanwhile walks deeper, and is propagated.
    static bool isRepeatedWalk(Attribute const& source) {
        for (auto const* one = innermost(); one; one = one->enclosing_)
            if (&one->target_ == &source && one->repeatedDepth_ == ObservationAccess::walkDepth(source))
                return true;
        return false;
    }

    void beginRepeatedWalk() { repeatedDepth_ = ObservationAccess::walkDepth(target_) + 1; }
    void endRepeatedWalk() { repeatedDepth_ = 0; }
    bool takeTurnedAway() { return std::exchange(hasTurnedAway_, false); }

    /// Whether this propagation may be tried once more. All that run within an outermost one share a limit:
    /// each of a ring that never settles would start those behind it again, 16 times each.
    bool mayRepeat() const {
        auto* outermost = innermost();
        while (outermost->enclosing_)
            outermost = outermost->enclosing_;
        return ++outermost->numRepeats_ <= maxRepeats;
    }
    bool hasSettled() const {
        if (source_.getClassName() == target_.getClassName())
            return target_.isEqual(source_);
        return source_.getValueAsText() == target_.getValueAsText();
    }

private:
    static constexpr int maxRepeats = 256;

    static RunningPropagation*& innermost() {
        static constinit thread_local RunningPropagation* running = nullptr;
        return running;
    }

    Attribute const& source_;
    Attribute const& target_;
    RunningPropagation* enclosing_;
    bool hasTurnedAway_ = false;
    int numRepeats_ = 0;              ///< Of all within this one, counted in the outermost.
    std::uint64_t repeatedDepth_ = 0; ///< The depth of the target's repeated walk, 0 outside it.
};

/// The post-walk that does not propagate.
class RepeatedWalkScope {
public:
    explicit RepeatedWalkScope(RunningPropagation& running) : running_(running) {
        running_.beginRepeatedWalk();
    }
    ~RepeatedWalkScope() { running_.endRepeatedWalk(); }
    RepeatedWalkScope(RepeatedWalkScope const&) = delete;
    RepeatedWalkScope& operator=(RepeatedWalkScope const&) = delete;

private:
    RunningPropagation& running_;
};

/// How often a propagation is tried again when what it set has been changed by one that came back.
constexpr int maxRounds = 16;

} // namespace

ActionPropagate::ActionPropagate(std::uint64_t token) : Action(token) {}

ActionPropagate::~ActionPropagate() = default;

std::string const& ActionPropagate::getStaticClassName() {
    static std::string const& name = *new std::string("ActionPropagate");
    return name;
}

std::string const& ActionPropagate::getClassName() const { return getStaticClassName(); }

Action::ExecReturn ActionPropagate::execute(Observable& observable, Observer& observer,
                                            std::optional<std::reference_wrapper<ObservingObject>> cause) {
    if (cause && &cause->get() == &observer)
        return ExecNotHandled;
    auto* source = dynamic_cast<Attribute*>(&observable);
    auto* propagation = dynamic_cast<AttributePropagationObserver*>(&observer);
    if (!source || !propagation)
        return ExecFailed;
    auto const target = propagation->getTarget();
    if (!target)
        return ExecFailed;
    return propagate(*source, *target, cause);
}

Action::ExecReturn ActionPropagate::propagate(Attribute& source, Attribute& target,
                                              std::optional<std::reference_wrapper<ObservingObject>>) {
    if (RunningPropagation::isRepeatedWalk(source) || RunningPropagation::turnsAway(target))
        return ExecNotHandled;
    auto const holdTarget = target.weak_from_this().lock();
    auto const origin = source.weak_from_this().lock();
    RunningPropagation running(source, target);
    // The target may be in the middle of a change, whose refusal is not this one's.
    AttributeChange const change(target, AttributeChange::Kind::NewValue);
    for (int round = 0; round < maxRounds && (round == 0 || running.mayRepeat()); ++round) {
        if (target.getNumPrePaths() != 0 && !Attribute::isObservingBlocked()) {
            target.preTouch(origin, nullptr);
            if (target.lookupNotifyInfo(typeid(InfoFailed))) {
                target.removeNotifyInfos(false);
                return ExecNotHandled;
            }
        }
        {
            ChangeProbe const probe(target);
            target = source;
            if (probe.isRefused())
                return ExecNotHandled;
        }
        {
            RepeatedWalkScope const repeated(running);
            target.touch(origin, nullptr);
        }
        if (!running.takeTurnedAway() || running.hasSettled())
            return ExecOk;
    }
    return ExecFailed;
}

} // namespace Zorvan::AttributeContainer
