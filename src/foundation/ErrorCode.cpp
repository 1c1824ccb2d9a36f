// SPDX-License-Identifier: MIT
#include <AttributeContainer/ErrorCode.h>

namespace Zorvan::AttributeContainer {

char const* errorCodeName(ErrorCode code) noexcept {
    switch (code) {
    case UnknownKeyword:
        return "UnknownKeyword";
    case StreamFailure:
        return "StreamFailure";
    case NoContext:
        return "NoContext";
    case ObserverUnresolved:
        return "ObserverUnresolved";
    case TargetMissing:
        return "TargetMissing";
    case ContentSkipped:
        return "ContentSkipped";
    case NotMarked:
        return "NotMarked";
    case AttributeNotCreated:
        return "AttributeNotCreated";
    case UnknownContent:
        return "UnknownContent";
    case InvalidName:
        return "InvalidName";
    case WriteProtected:
        return "WriteProtected";
    case NotSupported:
        return "NotSupported";
    case UnknownClass:
        return "UnknownClass";
    case ObjectNotCreated:
        return "ObjectNotCreated";
    case ObjectContentUnknown:
        return "ObjectContentUnknown";
    }
    return "unknown";
}

} // namespace Zorvan::AttributeContainer
