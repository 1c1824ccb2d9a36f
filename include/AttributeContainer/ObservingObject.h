// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <memory>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

/// Root of everything that takes part in observation: of what is watched (Observable) and of what watches
/// (Observer). Identity is the object itself; instances are not copied.
class KX_ATTRIBUTECONTAINER_API ObservingObject : public std::enable_shared_from_this<ObservingObject> {
public:
    ObservingObject() = default;
    ObservingObject(ObservingObject const&) = delete;
    ObservingObject& operator=(ObservingObject const&) = delete;
    virtual ~ObservingObject();

    /// Resolves an object path ("/"-separated) from this object. Empty when it names nothing, or nothing that
    /// is owned by a shared pointer.
    virtual std::weak_ptr<ObservingObject> inqObserver(std::optional<std::string const> const& path) = 0;
    /// The same for a constant object.
    virtual std::weak_ptr<ObservingObject const>
    inqObserver(std::optional<std::string const> const& path) const = 0;
};

} // namespace Zorvan::AttributeContainer
