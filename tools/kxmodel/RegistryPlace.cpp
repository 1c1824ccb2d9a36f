// SPDX-License-Identifier: MIT
#include "RegistryPlace.h"

#include "Files.h"
#include "Report.h"

#include <algorithm>
#include <limits>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

/// The path that leads on from a key; empty components are dropped, which not all operations on keys do.
std::string joined(std::string path, std::string_view below) {
    while (!below.empty()) {
        std::size_t const end = std::min(below.find('\\'), below.size());
        if (end != 0)
            path.append(path.empty() ? "" : "\\").append(below.substr(0, end));
        below.remove_prefix(std::min(end + 1, below.size()));
    }
    return path;
}

} // namespace

RegistryPlace::RegistryPlace(std::string const& key, std::optional<std::string> const& hive)
    : key_(key), hive_(hive) {
    std::size_t const end = std::min(key.find('\\'), key.size());
    root_ = RegKeys::predefinedKey(key.substr(0, end));
    if (!root_)
        throw FileError(key, "\"" + onOneLine(key.substr(0, end)) +
                                 "\" is no root of the registry; these are HKCR, HKCU, HKLM, HKU and HKCC");
    path_ = joined("", std::string_view(key).substr(end));
    key_.erase(key_.find_last_not_of('\\') + 1);
    keys_.setPrefix("", root_, false);

    if (hive_ && !RegistryFile::isSupported())
        throw FileError(*hive_, "this system has a registry of its own, which no file can stand for");
    if (!hive_ && RegistryFile::isSupported())
        throw FileError(key, "this system has no registry; --hive names the file that keeps one");
    if (hive_)
        if (auto const error = file_.attach(*hive_))
            throw FileError(*hive_, describe(*error));
}

RegistryPlace::~RegistryPlace() { file_.discard(); }

std::string RegistryPlace::nameOf(std::string const& below) const {
    return onOneLine(below.empty() ? key_ : key_ + '\\' + below);
}

RegKeys const& RegistryPlace::at(std::string const& below) {
    keys_.setPrefix(joined(path_, below));
    return keys_;
}

void RegistryPlace::make(std::vector<std::string> const& belows) {
    RegKeys keys("", root_, false);
    std::vector<std::string> made;
    auto const makeOne = [&](std::string const& path) {
        keys.setPrefix(path);
        if (path.empty() || keys.checkKey("", false) || keys.checkKey("", true))
            return true;
        if (!keys.createKey("", false))
            return false;
        made.push_back(path);
        return true;
    };
    auto const fail = [&](std::string const& name) {
        keys.setPrefix("");
        std::for_each(made.rbegin(), made.rend(), [&](std::string const& path) { keys.deleteKey(path); });
        throw FileError(name, "the key cannot be created");
    };
    for (std::size_t end = 0; end < path_.size();) {
        end = std::min(path_.find('\\', end + 1), path_.size());
        if (!makeOne(path_.substr(0, end)))
            fail(nameOf(""));
    }
    for (std::string const& below : belows)
        if (!makeOne(joined(path_, below)))
            fail(nameOf(below));
}

void RegistryPlace::commit() {
    if (!hive_)
        return;
    if (auto const error = file_.detach())
        throw FileError(*hive_, describe(*error));
}

std::string StoredValue::whyUnreadable() const {
    if (size > maxTextSize)
        return "its text has more than 511 characters";
    if (!isTerminated)
        return "its data is no text that a null character ends";
    return size == 2 ? "its text is empty" : "";
}

std::optional<StoredValue> storedValue(RegKeys const& key, std::string const& name) {
    constexpr auto noType = std::numeric_limits<unsigned long>::max();
    unsigned char data[StoredValue::maxTextSize] = {};
    StoredValue value{noType, sizeof data, false};
    bool const isRead = key.queryKey(name, data, &value.size, &value.type);
    if (!isRead && value.type == noType)
        return std::nullopt;
    value.isTerminated = isRead && value.size >= 2 && value.size % 2 == 0 && data[value.size - 1] == 0 &&
                         data[value.size - 2] == 0;
    return value;
}

} // namespace kxmodel
