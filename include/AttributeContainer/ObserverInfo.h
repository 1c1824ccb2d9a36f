// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/Export.h>

#include <string>

namespace Zorvan::AttributeContainer {

/// A note that an observable carries during one change (Observable::addNotifyInfo): at most one of each
/// dynamic type, visible on the thread that attached it. An expiring one is dropped when the outermost
/// post-notification of its observable ends; any other stays until it is removed.
class KX_ATTRIBUTECONTAINER_API ObserverInfo {
public:
    ObserverInfo() = default;
    ObserverInfo(ObserverInfo const&) = default;
    ObserverInfo& operator=(ObserverInfo const&) = default;

    /// "ObserverInfo".
    static std::string const& getStaticClassName();
    /// The name of the object's class.
    virtual std::string const& getClassName() const;
    virtual ~ObserverInfo();

    /// Chooses whether the note goes by itself when the change ends.
    void setExpire(bool expire) { expire_ = expire; }
    /// Whether the note goes by itself when the change ends; true on construction.
    bool willExpire() const { return expire_; }

private:
    bool expire_ = true;
};

/// The refusal of a change: a pre-observer attaches it to the observable, and its presence after the
/// pre-notification is what refuses the change.
class KX_ATTRIBUTECONTAINER_API InfoFailed : public ObserverInfo {
public:
    /// Takes the reason of the refusal.
    explicit InfoFailed(Result reason);
    ~InfoFailed() override;

    /// "InfoFailed".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    /// Why the change was refused.
    Result error;
};

} // namespace Zorvan::AttributeContainer
