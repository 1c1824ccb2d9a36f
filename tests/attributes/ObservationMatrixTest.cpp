// SPDX-License-Identifier: MIT
#include "attributes/ObservationScene.h"

namespace Zorvan::AttributeContainer::Testing {

TEST(ObservationMatrix, WhatHandlersDoHasItsEffectAndNoOther) { expectObservationMatrix(); }

} // namespace Zorvan::AttributeContainer::Testing
