// SPDX-License-Identifier: MIT
#include "containers/KeptText.h"

#include "foundation/MakeError.h"
#include "serialization/RawText.h"

#include <ostream>
#include <string_view>
#include <utility>

namespace Zorvan::AttributeContainer {

Result writeKeptText(std::ostream& out, std::string const& text, ModelFormat::Format from,
                     ModelFormat::Format to) {
    if (text.empty())
        return nullptr;
    std::string translated;
    std::string_view content = text;
    bool const isToText = to == ModelFormat::Text;
    if (isToText != (from == ModelFormat::Text)) {
        auto result = translateRawText(text, from, isToText ? ModelFormat::Text : ModelFormat::XmlV2);
        if (!result)
            return addInfo(makeError("FallbackObject", __LINE__, StreamFailure), "Description",
                           "Kept content has a class name that is no XML name");
        translated = std::move(*result);
        content = translated;
    }
    if (isToText) {
        if (content.ends_with('\n'))
            content.remove_suffix(1);
        // Those that stayed would belong to the line end when this is read again.
        content = content.substr(0, content.find_last_not_of('\r') + 1);
        out.put('\n');
    }
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    return nullptr;
}

} // namespace Zorvan::AttributeContainer
