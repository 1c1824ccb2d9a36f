// SPDX-License-Identifier: MIT
#pragma once

// The bodies of Attr<T>, HardCodedAttr<T> and CustAttr<T>, for the files that instantiate them.

#include "attributes/AttrTypeList.h"
#include "attributes/AttributeAccess.h"
#include "attributes/AttributeChange.h"
#include "attributes/AttributeSwitches.h"
#include "attributes/ContainerLink.h"
#include "attributes/ValueEquality.h"
#include "attributes/ValueTolerance.h"
#include "foundation/MakeError.h"
#include "foundation/RecyclingAllocator.h"
#include "serialization/LineWriter.h"
#include "serialization/MemoryStream.h"

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/ValueText.h>
#include <AttributeContainer/WriteContextBase.h>

#include <optional>
#include <ostream>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Zorvan::AttributeContainer {

/// The type name of a value type; the instantiating files define it for theirs.
template <class T>
char const* attrTypeName();

/// A copy of the value costs less than to keep a shared pointer to one.
template <class T>
constexpr bool isCheapToKeep = std::is_trivially_copyable_v<T> && sizeof(T) <= 4 * sizeof(void*);

/// Copy assignment that fails, for want of memory, leaves what was there. That of maps, and of lists whose
/// elements are copied one by one, may stop in the middle.
template <class T>
constexpr bool isAssignedAsAWhole = std::is_trivially_copyable_v<T> || std::is_same_v<T, std::string>;
template <class Element>
inline constexpr bool isAssignedAsAWhole<std::vector<Element>> =
    std::is_trivially_copyable_v<Element> && !std::is_same_v<Element, bool>;

template <class T>
Attr<T>::Attr() : Attribute(std::nullopt) {}

template <class T>
Attr<T>::~Attr() = default;

template <class T>
std::string const& Attr<T>::getStaticClassName() {
    static std::string const& name = *new std::string(attrTypeName<T>());
    return name;
}

template <class T>
std::string const& Attr<T>::getClassName() const {
    return getStaticClassName();
}

/// Whether the attribute is of one of the library's own classes of the type. What applications derive may
/// override what is called for a change, or write anything.
template <class T>
bool isOwnClass(Attribute const& attribute) {
    std::type_info const* const type = &typeid(attribute);
    return type == &typeid(HardCodedAttr<T>) || type == &typeid(CustAttr<T>);
}

/// Where the value of the attached cached attribute is; null when there is none.
template <class T>
[[gnu::noinline, gnu::cold]] AttrVal<T> const* cachedHolder(Attribute const& attribute) {
    // The attached info holds the cached attribute for as long as the value is good.
    auto const cached = AttributeAccess::cachedAttribute(attribute);
    auto const* typed = AttributeAccess::cast<T>(cached.get());
    return typed ? &AttributeAccess::holder(*typed) : nullptr;
}

template <class T>
[[gnu::always_inline]] inline AttrVal<T> const& Attr<T>::valueHolder() const {
    if (isCachedAttributePendingHere())
        if (auto const* cached = cachedHolder<T>(*this))
            return *cached;
    return holder_;
}

template <class T>
std::type_info const& Attr<T>::proposedValueType() const {
    return typeid(NewValueInfo<T>);
}

template <class T>
T const& Attr<T>::getValue() const {
    return valueHolder().read();
}

template <class T>
template <class U>
void Attr<T>::store(U&& value) {
    if constexpr (isAssignedAsAWhole<T> || std::is_same_v<U, T>)
        holder_.get() = std::forward<U>(value);
    else
        holder_.get() = T(value);
    if (AttributeAccess::tellsOwner(*this))
        AttributeAccess::valueStored(*this);
}

template <class T>
bool Attr<T>::isChangeAllowed(AttributeChange const& change, T const& value,
                              std::shared_ptr<ObservingObject> const& origin, ResultPromise const& preResults,
                              std::shared_ptr<NewValueInfo<T>>& proposed) {
    std::optional<NotificationResults> results;
    NotificationResults* const wanted = preResults ? &results.emplace() : nullptr;
    bool isAllowed = true;
    if (ObservationAccess::numLinks(*this, true) != 0) {
        NotifyingThread& thread = change.thread();
        if constexpr (isCheapToKeep<T>) {
            ObservationAccess::addInfoOf<NewValueInfo<T>>(*this, value, thread);
        } else {
            proposed = std::allocate_shared<NewValueInfo<T>>(RecyclingAllocator<NewValueInfo<T>>(), value);
            ObservationAccess::addInfo(*this, proposed, thread);
        }
        if (isOwnClass<T>(*this))
            ObservationAccess::notifyPre(*this, origin, wanted, thread);
        else
            preTouch(origin, wanted);
        // As a rule nobody has attached anything.
        auto const refusal = ObservationAccess::hasOnlyDeferredInfo(thread)
                                 ? nullptr
                                 : ObservationAccess::findInfo(*this, typeid(InfoFailed), thread);
        if (refusal) {
            change.setRefused(refusal);
            removeNotifyInfos(false);
            isAllowed = false;
        }
    }
    if (preResults)
        preResults->set_value(std::move(*results));
    return isAllowed;
}

