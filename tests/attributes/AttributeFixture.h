// SPDX-License-Identifier: MIT
#pragma once

#include "observation/RecordingObserver.h"

#include <AttributeContainer/AttrDefinition.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>

namespace Zorvan::AttributeContainer::Testing {

constexpr std::uint64_t PROPAGATE = 2;

/// A promise for a change, and what became of it: the number of results, or "broken".
class Awaited {
public:
    Attribute::ResultPromise promise() {
        auto made = std::make_unique<std::promise<Attribute::NotificationResults>>();
        future_ = made->get_future();
        return made;
    }
    std::string outcome() {
        if (future_.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            return "pending";
        try {
            return std::to_string(future_.get().size());
        } catch (std::future_error const&) {
            return "broken";
        }
    }

private:
    std::future<Attribute::NotificationResults> future_;
};

inline void assignText(Attribute& attribute, std::string const& text) {
    attribute.assignFrom(text, nullptr, nullptr, nullptr);
}

inline Action::ExecReturn refuse(Observable& observable) {
    auto reason = std::make_unique<ErrorHandling::ErrorWithCode<ErrorCode>>("test", 1, NotSupported);
    observable.addNotifyInfo(std::make_shared<InfoFailed>(std::move(reason)));
    return Action::ExecFailed;
}

/// The value that a change proposes, or 0.
inline int proposedTo(Observable& observable) {
    auto const info = observable.lookupNotifyInfo(typeid(NewValueInfo<int>));
    return info ? static_cast<NewValueInfo<int> const&>(*info).getNewValue() : 0;
}

/// An int attribute of value 1 with recording observers.
struct Watched {
    RecordingObserver& pre(std::string const& name, short priority = 10,
                           RecordingObserver::Handler handler = {}) {
        attribute->addPreObserver(add(name), priority, PRE_NOTIFY, true);
        observers.back()->toChange = std::move(handler);
        return *observers.back();
    }
    RecordingObserver& post(std::string const& name, short priority = 10,
                            RecordingObserver::Handler handler = {}) {
        attribute->addObserver(add(name), priority, NOTIFY, true);
        observers.back()->changed = std::move(handler);
        return *observers.back();
    }
    /// Refuses 9, with the highest priority, and watches with the lowest.
    void refuseNine() {
        pre("judge", 90,
            [](Observable& a, Cause const&) { return proposedTo(a) == 9 ? refuse(a) : Action::ExecOk; });
        post("told", 1);
    }
    int value() const { return attribute->getValue(); }
    bool hasInfos() const { return attribute->copyNotifyInfos() != nullptr; }

    Log log;
    std::shared_ptr<CustAttr<int>> attribute = std::make_shared<CustAttr<int>>(1);
    std::vector<std::shared_ptr<RecordingObserver>> observers;

private:
    RecordingObserver& add(std::string const& name) {
        observers.push_back(RecordingObserver::make(name, log));
        return *observers.back();
    }
};

} // namespace Zorvan::AttributeContainer::Testing
