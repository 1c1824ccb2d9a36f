// SPDX-License-Identifier: MIT
#pragma once

// Everything that the library offers.

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/ArrayContainer.h>
#include <AttributeContainer/AttrContComparer.h>
#include <AttributeContainer/AttrContMerger.h>
#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/AttributePropagationObserver.h>
#include <AttributeContainer/AttributeWriteProtection.h>
#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/BlockUpdateObservers.h>
#include <AttributeContainer/CachedAttributeInfo.h>
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>
#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/FallbackObject.h>
#include <AttributeContainer/FieldFactory.h>
#include <AttributeContainer/InfoStringMap.h>
#include <AttributeContainer/KeyTable.h>
#include <AttributeContainer/ModelFormat.h>
#include <AttributeContainer/ModelInFormat.h>
#include <AttributeContainer/ModelOutFormat.h>
#include <AttributeContainer/NewValueInfo.h>
#include <AttributeContainer/Object.h>
#include <AttributeContainer/Observable.h>
#include <AttributeContainer/Observer.h>
#include <AttributeContainer/ObserverInfo.h>
#include <AttributeContainer/ObserverPath.h>
#include <AttributeContainer/ObserverRelationTable.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/ReferenceDictionary.h>
#include <AttributeContainer/SharedInstanceCollection.h>
#include <AttributeContainer/Statistics.h>
#include <AttributeContainer/Time.h>
#include <AttributeContainer/UnknownAttrContainer.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueText.h>
#include <AttributeContainer/ValueTypes.h>
#include <AttributeContainer/Version.h>
#include <AttributeContainer/Visitors.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WriteToScope.h>
#include <AttributeContainer/WtAttrContainer.h>
#include <AttributeContainer/XMLSerialization.h>