/// Whether a change is nothing but a new value: nobody is told, and no value is staged.
template <class T>
[[gnu::always_inline]] inline bool Attr<T>::isUnwatched(NotifyingThread const& thread) const {
    return thread.attributeSwitches == 0 && !AttributeChange::isNeeded(*this, thread);
}

template <class T>
void Attr<T>::setValue(T const& value) {
    NotifyingThread& thread = notifyingThread;
    if (!isUnwatched(thread)) {
        changeTold(value, thread);
        return;
    }
    store(value);
    if (!isOwnClass<T>(*this))
        touch(nullptr, nullptr);
}

/// A change of which observers are told, and nothing else is going on: there is nobody to ask, no change of
/// the attribute is running, and nothing is noted.
template <class T>
[[gnu::noinline]] void Attr<T>::changeTold(T const& value, NotifyingThread& thread) {
    if (thread.attributeSwitches == 0 && !thread.notes && !thread.innermostProbe &&
        !ObservationAccess::hasPreObservers(*this) && !ObservationAccess::isWalking(*this) &&
        isOwnClass<T>(*this))
        if (auto const self = ObservationAccess::hold(*this)) {
            HeldObservable const held(*this, thread);
            store(value);
            ObservationAccess::notifyPost(*this, nullptr, nullptr, thread);
            return;
        }
    changeWatched(value, nullptr, nullptr, nullptr, thread);
}

template <class T>
void Attr<T>::setValue(T const& value, std::shared_ptr<ObservingObject> const& origin,
                       ResultPromise preResults, ResultPromise postResults) {
    NotifyingThread& thread = notifyingThread;
    if (!isUnwatched(thread)) {
        changeWatched(value, origin, preResults, postResults, thread);
        return;
    }
    store(value);
    if (preResults)
        preResults->set_value({});
    NotificationResults results;
    if (!isOwnClass<T>(*this))
        touch(origin, postResults ? &results : nullptr);
    if (postResults)
        postResults->set_value(std::move(results));
}

// The thread is handed in: where the compiler sees what it is, it is looked for at each use.
template <class T>
[[gnu::noinline]] void Attr<T>::changeWatched(T const& value, std::shared_ptr<ObservingObject> const& origin,
                                              ResultPromise const& preResults,
                                              ResultPromise const& postResults, NotifyingThread& thread) {
    AttributeChange const change(*this, AttributeChange::Kind::NewValue, thread);
    bool const isBlocked = (thread.attributeSwitches & ObservingBlocked) != 0;
    // A pre-observer may let go of what value and origin belong to.
    [[maybe_unused]] std::conditional_t<isCheapToKeep<T>, T, char> kept{};
    if constexpr (isCheapToKeep<T>)
        kept = value;
    std::shared_ptr<NewValueInfo<T>> proposed;
    bool const isAsked = !isBlocked && (preResults || ObservationAccess::hasPreObservers(*this));
    std::shared_ptr<ObservingObject> const heldOrigin = isAsked ? origin : nullptr;
    if (isAsked && !isChangeAllowed(change, value, origin, preResults, proposed))
        return;
    // The value may be the one that the cached attribute holds, which stays staged when storing fails.
    if constexpr (isCheapToKeep<T>)
        store(kept);
    else if (proposed)
        store(proposed->getNewValue());
    else
        store(value);
    std::shared_ptr<ObserverInfo> const dropped = AttributeAccess::takeCachedAttribute(*this, thread);
    if (isBlocked)
        return;
    auto const tell = [&, &cause = isAsked ? heldOrigin : origin](NotificationResults* results) {
        // Of the library's own classes it is known what touch would do.
        if (thread.attributeSwitches == 0 && AttributeChange::isOpen(*this, thread) && isOwnClass<T>(*this))
            ObservationAccess::notifyPost(*this, cause, results, thread);
        else
            touch(cause, results);
    };
    if (!postResults) {
        tell(nullptr);
        return;
    }
    NotificationResults results;
    tell(&results);
    postResults->set_value(std::move(results));
}

