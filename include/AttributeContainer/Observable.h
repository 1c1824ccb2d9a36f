// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Action.h>
#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/ObserverInfo.h>
#include <AttributeContainer/ObserverList.h>
#include <AttributeContainer/ObserverPath.h>
#include <AttributeContainer/ObservingObject.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

class ExchangePtr;
class ObservationAccess;
class Observer;
class ObserverRelationTableObserver;
class ObserverWalk;
class ReleasedPaths;
struct LinkKey;
struct LinkText;
struct NotifyingThread;

/// The side of observation that is watched. It owns two ordered lists of links: the pre-observers, told
/// before a change, and the post-observers, told after it; each from the highest priority down, among equal
/// ones the one added last first.
///
/// Handlers may add, remove, activate and re-sort links, also on the observable that is notifying, and may
/// destroy observers and the observable. A removed link is dead at once; no link is told twice in a walk; one
/// that is added is told in the running walk only when it comes below the one that is being told.
///
/// Operations that take or return an index see both lists as one sequence, the pre list first. Links that
/// were removed are not in it. An observer that is held by reference is informed of its active links, for
/// which the observable must be owned by a std::shared_ptr (else std::bad_weak_ptr).
///
/// What changes one link, or removes links, does all of it or throws and has changed nothing; what works on
/// many (copyFrom, readFrom, updateObserverLists) throws between two of them. A notification that throws
/// counts as ended.
class KX_ATTRIBUTECONTAINER_API Observable : public ObservingObject {
public:
    /// Outcome of adding a link.
    enum AddResult : std::int32_t {
        Added = 0,         ///< stored and active
        AddedInactive = 1, ///< stored; active once its observer is found (updateObserverLists)
        AlreadyPresent = 3 ///< an equal link is there; the new one was discarded
    };

    /// What one observer answered.
    struct NotificationResult {
        std::weak_ptr<Observer> observer; ///< taken before it was told
        Action::ExecReturn result = Action::ExecOk;
    };

    /// The notes that an observable carries on one thread, by dynamic type.
    using NotifyInfoMap = std::unordered_map<std::type_index, std::shared_ptr<ObserverInfo>>;

    /// The post list.
    class KX_ATTRIBUTECONTAINER_API Params {
    public:
        Params();
        Params(Params const&) = delete;
        Params& operator=(Params const&) = delete;
        virtual ~Params();
        /// Whether there are no links.
        virtual bool empty() const;
        /// Index of an equal link, all ones when there is none.
        virtual std::uint64_t lookupContent(ObserverPath& path) const;

    protected:
        friend class Observable;
        friend class ObservationAccess;
        friend class ObserverWalk;

        ObserverList postList_;
    };

    /// The pre list beside it.
    class KX_ATTRIBUTECONTAINER_API ParamsEx : public Params {
    public:
        ParamsEx();
        ~ParamsEx() override;
        bool empty() const override;
        /// Combined index of an equal link, in the post list before the pre list.
        std::uint64_t lookupContent(ObserverPath& path) const override;

    private:
        friend class Observable;
        friend class ObservationAccess;
        friend class ObserverWalk;

        ObserverList preList_;
    };

    Observable();
    /// With a source, takes copies of the source's persistent links (copyFrom).
    explicit Observable(std::optional<std::reference_wrapper<Observable const>> const& source);
    ~Observable() override;

