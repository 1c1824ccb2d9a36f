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

void AttributeChange::takeProbe(ChangeProbe& probe) {
    if (probe.isTaken_ || &probe.attribute_ != &attribute_)
        return;
    probe_ = &probe;
    probe.isTaken_ = true;
}

void AttributeChange::setOuterAside() {
    std::type_index const refusal = typeid(InfoFailed);
    std::type_index const proposal = AttributeAccess::proposedValueType(attribute_);
    if (ObservationAccess::isPreWalking(attribute_))
        outerInfos_.emplace(attribute_, std::initializer_list<std::type_index>{proposal, refusal});
    else
        outerInfos_.emplace(attribute_, std::initializer_list<std::type_index>{refusal});
}

void AttributeChange::setRefused(std::shared_ptr<ObserverInfo> const& info) const {
    if (probe_)
        probe_->reason_ =
            std::static_pointer_cast<InfoFailed const>(std::shared_ptr<ObserverInfo const>(info));
}

} // namespace Zorvan::AttributeContainer