template <class T>
void Attr<T>::touch(std::shared_ptr<ObservingObject> const& origin, NotificationResults* results) {
    NotifyingThread& thread = notifyingThread;
    std::optional<AttributeChange> change;
    if (!AttributeChange::isOpen(*this, thread)) {
        if (thread.attributeSwitches == 0 && !AttributeChange::isNeeded(*this, thread)) {
            if (!isOwnClass<T>(*this))
                Attribute::touch(origin, results);
            return;
        }
        change.emplace(*this, AttributeChange::Kind::Touch, thread);
    }
    if (auto const cached = AttributeAccess::cachedAttribute(*this, thread)) {
        if (auto const* typed = AttributeAccess::cast<T>(cached.get()))
            store(typed->holder_.read());
        auto const released = AttributeAccess::takeCachedAttribute(*this, thread);
    }
    if (thread.attributeSwitches & ObservingBlocked)
        return;
    Attribute::touch(origin, results);
}

template <class T>
void Attr<T>::assignFrom(std::string const& text, std::shared_ptr<ObservingObject> const& origin,
                         ResultPromise preResults, ResultPromise postResults) {
    if constexpr (std::is_same_v<T, std::string>) {
        setValue(text, origin, std::move(preResults), std::move(postResults));
    } else {
        AttributeChange const change(*this, AttributeChange::Kind::NewValue);
        // A pre-observer may let go of what text and origin belong to.
        std::shared_ptr<ObservingObject> const heldOrigin = origin;
        MemoryInStream in(text);
        T value = DataInFormat<T>(in, ModelFormat::Text).take();
        bool const isBlocked = (notifyingThread.attributeSwitches & ObservingBlocked) != 0;
        NotificationResults preList;
        if (!isBlocked)
            preTouch(heldOrigin, preResults ? &preList : nullptr);
        store(std::move(value));
        auto const dropped = AttributeAccess::takeCachedAttribute(*this);
        NotificationResults postList;
        if (!isBlocked)
            touch(heldOrigin, postResults ? &postList : nullptr);
        if (preResults)
            preResults->set_value(std::move(preList));
        if (postResults)
            postResults->set_value(std::move(postList));
    }
}

template <class T>
std::shared_ptr<Attribute>
Attr<T>::duplicate(CreateType type, std::optional<std::reference_wrapper<AttrContainer const>> location) {
    std::shared_ptr<Attr<T>> copy;
    if (location)
        copy = std::make_shared<HardCodedAttr<T>>(location->get());
    else
        copy = std::make_shared<CustAttr<T>>();
    if (type != CreateType::Blank)
        copy->holder_.get() = getValue();
    AttributeAccess::copyLinks(*copy, *this);
    return copy;
}

template <class T>
Attribute& Attr<T>::operator=(Attribute const& source) {
    if (auto const* typed = AttributeAccess::cast<T>(&source))
        setValue(typed->getValue(), nullptr, nullptr, nullptr);
    else
        assignFrom(source.getValueAsText(), nullptr, nullptr, nullptr);
    return *this;
}

template <class T>
bool Attr<T>::isEqual(Attribute const& other) const {
    // Mostly both are of one class.
    auto const* typed = typeid(other) == typeid(*this) ? static_cast<Attr<T> const*>(&other)
                                                       : AttributeAccess::cast<T>(&other);
    return typed && areValuesEqual(valueHolder().read(), typed->valueHolder().read());
}

template <class T>
bool Attr<T>::isWithinTolerance(Attribute const& other) const {
    auto const* typed = AttributeAccess::cast<T>(&other);
    return typed && areValuesNear(getValue(), typed->getValue());
}

template <class T>
std::string Attr<T>::getValueAsText() {
    std::string text;
    appendText(text, getValue());
    return text;
}

template <class T>
Result Attr<T>::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    return Attribute::readFrom(in, std::move(context));
}

template <class T>
void Attr<T>::readValueFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    ModelFormat::Format const format = context ? context->getFormat() : ModelFormat::Text;
    T value = DataInFormat<T>(in, format).take();
    if (in.fail())
        return; // The caller reports it; what stood in the attribute is worth more than a torn value.
    if (notifyingThread.attributeSwitches == 0 && !AttributeChange::isNeeded(*this)) {
        store(std::move(value));
        if (!isOwnClass<T>(*this))
            touch(nullptr, nullptr);
        return;
    }
    AttributeChange const change(*this, AttributeChange::Kind::NewValue);
    store(std::move(value));
    auto const dropped = AttributeAccess::takeCachedAttribute(*this);
    touch(nullptr, nullptr);
}

