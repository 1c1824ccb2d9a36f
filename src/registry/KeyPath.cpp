// SPDX-License-Identifier: MIT
#include "registry/KeyPath.h"

#include "platform/RegistryNames.h"

#include <algorithm>

namespace Zorvan::AttributeContainer {

std::string joinKeyPath(std::string_view base, std::string_view name) {
    std::string path;
    path.reserve(base.size() + 1 + name.size());
    for (std::string_view rest : {base, name})
        while (!rest.empty()) {
            std::string_view const component = rest.substr(0, rest.find('\\'));
            rest.remove_prefix(std::min(component.size() + 1, rest.size()));
            if (component.empty())
                continue;
            if (!path.empty())
                path += '\\';
            path += component;
        }
    return path;
}

std::string foldKeyPath(std::string_view path) {
    return toUtf8(foldRegistryName(toUtf16(joinKeyPath(path, ""))));
}

} // namespace Zorvan::AttributeContainer
