// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/Export.h>
#include <AttributeContainer/ObservingObject.h>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

class Action;
class ObservationAccess;
class Observable;
class Observer;
class ObserverList;
class ReleasedPaths;
class ReadContextBase;
class WriteContextBase;
struct LinkKey;
struct LinkText;
struct RegisteredAction;

/// One observation link: who observes, with which priority, through which action, on behalf of which owner.
///
/// The observer is held by reference, or named by a path string until that can be resolved. A reference never
/// dangles: an observer that is destroyed empties the links that name it. A link in a list of its owner is
/// active exactly while it counts among what its observer watches; a link that stands alone only remembers
/// whether it is to be active once it is added, and must not be used after its owner has ended.
class KX_ATTRIBUTECONTAINER_API ObserverPath {
public:
    /// A temporary link without priority, action, observer and owner.
    ObserverPath();
    /// A link to an observer, active when one is given. An unknown token gives no action.
    ObserverPath(std::optional<std::reference_wrapper<ObservingObject>> owner,
                 std::optional<std::reference_wrapper<Observer>> observer, short priority,
                 std::uint64_t actionToken);
    /// A link to the observer that a path names. The path is resolved at once; when that succeeds the link is
    /// active and holds the observer by reference.
    ObserverPath(std::optional<std::reference_wrapper<ObservingObject>> owner,
                 std::optional<std::string const> const& path, short priority, std::uint64_t actionToken);
    /// An inactive copy of the source with another owner.
    ObserverPath(std::optional<std::reference_wrapper<ObservingObject>> owner, ObserverPath const& source);
    /// An inactive copy, with the source's owner.
    ObserverPath(ObserverPath const& other);
    /// Takes over everything but the active flag. A link that stands in a list keeps its owner and first
    /// detaches itself from its observer.
    ObserverPath& operator=(ObserverPath const& other);
    ~ObserverPath();

    /// Observers are told from the highest priority down.
    short getPriority() const { return priority_; }
    /// Whether the observer is to be told.
    bool isActive() const { return (flags_ & ACTIVE) != 0; }
    /// Whether the link is left out of copies and documents.
    bool isTemporary() const { return (flags_ & TEMPORARY) != 0; }
    void setTemporary(bool temporary);

    /// The action's token; all ones when the link has no action.
    std::uint64_t getActionToken() const;
    /// The action's registered name, also after the action was unregistered; no value without an action.
    std::optional<std::string const> getActionName() const;
    /// Chooses the action by token; an unknown token leaves the link without one. A link that becomes equal
    /// to another one of its list is taken out of the list.
    void setAction(std::uint64_t token);
    /// Chooses the action by name; an unknown name leaves the link without one.
    void setAction(std::string const& name);

    /// The object path of an observer held by reference, if it has one, otherwise the path string, if there
    /// is one.
    std::optional<std::string> getPath() const;
    /// The observer. A path string is resolved now, through the thread's path root or else the owner; when
    /// that succeeds the link holds the observer by reference and is inactive.
    std::optional<std::reference_wrapper<Observer>> lookupObserver();

    /// Redirects the link to another observer, active when the owner is an observable; no observer changes
    /// nothing. The previous observer's entry of a listed link always goes with it. A link that becomes equal
    /// to another one of its list is taken out of the list. Throws std::bad_weak_ptr when the link stands in
    /// a list of an owner that no std::shared_ptr owns; then nothing has changed.
    void setObserver(std::optional<std::reference_wrapper<Observer>> observer, bool informPrevious);
    /// Turns a reference into a path string, the given one or the observer's object path. False, and no
    /// change, when there is no reference or no string.
    bool setObserverAsPath(std::optional<std::string const> path);
    /// Makes the link active. False when it is active already, its observer is not found, or its owner is no
    /// observable. Throws like setObserver.
    bool activate();
    /// Makes the link inactive and keeps the reference. False when it is not active by reference.
    bool deactivate();

