// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

class Object;

/// The children of an Object, owned, in the order in which they were added. A reference that is handed out is
/// valid until a child is added or removed; hold a copy of the pointer beyond that. Look-ups by name,
/// identity and position take no search, however long the list is.
class KX_ATTRIBUTECONTAINER_API ChildList {
public:
    ChildList();
    ~ChildList();
    ChildList(ChildList const&) = delete;
    ChildList& operator=(ChildList const&) = delete;

    std::uint64_t getNumChildren() const;
    /// The child at an index; a static empty pointer at or beyond the count.
    std::shared_ptr<Object> const& getChild(std::uint64_t index) const;
    /// The first child of a name, ASCII letter case ignored; a static empty pointer when there is none or the
    /// name is empty.
    std::shared_ptr<Object> const& inqChild(std::string const& name) const;
    /// The position of this very child, or nothing.
    std::optional<std::uint64_t> lookupChild(Object const& child) const;

private:
    friend class Object;
    class NameIndex;
    class Positions;
    class Slots;

    void add(std::shared_ptr<Object> child);
    std::shared_ptr<Object> takeOut(std::uint64_t index);
    std::shared_ptr<Object> takeOut(Object const& child);
    void nameChanged(Object& child) noexcept;

    std::unique_ptr<Slots> slots_; ///< Made for the first child: most objects have none.
};

} // namespace Zorvan::AttributeContainer
