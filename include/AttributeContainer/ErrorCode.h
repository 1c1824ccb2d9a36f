// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <ErrorHandling/ErrorWithCode.h>

#include <cstdint>
#include <memory>

namespace Zorvan::AttributeContainer {

/// Why an operation failed, or what it warns of.
enum ErrorCode : std::uint32_t {
    UnknownKeyword = 0,       ///< a reader met a keyword that its block does not know
    StreamFailure = 1,        ///< the stream is no longer good
    NoContext = 2,            ///< no read or write context was given
    ObserverUnresolved = 3,   ///< an observer link has no action that is known
    TargetMissing = 4,        ///< what the operation works on is not there
    ContentSkipped = 5,       ///< warning: content was read that no object could take
    NotMarked = 6,            ///< warning: only marked attributes are written, and this one is not
    AttributeNotCreated = 7,  ///< no attribute can be made of that type
    UnknownContent = 8,       ///< warning: a container body held keywords that were not understood
    InvalidName = 9,          ///< a name was refused; see the infos "CheckedName", "CurrentName", "NewName"
    WriteProtected = 10,      ///< a write-protected attribute was to be changed
    NotSupported = 11,        ///< the class does not offer the operation
    UnknownClass = 12,        ///< warning: the class of a child is unknown, a placeholder stands in for it
    ObjectNotCreated = 13,    ///< no object could be made for a child
    ObjectContentUnknown = 14 ///< the container part of an object was not understood
};

/// What operations that can fail return: empty means success.
using Result = std::unique_ptr<ErrorHandling::ErrorWithCode<ErrorCode>>;

/// True for the codes after which an enclosing operation goes on; false for values outside the enumeration.
[[nodiscard]] constexpr bool isWarning(ErrorCode const& code) noexcept {
    return code == ContentSkipped || code == NotMarked || code == UnknownContent || code == UnknownClass;
}

/// The enumerator's name, "unknown" for values outside the enumeration. Never null; the text lives for ever.
[[nodiscard]] KX_ATTRIBUTECONTAINER_API char const* errorCodeName(ErrorCode code) noexcept;

} // namespace Zorvan::AttributeContainer
