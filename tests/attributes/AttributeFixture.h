// SPDX-License-Identifier: MIT
#pragma once

#include "observation/RecordingObserver.h"

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <gtest/gtest.h>

#include <sstream>

namespace Zorvan::AttributeContainer::Testing {

constexpr std::uint64_t PROPAGATE = 2;

using Handler = RecordingObserver::Handler;
using Change = std::function<void(CustAttr<int>&)>;

inline void assignText(Attribute& attribute, std::string const& text) {
    attribute.assignFrom(text, nullptr, nullptr, nullptr);
}

inline void follow(Attribute& source, Attribute& target) {
    source.addObserver(*target.getObserver().lock(), 10, PROPAGATE, true);
}

inline Result read(Attribute& attribute, std::string const& text) {
    std::istringstream in(text);
    return attribute.readFrom(in, std::make_shared<ReadContextBase>());
}

inline Change const setNine = [](auto& a) { a.setValue(9); };
inline Change const touch = [](auto& a) { a.touch(nullptr, nullptr); };

inline Change blocked(Change const& change) {
    return [change](auto& a) {
        BlockObserver const scope;
        static_cast<void>(BlockObserver()); // whose end does not end the block
        change(a);
    };
}

inline Action::ExecReturn refuse(Observable& observable) {
    auto reason = std::make_unique<ErrorHandling::ErrorWithCode<ErrorCode>>("test", 1, NotSupported);
    observable.addNotifyInfo(std::make_shared<InfoFailed>(std::move(reason)));
    return Action::ExecFailed;
}

/// A handler of an int attribute that has no objection.
inline Handler doing(std::function<void(CustAttr<int>&, Cause const&)> const& act) {
    return [act](Observable& a, Cause const& cause) {
        act(static_cast<CustAttr<int>&>(a), cause);
        return Action::ExecOk;
    };
}

/// The value that a change proposes, or 0.
inline int proposedTo(Observable& observable) {
    auto const info = observable.lookupNotifyInfo(typeid(NewValueInfo<int>));
    return info ? static_cast<NewValueInfo<int> const&>(*info).getNewValue() : 0;
}

/// An int attribute of value 1 with recording observers.
struct Watched {
    RecordingObserver& pre(std::string const& name, short priority = 10, Handler handler = {}) {
        auto& observer = *observers.emplace_back(RecordingObserver::make(name, log));
        observer.toChange = std::move(handler);
        attribute->addPreObserver(observer, priority, PRE_NOTIFY, true);
        return observer;
    }
    RecordingObserver& post(std::string const& name, short priority = 10, Handler handler = {}) {
        auto& observer = *observers.emplace_back(RecordingObserver::make(name, log));
        observer.changed = std::move(handler);
        attribute->addObserver(observer, priority, NOTIFY, true);
        return observer;
    }
    /// Refuses 9, with the highest priority, and watches with the lowest.
    void refuseNine() {
        pre("judge", 90,
            [](Observable& a, auto&) { return proposedTo(a) == 9 ? refuse(a) : Action::ExecOk; });
        post("told", 1);
    }
    int value() const { return attribute->getValue(); }
    bool hasInfos() const { return attribute->copyNotifyInfos() != nullptr; }

    Log log;
    std::shared_ptr<CustAttr<int>> attribute = std::make_shared<CustAttr<int>>(1);
    std::vector<std::shared_ptr<RecordingObserver>> observers;
};

} // namespace Zorvan::AttributeContainer::Testing
