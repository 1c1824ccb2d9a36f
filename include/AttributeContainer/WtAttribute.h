// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/CreateType.h>
#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/Export.h>
#include <AttributeContainer/KeyTable.h>
#include <AttributeContainer/Observable.h>

#include <cstdint>
#include <functional>
#include <future>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

namespace Zorvan::AttributeContainer {

struct AttrDefinition;
class AttrContainer;
class AttributeBinding;
class LineWriter;
class ReadContextBase;
class WriteContextBase;

/// A named, typed value that can be observed: the base of every attribute.
///
/// An attribute belongs to at most one container, or stands alone, and is always owned by a
/// `std::shared_ptr`. Values are read and changed through `Attr<T>`; this base offers what works without
/// knowing the type: text, comparison, copying, marks, notification.
///
/// A change asks the pre-observers (each may refuse), stores the value and tells the post-observers, all on
/// the calling thread before the call returns. Handlers may do anything meanwhile, also drop the last
/// reference to the attribute or to the tree that it belongs to.
class KX_ATTRIBUTECONTAINER_API Attribute : public Observable {
public:
    /// The bits that an attribute carries beside its value.
    struct Flags {
        /// The block that was read for this attribute had a "Write" entry; it is written again.
        std::uint16_t write : 1;
        /// The category of the definition has bit 1 (value 2).
        std::uint16_t categoryFlag : 1;
        /// The mark, see isMarked.
        std::uint16_t marked : 1;
    };

    /// Flags with every bit clear.
    static constexpr Flags nullFlags{0, 0, 0};

    using NotificationResults = std::vector<NotificationResult>;
    /// Receives what the observers answered. A promise that is dropped unfulfilled shows as a broken promise.
    /// Any thread may wait for its future.
    using ResultPromise = std::unique_ptr<std::promise<NotificationResults>>;

    /// With a source, takes copies of the source's persistent links (inactive), never its flags.
    explicit Attribute(std::optional<std::reference_wrapper<Attribute const>> source);
    ~Attribute() override;
    Attribute(Attribute const&) = delete;

    /// "Attribute".
    static std::string const& getStaticClassName();
    /// The short type name, such as "Attr<int>"; it is also the type written to documents.
    virtual std::string const& getClassName() const;

    /// The name in the owning container; empty without one.
    std::string getName() override = 0;
    std::string getName() const;
    /// The container that the attribute belongs to, or nothing. Valid as long as the container lives.
    virtual std::optional<std::reference_wrapper<AttrContainer const>> getLocation() = 0;
    std::optional<std::reference_wrapper<AttrContainer const>> getLocation() const;
    /// The class's definition of a declared attribute, null for a custom one. Lives as long as the program.
    virtual AttrDefinition const* getDefinition() const = 0;
    /// The token in the owning container, all ones without one.
    virtual std::uint64_t getToken() = 0;
    std::uint64_t getToken() const;

    /// The container's object path, "/" and the name; nothing without a container.
    using Observable::inqObjPath;
    std::optional<std::string> inqObjPath() override;
    /// The empty path names the attribute itself, any other path is resolved by its container.
    std::weak_ptr<ObservingObject> inqObserver(std::optional<std::string const> const& path) override;
    std::weak_ptr<ObservingObject const>
    inqObserver(std::optional<std::string const> const& path) const override;
    /// The owning container as an observer, or nothing.
    using Observable::lookupObject;
    std::optional<std::reference_wrapper<Observer const>> lookupObject() override;

    /// Takes the source's value through a notified change without origin: directly when the types are the
    /// same, otherwise through the source's text. May be refused by a pre-observer.
    virtual Attribute& operator=(Attribute const& source) = 0;
    /// A new attribute of the same type with the value (unless `Blank`) and the persistent links (inactive)
    /// of this one: bound to `location` as a declared attribute, or a custom attribute without a location.
    /// Never null.
    virtual std::shared_ptr<Attribute>
    duplicate(CreateType type, std::optional<std::reference_wrapper<AttrContainer const>> location) = 0;
    /// Whether `other` has the same type and an equal value; a NaN equals every number.
    virtual bool isEqual(Attribute const& other) const = 0;
    /// The negation of isEqual.
    virtual bool isDifferent(Attribute const& other) const;

