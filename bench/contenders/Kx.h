// SPDX-License-Identifier: MIT
#pragma once

#include "../Text.h"
#include "../Workload.h"

#include <AttributeContainer/AttributeContainer.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace bench {

namespace kx = Zorvan::AttributeContainer;

/// The values of the node in the library's types.
inline Zorvan::Vec3d<double> vectorOf(std::array<double, 3> const& position) {
    return Zorvan::Vec3d<double>(position);
}
inline std::array<double, 3> arrayOf(Zorvan::Vec3d<double> const& vector) {
    return {vector.x(), vector.y(), vector.z()};
}
inline Id arrayOf(Zorvan::uuids::uuid const& uuid) {
    Id id;
    std::copy(uuid.begin(), uuid.end(), id.begin());
    return id;
}

/// The library tells of success by an empty result.
inline void expectGood(kx::Result const& result) {
    if (result)
        throw std::runtime_error(std::string("the library says ") + errorCodeName(result->getCode()));
}

/// The text of a tree in a rendering.
inline std::string writeKx(kx::AttrContainer& root, kx::ModelFormat::Format rendering) {
    std::ostringstream out;
    expectGood(root.writeTo(out, std::make_shared<kx::WriteContextBase>(rendering)));
    return std::move(out).str();
}

/// Fills a root from what writeKx wrote.
inline void readKx(kx::AttrContainer& root, std::string_view document, kx::ModelFormat::Format rendering) {
    ViewStream in(document);
    auto const context = std::make_shared<kx::ReadContextBase>();
    context->setFormat(rendering);
    expectGood(root.readFrom(in, context));
}

/// The value of an attribute that is found by its name.
template <class T>
T const& valueOf(kx::AttrContainer const& container, std::string const& name) {
    auto const attribute = container.getAttr(name).lock();
    auto const* const typed = dynamic_cast<kx::Attr<T> const*>(attribute.get());
    if (!typed)
        throw std::runtime_error("there is no attribute " + name);
    return typed->getValue();
}

} // namespace bench
