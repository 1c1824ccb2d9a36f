// SPDX-License-Identifier: MIT
#include <AttributeContainer/WtAttrContainer.h>

#include "attributes/AttributeAccess.h"
#include "attributes/AttributeChange.h"
#include "containers/ContainerAccess.h"
#include "containers/ContainerExtras.h"
#include "foundation/MakeError.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "WtAttrContainer";

// The classifications of the classic locale: what a name may hold must not depend on where a program runs.
constexpr bool isAsciiAlnum(unsigned char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

constexpr std::array<bool, 256> nameCharacters = [] {
    std::array<bool, 256> are{};
    for (unsigned int c = 0; c < are.size(); ++c)
        are[c] = isAsciiAlnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.';
    return are;
}();

bool isNameCharacter(char c) { return nameCharacters[static_cast<unsigned char>(c)]; }

/// Whether the 16-bit character U+FFxx is alphanumeric: the halfwidth Katakana and Hangul letters from U+FF80
/// on.
bool isHighByteAlnum(unsigned char low) {
    return (low >= 0x80 && low <= 0xBE) || (low >= 0xC2 && low <= 0xC7) || (low >= 0xCA && low <= 0xCF) ||
           (low >= 0xD2 && low <= 0xD7) || (low >= 0xDA && low <= 0xDC);
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isEqualIgnoringCase(std::string const& a, std::string const& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lower(x) == lower(y); });
}

/// Counts the number at the end of a name up by one, keeping leading zeros; a name without a number gets a 1.
/// Works on the digits, so that no number is too long.
void countUp(std::string& name) {
    auto digit = name.size();
    while (digit > 0 && name[digit - 1] >= '0' && name[digit - 1] <= '9') {
        --digit;
        if (name[digit] != '9') {
            ++name[digit];
            return;
        }
        name[digit] = '0';
    }
    name.insert(digit, 1, '1');
}

} // namespace

std::string AttrContainer::getName() {
    auto const& declared = attributes_.attributes();
    auto const* attribute =
        declared.empty() ? nullptr : AttributeAccess::cast<std::string>(declared[0].get());
    return attribute ? attribute->getValue() : std::string();
}

std::string AttrContainer::getName() const { return const_cast<AttrContainer*>(this)->getName(); }

Attr<std::string>& AttrContainer::Attr_name() { return attrAt<std::string>(0); }
Attr<std::string> const& AttrContainer::Attr_name() const { return attrAt<std::string>(0); }
std::string const& AttrContainer::name() const { return Attr_name().getValue(); }
void AttrContainer::name(std::string const& newName) { Attr_name().setValue(newName); }

Attribute& AttrContainer::declaredAttribute(std::uint64_t token) const {
    auto const& declared = attributes_.attributes();
    if (token >= declared.size() || !declared[token])
        throwMissingAttribute();
    return *declared[token];
}

void AttrContainer::throwMissingAttribute() { throw std::out_of_range("invalid vector subscript"); }

Result AttrContainer::setName(std::string const& newName, int mode) {
    if (auto error = checkName(newName, mode))
        return error;
    auto const self = shared_from_this();
    Attr<std::string>& attribute = Attr_name();
    ChangeProbe const probe(attribute);
    attribute.setValue(newName, self, nullptr, nullptr);
    return probe.copyReason();
}

Result AttrContainer::checkName(std::string const& newName, int) const {
    if (isNameValid(newName))
        return nullptr;
    return addInfo(makeError(sourceName, __LINE__, InvalidName), "CheckedName", newName);
}

std::string AttrContainer::getDisplayName() { return getName(); }

Result AttrContainer::setDisplayName(std::string const& newName) { return setName(newName, 0); }

bool AttrContainer::isNameValid(std::string const& candidate) {
    return !candidate.empty() && std::all_of(candidate.begin(), candidate.end(), isNameCharacter);
}

bool AttrContainer::makeNameValid(std::string& candidate) {
    for (char& c : candidate) {
        auto const byte = static_cast<unsigned char>(c);
        if (!isNameCharacter(c) && !(byte >= 0x80 && isHighByteAlnum(byte)))
            c = '_';
    }
    return !candidate.empty();
}

bool AttrContainer::isNameUnique(std::string const& candidate) const {
    // In a plain container, of which nothing is overridden, a valid name can lead to a field only; most have
    // none yet when attributes are added.
    if (typeid(*this) == typeid(AttrContainer) && isNameValid(candidate))
        return getNumFields() == 0 || getField(candidate).expired();
    return inqObserver(std::optional<std::string const>(candidate)).expired();
}

std::string AttrContainer::generateUniqueName(std::string const& base) {
    std::string candidate = isNameValid(base) ? base : getClassName();
    if (isNameUnique(candidate))
        return candidate;
    auto& known = extras().uniqueNames;
    std::vector<std::string> passed{candidate};
    do {
        if (auto const further = known.find(candidate); further != known.end()) {
            passed.push_back(candidate);
            candidate = further->second;
        } else {
            if (candidate.ends_with('0'))
                passed.push_back(candidate);
            countUp(candidate);
        }
    } while (!isNameUnique(candidate));
    for (auto& name : passed)
        known.insert_or_assign(std::move(name), candidate);
    return candidate;
}

void AttrContainer::forgetNames() {
    if (extras_)
        extras_->uniqueNames.clear();
}

void AttrContainer::nameStored() {}

std::string AttrContainer::toCirroName(std::string const& candidate) {
    auto const isRefused = [this](std::string const& text) {
        auto const error = checkName(text, 0);
        return error && !error->isWarning();
    };
    if (!isRefused(candidate))
        return candidate;
    std::string safe = candidate;
    for (char& c : safe)
        if (!isNameCharacter(c))
            c = '_';
    return isRefused(safe) ? "Object" : safe;
}

Action::ExecReturn
AttrContainer::toChangeNotify(Observable& observable,
                              std::optional<std::reference_wrapper<ObservingObject>>& cause) {
    if (!dynamic_cast<Attribute*>(&observable))
        return Observer::toChangeNotify(observable, cause);
    auto const& declared = attributes_.attributes();
    if (declared.empty() || declared[0].get() != &observable)
        return Action::ExecOk;
    auto const info = observable.lookupNotifyInfo(typeid(NewValueInfo<std::string>));
    if (!info)
        return Action::ExecOk;
    std::string const current = getName();
    std::string const& proposed = static_cast<NewValueInfo<std::string> const&>(*info).getNewValue();
    if (isEqualIgnoringCase(current, proposed))
        return Action::ExecOk;
    auto error = checkName(proposed, 0);
    if (!error)
        return Action::ExecOk;
    error = addInfo(addInfo(std::move(error), "CurrentName", current), "NewName", proposed);
    observable.addNotifyInfo(std::make_shared<InfoFailed>(std::move(error)));
    return Action::ExecFailed;
}

} // namespace Zorvan::AttributeContainer
