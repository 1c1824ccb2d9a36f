// SPDX-License-Identifier: MIT
#pragma once

#include "observation/ObservationAccess.h"

#include <AttributeContainer/WtAttribute.h>

#include <memory>
#include <optional>

namespace Zorvan::AttributeContainer {

/// Learns whether the next change of an attribute, made inside the scope, is refused, and why.
class ChangeProbe {
public:
    explicit ChangeProbe(Attribute const& attribute);
    ~ChangeProbe();
    ChangeProbe(ChangeProbe const&) = delete;
    ChangeProbe& operator=(ChangeProbe const&) = delete;

    bool isRefused() const { return reason_ != nullptr; }
    /// Why the change was refused, as a copy; empty when it was not.
    Result copyReason() const;

private:
    friend class AttributeChange;

    Attribute const& attribute_;
    ChangeProbe* enclosing_;
    bool isTaken_ = false;
    std::shared_ptr<InfoFailed const> reason_;
};

/// One change of an attribute, from before its first observer is asked to after the last one was told.
///
/// It keeps the attribute alive. A change that begins while the pre-observers of the same attribute are asked
/// sets the proposed value and the refusal of that outer change aside and restores them when it ends, so that
/// a refused value is never stored; one that begins while the post-observers are told is not refused by a
/// refusal that did not count (a value given as text). When the outermost change of an attribute ends, in
/// whatever way, no expiring info of the attribute is left.
class AttributeChange {
public:
    /// A change to a new value, or one that only tells.
    enum class Kind { NewValue, Touch };

    AttributeChange(Attribute& attribute, Kind kind, NotifyingThread& thread = notifyingThread)
        : attribute_(attribute), thread_(thread) {
        bool const isWalking = ObservationAccess::isWalking(attribute);
        // What a change of this attribute opens on its way is a part of it, which holds the attribute
        // already.
        bool const isPart = isOpen(attribute, thread);
        isOutermost_ = !isWalking && !isPart;
        if (!isPart)
            self_ = ObservationAccess::hold(attribute);
        if (isOutermost_ && self_)
            held_.emplace(attribute, thread);
        if (thread.innermostProbe)
            takeProbe(*thread.innermostProbe);
        if (isWalking && kind != Kind::Touch)
            setOuterAside();
    }
    ~AttributeChange() {
        if (isOutermost_ && !held_ && thread_.notes)
            attribute_.removeNotifyInfos(false);
    }
    AttributeChange(AttributeChange const&) = delete;
    AttributeChange& operator=(AttributeChange const&) = delete;

    /// Whether a change of the attribute has to open such a scope: somebody may be told, or infos may be
    /// there.
    [[gnu::always_inline]] static bool isNeeded(Attribute const& attribute,
                                                NotifyingThread const& thread = notifyingThread) {
        return ObservationAccess::hasPreObservers(attribute) ||
               ObservationAccess::hasPostObservers(attribute) || thread.notes != nullptr;
    }

    /// Whether the innermost change that runs on the calling thread is one of the attribute, of which
    /// touching the attribute is a part then.
    static bool isOpen(Attribute const& attribute, NotifyingThread const& thread) {
        return thread.held == &attribute;
    }

    /// The calling thread's.
    NotifyingThread& thread() const { return thread_; }

    /// The change was refused, for the reason that stands in `info`.
    void setRefused(std::shared_ptr<ObserverInfo> const& info) const;

private:
    void takeProbe(ChangeProbe& probe);
    void setOuterAside();

    Attribute& attribute_;
    NotifyingThread& thread_;               ///< The calling thread's.
    std::shared_ptr<ObservingObject> self_; ///< Empty for an attribute that is not owned by a shared pointer.
    ChangeProbe* probe_ = nullptr;
    bool isOutermost_;
    std::optional<HeldObservable> held_;
    std::optional<NotifyInfoScope> outerInfos_;
};

} // namespace Zorvan::AttributeContainer