    std::weak_ptr<ObservingObject> inqObserver(std::optional<std::string const> const& path) override = 0;
    /// Resolves a path of several components step by step from this object; a single component names nothing
    /// here.
    std::weak_ptr<ObservingObject const>
    inqObserver(std::optional<std::string const> const& path) const override;
    /// The observer that owns this observable (for an attribute its container), if any.
    virtual std::optional<std::reference_wrapper<Observer const>> lookupObject() = 0;
    virtual std::string getName() = 0;
    /// The object path; no value here.
    virtual std::optional<std::string> inqObjPath();
    /// Takes inactive copies of the other's links that are not temporary, have a priority above 0, an action
    /// and a path. Always 1.
    virtual int copyFrom(Observable const& other);
    /// Reads links up to the end of the enclosing block. Unresolved links (ObserverUnresolved) do not end the
    /// read; an unknown keyword does, with what was recorded before nested in the error.
    [[nodiscard]] virtual Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context);
    /// Writes the persistent links, by priority, then in the order in which they were added.
    [[nodiscard]] virtual Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context);
    /// Asks the pre-observers. The cause and the list of results may be null. Throws what handlers throw, and
    /// std::bad_weak_ptr when results are wanted of an observer that no std::shared_ptr owns.
    virtual void notifyPreObservers(std::shared_ptr<ObservingObject> const& cause,
                                    std::vector<NotificationResult>* results);
    /// Tells the post-observers; the same rules. Expiring notes go when the outermost such walk ends.
    virtual void notifyPostObservers(std::shared_ptr<ObservingObject> const& cause,
                                     std::vector<NotificationResult>* results);

    std::optional<std::reference_wrapper<Observer const>> lookupObject() const;
    std::string getName() const;
    std::optional<std::string> inqObjPath() const;

    /// Adds a post-observer, held by reference. Temporary links are neither copied nor written.
    AddResult addObserver(Observer& observer, short priority, std::uint64_t actionToken, bool temporary);
    /// Adds a pre-observer, held by reference.
    AddResult addPreObserver(Observer& observer, short priority, std::uint64_t actionToken, bool temporary);
    /// Adds a post-observer named by a path, which is resolved at once when that is possible.
    AddResult addObserver(std::string const& path, short priority, std::uint64_t actionToken, bool temporary);
    /// Adds a pre-observer named by a path.
    AddResult addPreObserver(std::string const& path, short priority, std::uint64_t actionToken,
                             bool temporary);
    /// Adds a ready link, in its place or at the end, and becomes its owner. A null link counts as present.
    AddResult addObserver(std::unique_ptr<ObserverPath> path, bool sorted);
    AddResult addPreObserver(std::unique_ptr<ObserverPath> path, bool sorted);
    /// The list half of adding: the observer is not informed. Null when an equal link is there.
    ObserverPath* informAddPostObservedBy(std::unique_ptr<ObserverPath> path, bool sorted);
    ObserverPath* informAddPreObservedBy(std::unique_ptr<ObserverPath> path, bool sorted);

    /// Removes every link that holds the observer by reference, and what the observer knows of them.
    void rmObserver(Observer& observer);
    /// The list half of rmObserver.
    void informRmObservedBy(Observer& observer);
    /// The same for one list of this observable.
    void informRmObservedBy(Observer& observer, ObserverList& list);
    /// Removes the last equal link of each list; observers are not informed.
    void informRmObservedBy(ObserverPath const& path);
    /// Removes a link and informs its observer. Throws like getPath.
    void removePath(std::uint64_t index);
    /// Removes every equal link (the argument may be one of them); false when there is none.
    bool removePath(ObserverPath& path);

    /// Number of pre-observer and post-observer links.
    std::uint64_t getNumPrePaths() const;
    std::uint64_t getNumPostPaths() const;
    /// A link. Throws std::out_of_range ("invalid vector subscript") for an index past the end.
    ObserverPath& getPath(std::uint64_t index);
    ObserverPath const& getPath(std::uint64_t index) const;
    /// Index of an equal link, all ones when there is none.
    std::uint64_t lookupPath(ObserverPath& path) const;
    /// Re-sorts a list by liveness and priority; equal links keep their order. Waits for running walks.
    void resortPreObservers();
    void resortPostObservers();
    /// Resolves and activates what it can; sorts when something became active, or on request. Whether every
    /// path string could be resolved.
    bool updateObserverLists(bool sortAlways);

    /// Whether observers are told at all; true on construction.
    bool isNotificationEnabled() const;
    void setNotificationEnabled(bool enabled);

    /// Attaches a note for the calling thread, in place of one of the same dynamic type. False for none. Only
    /// this thread sees and removes it; it goes with the observable when that ends here, else with the
    /// thread. An observable that no std::shared_ptr owns must end on the thread that has attached notes, or
    /// lose them before: the next one at its address would be taken for it.
    bool addNotifyInfo(std::shared_ptr<ObserverInfo> info);
    /// The note of a type that the calling thread attached, or null.
    std::shared_ptr<ObserverInfo> lookupNotifyInfo(std::type_index const& type);
    std::shared_ptr<ObserverInfo const> lookupNotifyInfo(std::type_index const& type) const;
    /// Removes and returns the note of a type, null when there is none. With the flag, an observable without
    /// notes leaves no trace in the thread's table.
    std::shared_ptr<ObserverInfo> removeNotifyInfo(std::type_index const& type, bool dropEmpty);
    /// Removes this very note; false when it is not attached.
    bool removeNotifyInfo(std::shared_ptr<ObserverInfo const> const& info, bool dropEmpty);
    /// Removes all notes, or the expiring ones; returns how many.
    int removeNotifyInfos(bool all);
    /// Removes the notes of a map that are attached; returns how many.
    int removeNotifyInfos(std::shared_ptr<NotifyInfoMap const> const& infos);
    /// A copy of the table of notes (the notes are shared), null when there is none.
    std::shared_ptr<NotifyInfoMap> copyNotifyInfos() const;
    /// Attaches every note of a map.
    void setNotifyInfos(std::shared_ptr<NotifyInfoMap> const& infos);

