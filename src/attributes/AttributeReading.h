// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/ModelFormat.h>

namespace Zorvan::AttributeContainer {

class AreaReader;

/// What a reader of documents does with the values of attributes whose type it knows by number.
///
/// `read` is an attribute that AttributeAccess::make made of that type as a custom one.
class AttributeReading {
public:
    /// Reads a value into an attribute that nobody knows of. False: it has to be read from the stream itself;
    /// any value may stand in the attribute then.
    static bool readValue(AttrType type, Attribute& read, AreaReader& in, ModelFormat::Format format);
    /// Gives an attribute that nobody knows of the initial value of its type.
    static void resetValue(AttrType type, Attribute& read);
    /// Gives the value, which `read` need not keep, to an attribute of the library's own classes and the same
    /// type, when nobody would be told and nothing is attached on the thread. False, and nothing has
    /// happened: it is no such attribute.
    static bool takeValue(AttrType type, Attribute& existing, Attribute& read);
};

} // namespace Zorvan::AttributeContainer
