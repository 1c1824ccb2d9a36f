// SPDX-License-Identifier: MIT

// Boost.Serialization: a text archive of plain structs.

#include "../Text.h"
#include "../TreeTasks.h"

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/serialization/array.hpp>
#include <boost/serialization/map.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include <sstream>

namespace bench {

template <class Archive>
void serialize(Archive& archive, Node& node, unsigned) {
    archive& node.name& node.count& node.length& node.label& node.isOpen& node.position& node.id& node
        .samples& node.tags& node.children;
}

namespace {

struct BoostSerialization : OnPlainStructs {
    static constexpr char name[] = "Boost.Serialization";

    static std::string write(Tree const& tree) {
        std::ostringstream out;
        {
            boost::archive::text_oarchive archive(out);
            archive << tree;
        }
        return std::move(out).str();
    }
    static Tree read(std::string_view text) {
        ViewStream in(text);
        boost::archive::text_iarchive archive(in);
        Node node;
        archive >> node;
        return node;
    }
};

Registration const registration(TreeTasks<BoostSerialization>::contender());

} // namespace

} // namespace bench