/// The buffer of a stream may be an application's and set the attribute whose value it is given: then a copy
/// of the value is written.
template <class T, class Write>
void writeUnchanged(LineWriter& line, T const& value, Write const& write) {
    if (line.sink().callsOthers()) [[unlikely]]
        write(T(value));
    else
        write(value);
}

template <class T>
Result Attr<T>::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) {
    // Nothing is written for an attribute that is not to be written: the base class judges that too, but
    // later.
    if (!context || (context->writeOnlyMarked() && !isMarked()))
        return Attribute::writeTo(out, std::move(context));
    ModelFormat::Format const format = context->getFormat();
    LineWriter line(out, format);
    if (T const& value = getValue(); format == ModelFormat::Xml) {
        out.precision(8);
        writeUnchanged(line, value, [&](T const& kept) { DataOutFormat<T>(out, format).put(kept); });
    } else if (context->writeDefaultValues() || !isInitialValue(value)) {
        writeUnchanged(line, value, [&](T const& kept) { DataOutFormat<T>::appendLine(line, kept); });
        line.finish();
    }
    if (!out.good())
        return makeError("WtAttribute.h", 829, StreamFailure);
    return Attribute::writeTo(out, std::move(context));
}

template <class T>
bool Attr<T>::appendValue(LineWriter& line, bool withInitialValues) const {
    if (!isOwnClass<T>(*this))
        return false;
    if (T const& value = valueHolder().read(); withInitialValues || !isInitialValue(value))
        writeUnchanged(line, value, [&](T const& kept) { DataOutFormat<T>::appendLine(line, kept); });
    return true;
}

// --- HardCodedAttr<T>

template <class T>
HardCodedAttr<T>::HardCodedAttr(AttrContainer const& owner) : HardCodedAttribute(owner) {}

template <class T>
HardCodedAttr<T>::HardCodedAttr(MemberOf const& owner) : HardCodedAttribute(owner) {}

template <class T>
HardCodedAttr<T>::~HardCodedAttr() = default;

template <class T>
std::string HardCodedAttr<T>::getName() {
    auto const* owner = container();
    return owner ? ContainerLink::attrName(*owner, getToken()) : std::string();
}

template <class T>
std::optional<std::reference_wrapper<AttrContainer const>> HardCodedAttr<T>::getLocation() {
    auto const* owner = container();
    if (!owner)
        return std::nullopt;
    return *owner;
}

template <class T>
AttrDefinition const* HardCodedAttr<T>::getDefinition() const {
    auto const* owner = container();
    return owner ? ContainerLink::definition(*owner, Attribute::getToken()) : nullptr;
}

template <class T>
std::uint64_t HardCodedAttr<T>::getToken() {
    auto const* owner = container();
    return owner ? ContainerLink::declaredToken(*owner, *this, AttributeAccess::index(*this))
                 : DataStructures::KeyTable::noToken;
}

template <class T>
void HardCodedAttr<T>::valueStored() {
    if (auto const* owner = container())
        ContainerLink::nameStored(*owner);
}

// --- CustAttr<T>

template <class T>
CustAttr<T>::CustAttr() = default;

template <class T>
CustAttr<T>::CustAttr(T const& value) {
    AttributeAccess::holder(*this).get() = value;
}

template <class T>
CustAttr<T>::~CustAttr() = default;

template <class T>
std::string CustAttr<T>::getName() {
    auto const* owner = container();
    return owner ? ContainerLink::attrName(*owner, getToken()) : std::string();
}

template <class T>
std::optional<std::reference_wrapper<AttrContainer const>> CustAttr<T>::getLocation() {
    auto const* owner = container();
    if (!owner)
        return std::nullopt;
    return *owner;
}

template <class T>
AttrDefinition const* CustAttr<T>::getDefinition() const {
    return nullptr;
}

template <class T>
std::uint64_t CustAttr<T>::getToken() {
    auto const* owner = container();
    return owner ? ContainerLink::customToken(*owner, *this) : DataStructures::KeyTable::noToken;
}

} // namespace Zorvan::AttributeContainer

/// Instantiates the attribute classes of one row of the type list.
#define KX_INSTANTIATE_ATTR(number, name, ...)                                                               \
    template <>                                                                                              \
    char const* attrTypeName<__VA_ARGS__>() {                                                                \
        return name;                                                                                         \
    }                                                                                                        \
    template class Attr<__VA_ARGS__>;                                                                        \
    template class HardCodedAttr<__VA_ARGS__>;                                                               \
    template class CustAttr<__VA_ARGS__>;
