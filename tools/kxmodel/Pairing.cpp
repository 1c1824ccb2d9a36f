// SPDX-License-Identifier: MIT
#include "Pairing.h"

#include <AttributeContainer/Object.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

/// Numbers what has one name.
class Ordinals {
public:
    std::size_t next(std::string const& name) { return ++counts_[name]; }

private:
    std::unordered_map<std::string, std::size_t> counts_;
};

/// Positions in the order in which they were added, taken from the front.
struct Queue {
    std::vector<std::size_t> positions;
    std::size_t numTaken = 0;
};

class PairMaker {
public:
    PairMaker(std::size_t numFirst, std::size_t numSecond) : isTaken_(numSecond) {
        pairing_.partners.assign(numFirst, noPartner);
    }

    /// Pairs what has no partner yet and an equal key. `keyOf(isSecond, position)` gives a pointer to the
    /// key, null for none.
    template <class Index, class KeyOf>
    void pairBy(KeyOf const& keyOf) {
        Index index;
        for (std::size_t i = 0; i < isTaken_.size(); ++i)
            if (auto const* key = isTaken_[i] ? nullptr : keyOf(true, i))
                index[*key].positions.push_back(i);
        for (std::size_t i = 0; i < pairing_.partners.size(); ++i) {
            auto const* key = pairing_.partners[i] == noPartner ? keyOf(false, i) : nullptr;
            auto const found = key ? index.find(*key) : index.end();
            if (found == index.end() || found->second.numTaken == found->second.positions.size())
                continue;
            std::size_t const partner = found->second.positions[found->second.numTaken++];
            pairing_.partners[i] = partner;
            isTaken_[partner] = true;
        }
    }

    template <class List>
    void pairByNames(List const& first, List const& second) {
        auto const nameOf = [&](bool isSecond, std::size_t i) {
            return &(isSecond ? second : first)[i].name;
        };
        pairBy<std::unordered_map<std::string_view, Queue>>(nameOf);
    }

    Pairing take() {
        for (std::size_t i = 0; i < isTaken_.size(); ++i)
            if (!isTaken_[i])
                pairing_.unpaired.push_back(i);
        return std::move(pairing_);
    }

private:
    Pairing pairing_;
    std::vector<bool> isTaken_; ///< Of the second list.
};

template <class List>
Pairing pairByNames(List const& first, List const& second) {
    auto const isSame = [](auto const& a, auto const& b) { return a.name == b.name; };
    if (std::equal(first.begin(), first.end(), second.begin(), second.end(), isSame)) {
        // As it is nearly everywhere in documents that are compared.
        Pairing pairing;
        pairing.partners.resize(first.size());
        std::iota(pairing.partners.begin(), pairing.partners.end(), std::size_t{0});
        return pairing;
    }
    PairMaker maker(first.size(), second.size());
    maker.pairByNames(first, second);
    return maker.take();
}

using Uuids = std::vector<Zorvan::uuids::uuid>;

Uuids uuidsOf(Containers const& children) {
    Uuids uuids;
    uuids.reserve(children.size());
    for (auto const& child : children) {
        auto const* object = dynamic_cast<Object const*>(child.item.get());
        uuids.push_back(object ? object->getUuid() : Zorvan::uuids::uuid());
    }
    return uuids;
}

} // namespace

Attributes attributesOf(AttrContainer& container) {
    Attributes attributes;
    Ordinals ordinals;
    for (std::uint64_t token = 0; token < container.getNumAttributes(); ++token)
        if (auto attribute = container.getAttr(token).lock()) {
            std::string name = attribute->getName();
            std::size_t const ordinal = ordinals.next(name);
            attributes.push_back({std::move(attribute), std::move(name), ordinal});
        }
    return attributes;
}

Members membersOf(AttrContainer& container) {
    Members members;
    Ordinals ordinals; // Paths count children before fields.
    auto* const object = dynamic_cast<Object*>(&container);
    for (std::uint64_t i = 0; object && i < object->children().getNumChildren(); ++i) {
        auto const& child = object->children().getChild(i);
        members.children.push_back({child, child->name(), ordinals.next(child->name())});
    }
    for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
        if (auto field = container.getField(token).lock()) {
            std::string name = container.getFieldName(token).value_or("");
            if (name.empty())
                name = field->name();
            std::size_t const ordinal = ordinals.next(name);
            members.fields.push_back({std::move(field), std::move(name), ordinal});
        }
    return members;
}

Pairing pairAttributes(Attributes const& first, Attributes const& second) {
    return pairByNames(first, second);
}

Pairing pairFields(Containers const& first, Containers const& second) { return pairByNames(first, second); }

Pairing pairChildren(Containers const& first, Containers const& second) {
    Uuids const firstUuids = uuidsOf(first), secondUuids = uuidsOf(second);
    PairMaker maker(first.size(), second.size());
    maker.pairBy<std::map<Zorvan::uuids::uuid, Queue>>([&](bool isSecond, std::size_t i) {
        auto const& uuid = (isSecond ? secondUuids : firstUuids)[i];
        return uuid.isNil() ? nullptr : &uuid;
    });
    maker.pairByNames(first, second);
    return maker.take();
}

} // namespace kxmodel
