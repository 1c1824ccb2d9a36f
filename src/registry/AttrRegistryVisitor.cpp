// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttrRegistryVisitor.h>

#include <AttributeContainer/WtAttrContainer.h>
#include <AttributeContainer/WtAttribute.h>

#include "containers/ContainerAccess.h"
#include "registry/KeyPath.h"

#include <cstddef>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

/// The bit in the category of attributes that do not belong into the registry.
constexpr int categoryLeftOut = 0x20;

/// Switches an attribute's notification off, and on again at its end.
class QuietAttribute {
public:
    QuietAttribute(Attribute& attribute, bool quiet)
        : attribute_(quiet && attribute.isNotificationEnabled() ? &attribute : nullptr) {
        if (attribute_)
            attribute_->setNotificationEnabled(false);
    }
    QuietAttribute(QuietAttribute const&) = delete;
    QuietAttribute& operator=(QuietAttribute const&) = delete;
    ~QuietAttribute() {
        if (attribute_)
            attribute_->setNotificationEnabled(true);
    }

private:
    Attribute* attribute_;
};

} // namespace

// --- AttrRegistryVisitor

AttrRegistryVisitor::AttrRegistryVisitor(RegKeysArray const& baseKeys, bool writes, unsigned int firstLevel,
                                         unsigned int maxLevel)
    : AttributeVisitor(firstLevel, maxLevel), writes_(writes) {
    for (auto const& baseKey : baseKeys) {
        keys_.push_back(baseKey ? baseKey->createFrom(writes) : nullptr);
        basePrefixes_.push_back(keys_.back() ? keys_.back()->getPrefix() : std::string());
    }
}

AttrRegistryVisitor::~AttrRegistryVisitor() = default;

VisitorCore::VisitResult AttrRegistryVisitor::visit(AttrContainer& container) {
    try {
        // A walk that ended with an exception somewhere else has left its frames.
        if (getHierLevel() == 0 && !frames_.empty())
            restart();
        if (!enter(container))
            return Ignored;
        if (updatePaths())
            return Continue;
        frames_.pop_back();
        updatePaths();
        return SkipChildren;
    } catch (...) {
        restart();
        throw;
    }
}

VisitorCore::VisitResult AttrRegistryVisitor::visitDone(AttrContainer&) {
    if (!frames_.empty())
        frames_.pop_back();
    return updatePaths() ? Continue : SkipChildren;
}

bool AttrRegistryVisitor::isLeftOut(Attribute const& attribute) {
    auto const location = attribute.getLocation();
    return location && (location->get().getAttrCategory(attribute) & categoryLeftOut) != 0;
}

void AttrRegistryVisitor::restart() {
    frames_.clear();
    for (std::size_t i = 0; i < keys_.size(); ++i)
        if (keys_[i])
            keys_[i]->setPrefix(basePrefixes_[i]);
}

/// Adds the frame of a container; false when its key name is taken.
bool AttrRegistryVisitor::enter(AttrContainer& container) {
    Frame frame{"", ContainerAccess::shared(container), {}};
    if (getHierLevel() > 0 && !frames_.empty()) {
        auto const parent = frames_.back().container;
        frame.keyName = parent->getFieldRegistryPrefix(container).value_or("");
        if (!frames_.back().usedKeyNames.insert(foldKeyPath(frame.keyName)).second)
            return false;
    }
    frames_.push_back(std::move(frame));
    return true;
}

/// Points the keys to the current container; false when there are none, or a key cannot be created.
bool AttrRegistryVisitor::updatePaths() {
    std::string below;
    for (std::size_t i = 1; i < frames_.size(); ++i)
        below.append(below.empty() ? "" : "\\").append(frames_[i].keyName);
    bool good = !keys_.empty();
    for (std::size_t i = 0; i < keys_.size(); ++i) {
        if (!keys_[i])
            continue;
        auto const path = joinKeyPath(basePrefixes_[i], below);
        keys_[i]->setPrefix(path);
        if (writes_ && !path.empty() && !keys_[i]->createKey("", false))
            good = false;
    }
    return good;
}

// --- AttrReadRegistry

AttrReadRegistry::AttrReadRegistry(RegKeysArray const& baseKeys, bool notify, unsigned int firstLevel,
                                   unsigned int maxLevel)
    : AttrRegistryVisitor(baseKeys, false, firstLevel, maxLevel), notify_(notify) {}

AttrReadRegistry::AttrReadRegistry(std::shared_ptr<RegKeys const> baseKey, bool notify,
                                   unsigned int firstLevel, unsigned int maxLevel)
    : AttrReadRegistry(RegKeysArray{std::move(baseKey)}, notify, firstLevel, maxLevel) {}

AttrReadRegistry::~AttrReadRegistry() = default;

VisitorCore::VisitResult AttrReadRegistry::visit(Attribute& attribute) {
    try {
        if (isLeftOut(attribute))
            return Continue;
        auto const name = attribute.getName();
        std::string text;
        for (auto const& key : keys()) {
            if (!key)
                continue;
            if (auto found = key->queryKey(name); !found.empty())
                text = std::move(found);
        }
        if (text.empty())
            return Continue;
        auto const held = attribute.weak_from_this().lock(); // Its observers may do anything.
        QuietAttribute const quiet(attribute, !notify_);
        attribute.assignFrom(text, nullptr, nullptr, nullptr);
        ++numRead_;
        return Continue;
    } catch (...) {
        restart();
        throw;
    }
}

// --- AttrWriteRegistry

AttrWriteRegistry::AttrWriteRegistry(RegKeysArray const& baseKeys, unsigned int firstLevel,
                                     unsigned int maxLevel)
    : AttrRegistryVisitor(baseKeys, true, firstLevel, maxLevel) {}

AttrWriteRegistry::AttrWriteRegistry(std::shared_ptr<RegKeys const> baseKey, unsigned int firstLevel,
                                     unsigned int maxLevel)
    : AttrWriteRegistry(RegKeysArray{std::move(baseKey)}, firstLevel, maxLevel) {}

AttrWriteRegistry::~AttrWriteRegistry() = default;

VisitorCore::VisitResult AttrWriteRegistry::visit(Attribute& attribute) {
    try {
        if (isLeftOut(attribute))
            return Continue;
        auto const name = attribute.getName();
        auto const text = attribute.getValueAsText();
        VisitResult result = Ignored;
        for (auto const& key : keys()) {
            if (!key)
                continue;
            key->setKey(name, text);
            result = Continue;
        }
        return result;
    } catch (...) {
        restart();
        throw;
    }
}

} // namespace Zorvan::AttributeContainer
