// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/Export.h>

#include <iosfwd>
#include <memory>

namespace Zorvan::AttributeContainer {

class AttrContainer;
class WriteContextBase;

/// Writes a container tree as a plain XML document for other programs; the library does not read it back.
///
///     auto error = XMLSerialization::to(out, *root, std::make_shared<WriteContextBase>());
///
/// Each container is an element named after it, with its class as "type", its name as a field as
/// "fieldname", its fields in an element "fields" and its attributes in an element "attrs":
///
///     <root type="AttrContainer"><fields>
///     </fields>
///     <attrs>
///     <Name type="String">"root"</Name>
///     <count type="int">5</count>
///     </attrs>
///     </root>
///
/// Names are written as they are, so that the document is well-formed when they are XML names and no text
/// holds a control character that XML forbids. A field that is its own ancestor is left out, one that
/// is shared is written in each of its places: exponentially much where those of every level are shared.
class KX_ATTRIBUTECONTAINER_API XMLSerialization {
public:
    /// Writes the document of `container` and its fields. The context decides with `writeOnlyMarked` and
    /// `writeOnlyMarkedObjects` what is left out; its format is `ModelFormat::Xml` from then on, so that
    /// threads do not share one. Null on success; `NoContext` without a context, `StreamFailure` when the
    /// stream fails or the tree has more than 512 levels, else the error (not a warning) of the attribute
    /// that could not be written. A document that was not written whole is left as far as it got.
    [[nodiscard]] static Result to(std::ostream& out, AttrContainer const& container,
                                   std::shared_ptr<WriteContextBase> context);
    /// The same, and each Object has an element "children" with its child objects behind "attrs".
    [[nodiscard]] static Result toWithChildren(std::ostream& out, AttrContainer const& container,
                                               std::shared_ptr<WriteContextBase> context);
};

} // namespace Zorvan::AttributeContainer
