// SPDX-License-Identifier: MIT
#include "attributes/AttributeChange.h"

#include "attributes/AttributeAccess.h"
#include "foundation/MakeError.h"

#include <initializer_list>
#include <typeindex>
#include <utility>

namespace Zorvan::AttributeContainer {

ChangeProbe::ChangeProbe(Attribute const& attribute)
    : attribute_(attribute), enclosing_(std::exchange(notifyingThread.innermostProbe, this)) {}

ChangeProbe::~ChangeProbe() { notifyingThread.innermostProbe = enclosing_; }

Result ChangeProbe::copyReason() const {
    if (!reason_)
        return nullptr;
    if (!reason_->error)
        return makeError("WtAttribute", __LINE__, WriteProtected); // Refused without a reason.
    return std::make_unique<Result::element_type>(*reason_->error);
}

AttributeChange::AttributeChange(Attribute& attribute, Kind kind, NotifyingThread& thread)
    : attribute_(attribute) {
    bool const isWalking = ObservationAccess::isWalking(attribute);
    // What a change of this attribute opens on its way is a part of it, which holds the attribute already.
    bool const isPart = isOpen(attribute, thread);
    isOutermost_ = !isWalking && !isPart;
    if (!isPart)
        self_ = ObservationAccess::hold(attribute);
    if (isOutermost_ && self_)
        held_.emplace(attribute, thread);
    ChangeProbe* const probe = thread.innermostProbe;
    if (probe && !probe->isTaken_ && &probe->attribute_ == &attribute) {
        probe_ = probe;
        probe_->isTaken_ = true;
    }
    if (!isWalking || kind == Kind::Touch)
        return;
    std::type_index const refusal = typeid(InfoFailed);
    std::type_index const proposal = AttributeAccess::proposedValueType(attribute);
    if (ObservationAccess::isPreWalking(attribute))
        outerInfos_.emplace(attribute, std::initializer_list<std::type_index>{proposal, refusal});
    else
        outerInfos_.emplace(attribute, std::initializer_list<std::type_index>{refusal});
}

AttributeChange::~AttributeChange() {
    if (isOutermost_ && !held_ && ObservationAccess::hasNotifyInfosOnThread())
        attribute_.removeNotifyInfos(false);
}

void AttributeChange::setRefused(std::shared_ptr<ObserverInfo> const& info) const {
    if (probe_)
        probe_->reason_ =
            std::static_pointer_cast<InfoFailed const>(std::shared_ptr<ObserverInfo const>(info));
}

} // namespace Zorvan::AttributeContainer
