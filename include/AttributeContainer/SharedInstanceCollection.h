// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/Export.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

class ReadContextBase;
class WriteContextBase;

/// The instance ids of the containers that were met more than once in a write; written behind the document,
/// or beside it, they announce to a ReferenceDictionary what it has to resolve.
class KX_ATTRIBUTECONTAINER_API SharedInstanceCollection {
public:
    SharedInstanceCollection();
    SharedInstanceCollection(SharedInstanceCollection const&) = default;
    SharedInstanceCollection& operator=(SharedInstanceCollection const&) = default;

    /// "SharedInstanceCollection".
    static std::string const& getStaticClassName();
    /// The static class name of the most derived class.
    virtual std::string const& getClassName() const;
    virtual ~SharedInstanceCollection();

    /// Writes the block "SharedInstanceCollection". StreamFailure when the stream is not good afterwards.
    [[nodiscard]] virtual Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context);
    /// Replaces the ids by those of a block that writeTo() wrote, opener included or consumed already. Leaves
    /// the block's closing "}" current for the reader around it. UnknownKeyword at anything else,
    /// StreamFailure when the ids do not parse or the input ends inside the block.
    [[nodiscard]] virtual Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context);
    /// Replaces `ids` by the collection's, in ascending order.
    virtual void copyToVector(std::vector<std::uint64_t>& ids) const;

    /// Adds an id, which may be there already.
    void insert(std::uint64_t id) { ids_.insert(id); }

private:
    std::set<std::uint64_t> ids_;
};

} // namespace Zorvan::AttributeContainer