    /// The value in text form, "(NULL)" for an attribute without a value.
    virtual std::string getValueAsText();
    std::string getValueAsText() const;
    /// Takes a value given as text; text that does not parse stores what the reader makes of it. Only a
    /// string attribute's change can be refused on this way. The promises may be empty; while observation is
    /// blocked they are fulfilled with empty lists.
    virtual void assignFrom(std::string const& text, std::shared_ptr<ObservingObject> const& origin,
                            ResultPromise preResults, ResultPromise postResults);

    /// Asks the pre-observers. `results` may be null.
    void preTouch(std::shared_ptr<ObservingObject> const& origin, NotificationResults* results);
    /// Commits a pending cached value (see CachedAttributeInfo) and tells the post-observers. `results` may
    /// be null.
    virtual void touch(std::shared_ptr<ObservingObject> const& origin, NotificationResults* results);

    /// The observer through which this attribute follows others (action "Propagate"); made on the first call,
    /// owned by the attribute. Throws `std::bad_weak_ptr` when the attribute is not owned by a
    /// `std::shared_ptr`.
    std::weak_ptr<Observer> getObserver();

    /// The mark: used by marking visitors, by copies and writes of marked attributes only.
    bool isMarked() const { return state_.marked != 0; }
    /// Sets or clears the mark; nobody is notified.
    void setMarked(bool marked) { state_.marked = marked ? 1 : 0; }
    /// The flag bits.
    Flags getFlags() const { return {state_.write, state_.categoryFlag, state_.marked}; }

    /// Reads the entries of one attribute block up to its "}"; values are stored unasked, observers told.
    /// `StreamFailure` when a value does not parse or the input ends, `NoContext`; else null, or what was
    /// passed over: the warning `UnknownContent`, `ObserverUnresolved`.
    [[nodiscard]] Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) override;
    /// Writes the "Write" entry and the observer links. The warning `NotMarked`, and nothing is written, when
    /// only marked attributes are to be; `StreamFailure`, `NoContext`.
    [[nodiscard]] Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) override;
    /// Reads the value behind a "Value" keyword and stores it unasked.
    virtual void readValueFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context);

    /// Whether changes on the calling thread are stored without asking or telling anybody.
    static bool isObservingBlocked();
    /// Switches observation off or on for the calling thread; prefer BlockObserver.
    static void setObservingBlocked(bool blocked);
    /// Whether reads on the calling thread see the values of attached CachedAttributeInfos.
    static bool isCachedAttributePending();
    /// Switches the use of cached values on the calling thread.
    static void setIsCachedAttributePending(bool pending);

protected:
    /// The calling thread's switches: bit 0 cached attribute pending, bit 1 observing blocked.
    static int getAttributeTempFlags();
    static void setAttributeTempFlags(int flags);
    static bool isAnyTempFlagSet();

    /// The entry keywords of an attribute block.
    static DataStructures::KeyTable const& keyTable;

private:
    friend class AttributeAccess;

    /// The part that knows the container; null without one.
    virtual AttributeBinding* binding();
    /// Told after a value was stored in an attribute whose container keeps an index by it (the name).
    virtual void valueStored();
    /// The type of the info by which a change of this attribute proposes its value.
    virtual std::type_info const& proposedValueType() const;
    /// Whether the value is that of `other`, an attribute of the same type, within the tolerance of the type;
    /// false for types without one.
    virtual bool isWithinTolerance(Attribute const& other) const;
    /// Appends the value as writeTo does, with initial ones if asked to. False: the attribute may write more
    /// than that, and nothing was appended.
    virtual bool appendValue(LineWriter& line, bool withInitialValues) const;

    /// The flags, and what else takes a bit.
    struct State {
        std::uint16_t write : 1;
        std::uint16_t categoryFlag : 1;
        std::uint16_t marked : 1;
        std::uint16_t tellsOwner : 1; ///< valueStored is to be called.
        std::uint16_t isFollower : 1; ///< The observer of getObserver was made.
    };

    State state_{};
};

} // namespace Zorvan::AttributeContainer