protected:
    /// Tells the observers of one list.
    void notifySequence(std::shared_ptr<ObservingObject> const& cause, ObserverList* list,
                        std::vector<NotificationResult>* results);
    /// Detaches every observer through Observer::informDelete and drops all notes. Links that are added
    /// meanwhile go without it. The argument is ignored. Throws std::bad_weak_ptr when no std::shared_ptr
    /// owns this observable.
    void rmAllObservers(bool);

    /// The parameter block, always the same one. It is made on first use, also by the const forms, which then
    /// must not run on two threads at once; `std::bad_alloc`.
    Params& par() { return parEx(); }
    Params const& par() const { return parEx(); }
    ParamsEx& parEx() { return made(params_); }
    ParamsEx const& parEx() const { return made(params_); }
    Params& checkPar() { return parEx(); }

private:
    friend class ExchangePtr;
    friend class ObservationAccess;
    friend class Observer;
    friend class ObserverPath;
    friend class ObserverWalk;

    std::uint64_t exchangePtr(ObserverRelationTableObserver& table);
    AddResult addTo(ObserverList& list, std::unique_ptr<ObserverPath> path, bool sorted);
    ObserverPath* insertInto(ObserverList& list, std::unique_ptr<ObserverPath> path, bool sorted,
                             ReleasedPaths& released);
    void removeFrom(ObserverList& list, ObserverPath& link, ReleasedPaths& released) noexcept;
    void removeOf(Observer const& observer, ObserverList& list, ReleasedPaths& released) noexcept;
    struct EqualLinks;
    EqualLinks linksEqual(LinkKey const& key);
    std::pair<ObserverList*, std::uint64_t> locate(std::uint64_t index) const;
    bool updateList(ObserverList& list, bool& changed);
    std::uint64_t exchangeIn(ObserverList& list, ObserverRelationTableObserver& table);
    void setCleanUp(bool isPre);
    bool isPreList(ObserverList const& list) const;
    static ParamsEx& made(std::unique_ptr<ParamsEx>& params);
    void finishNotification(bool isPost, NotifyingThread& thread) noexcept;
    void cleanUp(bool isPost, NotifyingThread& thread) noexcept;
    void keepUnknownLink(bool isPre, LinkText link);
    [[nodiscard]] Result readLink(std::istream& in, std::shared_ptr<ReadContextBase const> const& context,
                                  bool isPre, Result& recorded);
    [[nodiscard]] Result writeLinks(std::ostream& out, std::shared_ptr<WriteContextBase const> const& context,
                                    bool isPre);

    enum Flag : std::uint16_t { ENABLED = 1, OWNED = 2, CLEAN_POST = 4, CLEAN_PRE = 8 };

    bool isEnabled() const { return (flags_ & ENABLED) != 0; }

    mutable std::unique_ptr<ParamsEx> params_; ///< Made when it is needed: few observables are observed.
    // Behind the lists, where what derives from this class finds its place.
    std::uint16_t flags_ = ENABLED;
    std::atomic<std::uint16_t> depth_{0}; ///< The number of running notifications.
};

} // namespace Zorvan::AttributeContainer
