// SPDX-License-Identifier: MIT
#include <AttributeContainer/WtAttribute.h>

#include "attributes/AttributeAccess.h"
#include "attributes/AttributeSwitches.h"
#include "attributes/ContainerLink.h"
#include "foundation/MakeError.h"
#include "foundation/NeverDestroyed.h"
#include "serialization/LineWriter.h"
#include "serialization/ModelInFormatAccess.h"
#include "serialization/ReadOutcome.h"

#include <AttributeContainer/AttributePropagationObserver.h>
#include <AttributeContainer/CachedAttributeInfo.h>
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteToScope.h>

#include <istream>
#include <ostream>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "WtAttribute";

constinit NeverDestroyed<DataStructures::KeyTable> keyTableStorage;

[[gnu::init_priority(101)]] NeverDestroyedFill const fillKeyTable([] {
    keyTableStorage.emplace(
        std::vector<DataStructures::KeyTableEntry>{{1, "Name"}, {3, "Value"}, {4, "Write"}, {5, ""}});
});

enum class Entry { Name, Value, Write, Link, Unknown };

Entry entryOf(ModelInFormat const& imf, std::string_view keyword) {
    if (ModelInFormatAccess::keywordQuoted(imf))
        return Entry::Unknown;
    if (keyword == "Value")
        return Entry::Value;
    if (keyword == "Name")
        return Entry::Name;
    if (keyword == "Write")
        return Entry::Write;
    if (keyword == "PreObserver" || keyword == "PostObserver" || keyword == "ObserverPath")
        return Entry::Link;
    return Entry::Unknown;
}

} // namespace

DataStructures::KeyTable const& Attribute::keyTable = keyTableStorage.get();

Attribute::Attribute(std::optional<std::reference_wrapper<Attribute const>> source)
    : Observable(source ? std::optional<std::reference_wrapper<Observable const>>(source->get())
                        : std::nullopt) {}

Attribute::~Attribute() {
    if (state_.isFollower)
        auto const released = ObservationAccess::takeFollower(*this);
}

AttributeBinding* Attribute::binding() { return dynamic_cast<AttributeBinding*>(this); }

std::string const& Attribute::getStaticClassName() {
    static std::string const& name = *new std::string("Attribute");
    return name;
}

std::string const& Attribute::getClassName() const { return getStaticClassName(); }

// The slots are not const, since overriders may look things up on demand; those of this library change
// nothing.
std::string Attribute::getName() const { return const_cast<Attribute*>(this)->getName(); }

std::optional<std::reference_wrapper<AttrContainer const>> Attribute::getLocation() const {
    return const_cast<Attribute*>(this)->getLocation();
}

std::uint64_t Attribute::getToken() const { return const_cast<Attribute*>(this)->getToken(); }

std::string Attribute::getValueAsText() const { return const_cast<Attribute*>(this)->getValueAsText(); }

std::optional<std::string> Attribute::inqObjPath() {
    auto const location = getLocation();
    if (!location)
        return std::nullopt;
    // An empty path of the container gives a bare name, as does one that ends with a slash.
    std::string path =
        const_cast<Observer&>(ContainerLink::asObserver(location->get())).inqObjPath().value_or("");
    if (!path.empty() && path.back() != '/')
        path += '/';
    else
        path.clear();
    return path + getName();
}

std::weak_ptr<ObservingObject> Attribute::inqObserver(std::optional<std::string const> const& path) {
    return std::const_pointer_cast<ObservingObject>(std::as_const(*this).inqObserver(path).lock());
}

std::weak_ptr<ObservingObject const>
Attribute::inqObserver(std::optional<std::string const> const& path) const {
    if (!path || path->empty())
        return weak_from_this();
    auto const location = getLocation();
    if (!location)
        return {};
    return ContainerLink::asObserver(location->get()).inqObserver(path);
}

std::optional<std::reference_wrapper<Observer const>> Attribute::lookupObject() {
    auto const location = getLocation();
    if (!location)
        return std::nullopt;
    return ContainerLink::asObserver(location->get());
}

bool Attribute::isDifferent(Attribute const& other) const { return !isEqual(other); }

std::string Attribute::getValueAsText() { return "(NULL)"; }

void Attribute::assignFrom(std::string const&, std::shared_ptr<ObservingObject> const&,
                           ResultPromise preResults, ResultPromise postResults) {
    if (preResults)
        preResults->set_value({});
    if (postResults)
        postResults->set_value({});
}

void Attribute::preTouch(std::shared_ptr<ObservingObject> const& origin, NotificationResults* results) {
    notifyPreObservers(origin, results);
}

void Attribute::touch(std::shared_ptr<ObservingObject> const& origin, NotificationResults* results) {
    notifyPostObservers(origin, results);
}

std::weak_ptr<Observer> Attribute::getObserver() {
    if (!state_.isFollower) {
        auto self = std::dynamic_pointer_cast<Attribute>(shared_from_this());
        ObservationAccess::keepFollower(*this, std::make_shared<AttributePropagationObserver>(self));
        state_.isFollower = 1;
    }
    return ObservationAccess::follower(*this);
}

