// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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

    void add(std::shared_ptr<Object> child);
    std::shared_ptr<Object> takeOut(std::uint64_t index);
    std::shared_ptr<Object> takeOut(Object const& child);
    void nameChanged(Object& child) noexcept;
    void compact();
    std::shared_ptr<Object> takeOutSlot(std::size_t slot);
    std::optional<std::size_t> findSlot(Object const& child) const;
    std::size_t slotAt(std::uint64_t index) const;
    Positions& positions() const;

    /// Removal empties a slot; when most slots are empty the list is compacted, so that removing children one
    /// after the other stays linear.
    std::vector<std::shared_ptr<Object>> slots_;
    std::size_t firstSlot_ = 0; ///< Those before it are empty.
    std::size_t numEmpty_ = 0;  ///< Empty slots from firstSlot_ on.
    /// Made when a position is asked for in a list with gaps, gone with the next compaction.
    mutable std::unique_ptr<Positions> positions_;
    mutable std::unique_ptr<NameIndex> names_;
};

} // namespace Zorvan::AttributeContainer
