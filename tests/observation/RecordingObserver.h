// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Observable.h>
#include <AttributeContainer/Observer.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer::Testing {

/// The tokens of the library's own actions.
constexpr std::uint64_t NOTIFY = 0;
constexpr std::uint64_t PRE_NOTIFY = 1;
constexpr std::uint64_t NOT_FOUND = ~std::uint64_t{0};

using Log = std::vector<std::string>;
using Cause = std::optional<std::reference_wrapper<ObservingObject>>;

/// An observer that writes "name" (told) or "name?" (asked) into a log and then runs a handler, if there is
/// one.
class RecordingObserver : public Observer {
public:
    using Handler = std::function<Action::ExecReturn(Observable&, Cause const&)>;

    RecordingObserver(std::string name, Log& log, std::optional<std::string> path = std::nullopt)
        : objectPath(std::move(path)), name_(std::move(name)), log_(&log) {}

    static std::shared_ptr<RecordingObserver> make(std::string name, Log& log,
                                                   std::optional<std::string> path = std::nullopt) {
        return std::make_shared<RecordingObserver>(std::move(name), log, std::move(path));
    }

    using Observer::getName;
    using Observer::inqObjPath;
    using Observer::inqObserver;
    std::string getName() override { return name_; }
    std::optional<std::string> inqObjPath() override {
        std::optional<std::string> path = objectPath;
        if (auto const handler = std::exchange(asked, nullptr))
            handler();
        return path;
    }
    void informDelete(Observable const& gone) override {
        Observer::informDelete(gone);
        if (detached)
            detached();
    }

    /// Finds the observers in `known` by single names; leaves everything else to the base.
    std::weak_ptr<ObservingObject const>
    inqObserver(std::optional<std::string const> const& path) const override {
        if (path)
            if (auto const found = known.find(*path); found != known.end())
                return found->second;
        return Observer::inqObserver(path);
    }

    // The names of handlers are taken before they run: a handler may destroy its observer.
    Action::ExecReturn changedNotify(Observable& observable, Cause& cause) override {
        log_->push_back(name_);
        Handler const handler = changed;
        return handler ? handler(observable, cause) : Action::ExecOk;
    }
    Action::ExecReturn toChangeNotify(Observable& observable, Cause& cause) override {
        log_->push_back(name_ + "?");
        Handler const handler = toChange;
        return handler ? handler(observable, cause) : Action::ExecOk;
    }

    /// Index of the last entry for an observable in what this observer watches.
    std::uint64_t entryOf(Observable const& one) const { return params().lookupObservedByMe(one); }
    bool watchesNothing() const { return params().empty(); }
    void detachFromAll() { rmAllObservers(true); }
    static void setPathRoot(std::shared_ptr<Observer> root) { currentPathRoot(std::move(root)); }

    Handler changed;
    Handler toChange;
    std::function<void()> asked;    ///< runs once, when the object path is asked for
    std::function<void()> detached; ///< runs after informDelete
    std::optional<std::string> objectPath;
    std::map<std::string, std::weak_ptr<ObservingObject>> known;

private:
    std::string name_;
    Log* log_;
};

/// An observable that stands alone. Its paths are looked up in `known`, whole.
class RecordingObservable : public Observable {
public:
    using Observable::Observable;

    static std::shared_ptr<RecordingObservable> make() { return std::make_shared<RecordingObservable>(); }

    using Observable::getName;
    using Observable::inqObserver;
    using Observable::lookupObject;
    std::weak_ptr<ObservingObject> inqObserver(std::optional<std::string const> const& path) override {
        auto const found = known.find(path.value_or(std::string()));
        auto const result = found == known.end() ? std::weak_ptr<ObservingObject>() : found->second;
        if (auto const handler = std::exchange(asked, nullptr))
            handler();
        return result;
    }
    std::optional<std::reference_wrapper<Observer const>> lookupObject() override { return owner; }
    std::string getName() override { return "observable"; }

    void ask(std::vector<NotificationResult>* results = nullptr) { notifyPreObservers(nullptr, results); }
    void tell(std::vector<NotificationResult>* results = nullptr) { notifyPostObservers(nullptr, results); }
    void detachAll() { rmAllObservers(true); }

    std::map<std::string, std::weak_ptr<ObservingObject>> known;
    std::function<void()> asked; ///< runs once, when a path is looked up
    std::optional<std::reference_wrapper<Observer const>> owner;
};

} // namespace Zorvan::AttributeContainer::Testing