// --- Documents

Result Attribute::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    // Who hears of the value may let go of the attribute.
    auto const self = weak_from_this().lock();
    ReadFromScope scope(in, context);
    ModelInFormat& imf = scope.getImf();
    ReadOutcome outcome;
    std::string_view keyword;
    while (ModelInFormatAccess::current(imf, keyword) && !ModelInFormatAccess::isBlockEnd(imf)) {
        switch (entryOf(imf, keyword)) {
        case Entry::Value:
            readValueFrom(in, context);
            if (in.fail())
                return readFailure(sourceName, __LINE__, in,
                                   "The value is no " + getClassName() + ", or out of its range");
            imf.nextKeyword();
            break;
        case Entry::Name: // The container has taken the name already.
            ModelInFormatAccess::skipEntry(imf);
            break;
        case Entry::Write:
            state_.write = 1;
            DataInFormat<int>(in, context->getFormat()).get();
            if (in.fail())
                return readFailure(sourceName, __LINE__, in, "The entry \"Write\" has no number");
            imf.nextKeyword();
            break;
        case Entry::Link: {
            Result links = Observable::readFrom(in, context);
            if (!outcome.noteLinks(links, imf, context->getFormat() == ModelFormat::XmlV2))
                return links;
            break;
        }
        case Entry::Unknown:
            outcome.noteUnknownKeyword(in, sourceName, __LINE__, keyword, getClassName());
            ModelInFormatAccess::skipEntry(imf);
            break;
        }
    }
    // An attribute that stands alone on its stream has no block that would have to end.
    bool const mayEnd =
        ModelInFormatAccess::isOutermost(imf) && !in.fail() && !ModelInFormatAccess::wordLost(imf);
    if (!ModelInFormatAccess::isBlockEnd(imf) && !mayEnd)
        return readFailure(sourceName, __LINE__, in, "The block is not closed");
    ModelInFormatAccess::propagateBlockEnd(imf);
    return outcome.finish(sourceName, __LINE__, UnknownContent);
}

void Attribute::readValueFrom(std::istream&, std::shared_ptr<ReadContextBase const>) {}

Result Attribute::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) {
    if (!context)
        return makeError(sourceName, 265, NoContext);
    if (context->writeOnlyMarked() && !isMarked())
        return makeError(sourceName, 270, NotMarked);
    if (state_.write && context->getFormat() != ModelFormat::Xml) {
        WriteToScope scope(out, context);
        ModelOutFormat& mof = scope.getMof();
        mof.startValue("Write");
        DataOutFormat<int>(out, context->getFormat()).put(1);
        mof.endValue();
    }
    if (!out.good())
        return makeError(sourceName, 292, StreamFailure);
    return Observable::writeTo(out, std::move(context));
}

// --- Per-thread switches

bool Attribute::isObservingBlocked() { return (notifyingThread.attributeSwitches & ObservingBlocked) != 0; }

void Attribute::setObservingBlocked(bool blocked) {
    int const switches = notifyingThread.attributeSwitches;
    setAttributeSwitches(blocked ? switches | ObservingBlocked : switches & ~ObservingBlocked);
}

bool Attribute::isCachedAttributePending() { return isCachedAttributePendingHere(); }

void Attribute::setIsCachedAttributePending(bool pending) {
    int const switches = notifyingThread.attributeSwitches;
    setAttributeSwitches(pending ? switches | CachedAttributePending : switches & ~CachedAttributePending);
}

int Attribute::getAttributeTempFlags() { return notifyingThread.attributeSwitches; }

void Attribute::setAttributeTempFlags(int flags) { setAttributeSwitches(flags); }

bool Attribute::isAnyTempFlagSet() { return notifyingThread.attributeSwitches != 0; }

void Attribute::valueStored() {}

std::type_info const& Attribute::proposedValueType() const { return typeid(void); }

bool Attribute::isWithinTolerance(Attribute const&) const { return false; }

bool Attribute::appendValue(LineWriter&, bool) const { return false; }

bool AttributeAccess::appendPlainValue(LineWriter& line, Attribute const& attribute, bool withInitialValues) {
    return !attribute.state_.write && !hasLinks(attribute) && line.format() != ModelFormat::Xml &&
           attribute.appendValue(line, withInitialValues);
}

// --- Cached attributes

std::shared_ptr<Attribute> AttributeAccess::findCachedAttribute(Attribute const& attribute) {
    auto const info = const_cast<Attribute&>(attribute).lookupNotifyInfo(typeid(CachedAttributeInfo));
    return info ? std::static_pointer_cast<CachedAttributeInfo>(info)->getCachedAttribute() : nullptr;
}

std::shared_ptr<ObserverInfo> AttributeAccess::removeCachedAttribute(Attribute& attribute) {
    auto info = attribute.removeNotifyInfo(typeid(CachedAttributeInfo), true);
    if (info)
        setAttributeSwitches(notifyingThread.attributeSwitches & ~CachedAttributePending);
    return info;
}

} // namespace Zorvan::AttributeContainer
