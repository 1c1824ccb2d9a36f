// SPDX-License-Identifier: MIT
#include "attributes/AttributeChange.h"

#include "attributes/AttributeAccess.h"
#include "foundation/MakeError.h"

#include <initializer_list>
#include <typeindex>

namespace Zorvan::AttributeContainer {

namespace {

constinit thread_local ChangeProbe* innermostProbe = nullptr;

} // namespace

ChangeProbe::ChangeProbe(Attribute const& attribute) : attribute_(attribute), enclosing_(innermostProbe) {
    innermostProbe = this;
}

ChangeProbe::~ChangeProbe() { innermostProbe = enclosing_; }

Result ChangeProbe::copyReason() const {
    if (!reason_)
        return nullptr;
    if (!reason_->error)
        return makeError("WtAttribute", __LINE__, WriteProtected); // Refused without a reason.
    return std::make_unique<Result::element_type>(*reason_->error);
}

AttributeChange::AttributeChange(Attribute& attribute, Kind kind)
    : attribute_(attribute), self_(attribute.weak_from_this().lock()),
      isOutermost_(!ObservationAccess::isWalking(attribute)) {
    if (innermostProbe && !innermostProbe->isTaken_ && &innermostProbe->attribute_ == &attribute) {
        probe_ = innermostProbe;
        probe_->isTaken_ = true;
    }
    if (isOutermost_ || kind == Kind::Touch)
        return;
    std::type_index const refusal = typeid(InfoFailed);
    std::type_index const proposal = AttributeAccess::proposedValueType(attribute);
    if (ObservationAccess::isPreWalking(attribute))
        outerInfos_.emplace(attribute, std::initializer_list<std::type_index>{proposal, refusal});
    else
        outerInfos_.emplace(attribute, std::initializer_list<std::type_index>{refusal});
}

AttributeChange::~AttributeChange() {
    if (isOutermost_ && ObservationAccess::hasNotifyInfosOnThread())
        attribute_.removeNotifyInfos(false);
}

void AttributeChange::setRefused(std::shared_ptr<ObserverInfo> const& info) const {
    if (probe_)
        probe_->reason_ =
            std::static_pointer_cast<InfoFailed const>(std::shared_ptr<ObserverInfo const>(info));
}

} // namespace Zorvan::AttributeContainer
