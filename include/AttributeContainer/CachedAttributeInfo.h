// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ObserverInfo.h>

#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

class Attribute;

/// Stages a value for an attribute in another attribute of the same type.
///
/// Attach it with `addNotifyInfo` and set the thread's pending switch; until the attribute's next change on
/// this thread, reads of the attribute yield the staged value:
///
///     attribute->addNotifyInfo(std::make_shared<CachedAttributeInfo>(staged));
///     Attribute::setIsCachedAttributePending(true);
///     attribute->touch(nullptr, nullptr); // commits: stores the staged value and tells the post-observers
///
/// `setValue` and `assignFrom` drop the staged value instead. A cached attribute of another type is ignored
/// by reads and dropped by a commit. The info does not expire.
class KX_ATTRIBUTECONTAINER_API CachedAttributeInfo : public ObserverInfo {
public:
    /// Shares ownership of `cached`, which may be empty.
    explicit CachedAttributeInfo(std::shared_ptr<Attribute> cached);
    ~CachedAttributeInfo() override;
    CachedAttributeInfo(CachedAttributeInfo const& other);
    /// Take the other's expire setting and attribute; a move leaves the other without one.
    CachedAttributeInfo& operator=(CachedAttributeInfo const& other);
    CachedAttributeInfo& operator=(CachedAttributeInfo&& other) noexcept;

    /// "CachedAttributeInfo".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    /// The attribute that holds the staged value.
    std::shared_ptr<Attribute> getCachedAttribute();

private:
    std::shared_ptr<Attribute> cached_;
};

} // namespace Zorvan::AttributeContainer
