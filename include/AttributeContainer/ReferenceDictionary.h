// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/Export.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

class AttrContainer;
class ReadContextBase;
class WriteContextBase;

/// The containers that occur more than once in the document being read, by their instance ids. An id
/// identifies a container within one document only. First all ids are announced, then each container is
/// registered as it is met. The dictionary shares the ownership of what is registered.
class KX_ATTRIBUTECONTAINER_API ReferenceDictionary {
public:
    ReferenceDictionary();
    ReferenceDictionary(ReferenceDictionary const&) = default;
    ReferenceDictionary& operator=(ReferenceDictionary const&) = default;

    /// "ReferenceDictionary".
    static std::string const& getStaticClassName();
    /// The static class name of the most derived class.
    virtual std::string const& getClassName() const;
    virtual ~ReferenceDictionary();

    /// The container registered under `id`; empty when there is none, or the id was not announced.
    virtual std::shared_ptr<AttrContainer> resolveReference(std::uint64_t id);
    /// Registers a container under an announced id. False: the container is null, the id was not announced,
    /// or it has another container.
    virtual bool registerReference(std::uint64_t id, std::shared_ptr<AttrContainer> container);
    /// Forgets the container of an id, which stays announced. False: the id was not announced.
    virtual bool unregisterReference(std::uint64_t id);
    /// Forgets everything and announces `ids`, which are sorted in place.
    virtual void initializeFromVector(std::vector<std::uint64_t>& ids);

private:
    struct Entry {
        std::uint64_t id;
        std::shared_ptr<AttrContainer> container;
    };

    /// A dictionary has no form in documents: writes nothing and succeeds.
    [[nodiscard]] virtual Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context);
    /// Reads nothing and fails.
    [[nodiscard]] virtual Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context);

    Entry* find(std::uint64_t id);

    std::vector<Entry> entries_; // ascending by id
};

} // namespace Zorvan::AttributeContainer
