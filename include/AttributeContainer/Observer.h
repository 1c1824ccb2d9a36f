// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Action.h>
#include <AttributeContainer/ObservingObject.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

class ObservationAccess;
class Observable;
class ObserverPath;

/// The watching side of observation. Actions deliver notifications to toChangeNotify (before a change) and
/// changedNotify (after it). An observer knows the observables that hold active links to it; when it is
/// destroyed, every link that names it goes.
class KX_ATTRIBUTECONTAINER_API Observer : public ObservingObject {
public:
    /// The kinds of action that applications ask for with checkLocking; the library never does.
    enum class ActionForCheckLocking : std::int32_t { Read, Change, Move, Remove };

    /// What the observer watches.
    class KX_ATTRIBUTECONTAINER_API Params {
    public:
        Params();
        Params(Params const&) = delete;
        Params& operator=(Params const&) = delete;
        virtual ~Params();
        /// Whether no observable holds an active link to the observer.
        virtual bool empty() const;
        /// Index of the last entry for an observable, all ones when there is none. Entries stand in the order
        /// in which the links became active. Throws std::bad_weak_ptr when no std::shared_ptr owns the
        /// observable.
        std::uint64_t lookupObservedByMe(Observable const& observable) const;

    private:
        friend class ObservationAccess;
        friend class Observer;
        friend class ObserverPath;
        struct Rep;

        std::size_t numEntries() const;
        void add(std::weak_ptr<Observable> observable, Observable const& address);
        std::uint64_t find(Observable const& observable) const;
        bool removeLast(Observable const& observable) noexcept;
        /// What is watched, each once, as met from the first entry on or from the last one back.
        std::vector<std::shared_ptr<Observable>> distinctObservables(bool fromLast) const;
        void clear() noexcept;

        ObserverPath* firstLink_ = nullptr; ///< the links that name the observer, active or not, form a chain
        /// The usual observer has one entry, which is kept here. The second one moves it to `rep_`.
        std::weak_ptr<Observable> only_;
        Observable const* addressOfOnly_ = nullptr; ///< null without such an entry
        std::unique_ptr<Rep> rep_;
    };

    ~Observer() override;

    /// What the constant form finds.
    std::weak_ptr<ObservingObject> inqObserver(std::optional<std::string const> const& path) override;
    /// An empty path names the observer itself; "/..." and "#..." are resolved by the thread's path root,
    /// anything else component by component from here.
    std::weak_ptr<ObservingObject const>
    inqObserver(std::optional<std::string const> const& path) const override;
    /// "Observer".
    static std::string const& getStaticClassName();
    /// The name of the object's class.
    virtual std::string const& getClassName() const;
    /// Within a copying scope, notes that this observer is the copy of another that observes something.
    /// Always 1.
    virtual int copyFrom(Observer const& other);
    /// Called after a change. ExecNotHandled here.
    virtual Action::ExecReturn changedNotify(Observable& observable,
                                             std::optional<std::reference_wrapper<ObservingObject>>& cause);
    /// Called before a change; attach an InfoFailed to the observable to refuse it. ExecNotHandled here.
    virtual Action::ExecReturn toChangeNotify(Observable& observable,
                                              std::optional<std::reference_wrapper<ObservingObject>>& cause);
    virtual std::string getName() = 0;
    /// A path for display; no value here.
    virtual std::optional<std::string> inqDisplayPath();
    /// The object path, by which documents name the observer; no value here.
    virtual std::optional<std::string> inqObjPath();
    /// Whether the observer allows a kind of action; true here.
    virtual bool checkLocking(ActionForCheckLocking const& action) const;
    /// An observable detaches itself: removes one entry for it.
    virtual void informDelete(Observable const& observable);
    /// The observer itself.
    virtual std::optional<std::reference_wrapper<Observer>> lookupSelf();

    std::string getName() const;
    std::optional<std::string> inqDisplayPath() const;
    std::optional<std::string> inqObjPath() const;

    /// The object path as seen from another observer, "~/" being the step to a parent; the own object path
    /// when the other is null or has none. Without an object path the name, when the other finds an object
    /// under it.
    std::optional<std::string> inqObjPath(Observer const* other) const;

    /// An observable holds an active link to this observer. Always true. Throws std::bad_weak_ptr when no
    /// std::shared_ptr owns the observable.
    bool informAddObserve(Observable& observable);
    /// Removes the last entry for an observable. Throws like informAddObserve.
    void informRmObserve(std::optional<std::reference_wrapper<Observable const>> observable);
    /// Removes every entry for an observable. Throws like informAddObserve.
    void informRmObserveAll(std::optional<std::reference_wrapper<Observable const>> observable);

    /// Observes what the other observes (its own attributes excepted); returns the number of links. 0 for
    /// itself. Should it throw, some of the links are there already.
    std::uint64_t copyObservationsFrom(Observer& other);
    /// Takes the other's links to what it observes (its own attributes excepted); returns their number.
    /// Should it throw, some of the links were taken already.
    std::uint64_t takeOverObservationsFrom(Observer& other);

protected:
    /// With a source, calls copyFrom.
    explicit Observer(std::optional<std::reference_wrapper<Observer const>> const& source = std::nullopt);

    /// Removes every link of what this observer watches. The argument is ignored.
    void rmAllObservers(bool);

    /// The observer that resolves absolute paths on the calling thread, if any.
    static std::optional<std::reference_wrapper<Observer>> currentPathRoot();
    /// Replaces it; held until it is replaced or the thread ends. An empty pointer clears it.
    static void currentPathRoot(std::shared_ptr<Observer> root);

    Params const& params() const { return params_; }

private:
    friend class ObservationAccess;
    friend class ObserverPath;

    Params params_;
};

} // namespace Zorvan::AttributeContainer
