// SPDX-License-Identifier: MIT
#include "Placeholder.h"

#include "Sharing.h"

#include <AttributeContainer/FallbackObject.h>
#include <AttributeContainer/UnknownAttrContainer.h>
#include <AttributeContainer/WriteContextBase.h>

#include <sstream>
#include <stdexcept>
#include <utility>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

bool isPlaceholder(AttrContainer const& container) {
    return dynamic_cast<IFallbackObject const*>(&container) ||
           dynamic_cast<UnknownAttrContainer const*>(&container);
}

std::string const& documentClassOf(AttrContainer const& container) {
    if (auto const* object = dynamic_cast<IFallbackObject const*>(&container))
        return object->getFallbackClassName();
    if (auto const* unknown = dynamic_cast<UnknownAttrContainer const*>(&container))
        return unknown->getTypeName();
    return container.getClassName();
}

std::size_t numBytesKept(AttrContainer const& container) {
    if (auto const* object = dynamic_cast<FallbackObject const*>(&container))
        return object->getHeaderText().size() + object->getBodyText().size();
    if (auto const* unknown = dynamic_cast<UnknownAttrContainer const*>(&container))
        return unknown->getTextBefore().size() + unknown->getTextBehind().size();
    return 0;
}

bool isKeptAsText(AttrContainer const& container) {
    if (auto const* object = dynamic_cast<FallbackObject const*>(&container))
        return !object->isBodyParsed();
    auto const* unknown = dynamic_cast<UnknownAttrContainer const*>(&container);
    return unknown && !unknown->hasContainerPart();
}

std::string textOfPlaceholder(AttrContainer& container) {
    std::ostringstream out;
    if (canBeUnshared(container)) {
        auto const failure = container.writeTo(out, std::make_shared<WriteContextBase>());
        if (!failure || failure->isWarning())
            return std::move(out).str();
    }
    throw std::runtime_error("\"" + container.getName() + "\" of the unknown class \"" +
                             documentClassOf(container) + "\" cannot be written as text");
}

} // namespace kxmodel