    /// Same action and same observer. A reference and a path string are equal when the observer's object path
    /// is that string.
    bool operator==(ObserverPath const& other) const;
    /// Order of links: those with a live observer above those without, then by priority. 1, 0 or -1.
    static int comp(ObserverPath const& a, ObserverPath const& b);
    /// The negation of comp.
    static int negComp(ObserverPath const& a, ObserverPath const& b);

    /// Reads an "ObserverPath" block: consumes it whole and leaves the keyword behind it current. The link is
    /// inactive afterwards. UnknownKeyword, StreamFailure or NoContext; then, and should it throw, a part of
    /// the block may have been applied.
    [[nodiscard]] Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context);
    /// Writes the same block. StreamFailure or NoContext.
    [[nodiscard]] Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) const;

private:
    friend class ObservationAccess;
    friend class Observable;
    friend class Observer;
    friend class ObserverList;
    friend class ObserverWalk;
    friend class ReleasedPaths;
    friend struct LinkKey;
    class Hold;
    class Rekeying;

    enum Flag : std::uint8_t {
        ACTIVE = 1,        ///< the observer is to be told
        BY_REFERENCE = 2,  ///< observer_ counts, otherwise text_
        TEMPORARY = 4,     ///< not copied, not written
        FROM_DOCUMENT = 8, ///< text_ stays beside the observer that it resolves to
        PLACED_LIVE = 16,  ///< the place in the list is one among live links
        DISPLACED = 32,    ///< liveness has changed since the place was chosen
        REMOVED = 64       ///< dead, waits in its list for the end of the walks
    };

    bool has(Flag flag) const { return (flags_ & flag) != 0; }
    void set(Flag flag, bool on) {
        flags_ = static_cast<std::uint8_t>(on ? flags_ | flag : flags_ & ~static_cast<unsigned>(flag));
    }
    bool isLive() const { return has(ACTIVE) && observer_ != nullptr; }
    bool hasAction() const { return action_ != nullptr && !has(REMOVED); }
    Action const* boundAction() const;
    Observable* owningObservable() const;
    [[nodiscard]] std::shared_ptr<RegisteredAction>
    exchangeAction(std::shared_ptr<RegisteredAction> action) noexcept;
    void holdReference(Observer& observer) noexcept;
    void releaseReference() noexcept;
    void detach() noexcept;
    void setText(std::unique_ptr<std::string> text, bool fromDocument) noexcept;
    [[nodiscard]] std::shared_ptr<RegisteredAction> copyFrom(ObserverPath const& other);
    [[nodiscard]] std::shared_ptr<RegisteredAction> takeFrom(ObserverPath const& other,
                                                             std::unique_ptr<std::string> text) noexcept;
    Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> const& context, LinkText& link);
    void redirect(Observer& observer, bool keepText);
    ObserverPath* findEqual(Observer& observer) const;
    void mergeInto(ObserverPath* other) noexcept;
    void setActive(bool active);
    static std::shared_ptr<Observer> resolve(ObservingObject* owner, std::string const& path);
    std::optional<std::string> documentPath() const;
    std::string const* heldPath() const { return has(BY_REFERENCE) ? nullptr : text_.get(); }

    short priority_ = 0;
    std::uint8_t flags_ = TEMPORARY;
    ObservingObject* owner_ = nullptr;       ///< the observable whose list this is for
    Observer* observer_ = nullptr;           ///< set only with BY_REFERENCE
    ObserverPath* nextOfObserver_ = nullptr; ///< in the chain of the links that name the observer
    ObserverPath* previousOfObserver_ = nullptr;
    ObserverList* list_ = nullptr;      ///< the list that the link stands in
    std::unique_ptr<std::string> text_; ///< the path string, or the one kept beside a resolved reference
    std::shared_ptr<RegisteredAction> action_; ///< a dead link keeps it until it is released
    std::uint64_t addition_ = 0;               ///< order of addition to the list
    std::int64_t rank_ = 0;                    ///< order among links of one key, as placed
};

} // namespace Zorvan::AttributeContainer
