// SPDX-License-Identifier: MIT

// cereal: a JSON archive of plain structs.

#include "../Text.h"
#include "../TreeTasks.h"

#include <cereal/archives/json.hpp>
#include <cereal/types/array.hpp>
#include <cereal/types/map.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>

#include <sstream>

namespace bench {

template <class Archive>
void serialize(Archive& archive, Node& node) {
    archive(cereal::make_nvp("name", node.name), cereal::make_nvp("count", node.count),
            cereal::make_nvp("length", node.length), cereal::make_nvp("label", node.label),
            cereal::make_nvp("isOpen", node.isOpen), cereal::make_nvp("position", node.position),
            cereal::make_nvp("id", node.id), cereal::make_nvp("samples", node.samples),
            cereal::make_nvp("tags", node.tags), cereal::make_nvp("children", node.children));
}

namespace {

struct Cereal : OnPlainStructs {
    static constexpr char name[] = "cereal";

    static std::string write(Tree const& tree) {
        std::ostringstream out;
        {
            cereal::JSONOutputArchive archive(out, cereal::JSONOutputArchive::Options::NoIndent());
            archive(cereal::make_nvp("root", tree));
        }
        return std::move(out).str();
    }
    static Tree read(std::string_view text) {
        ViewStream in(text);
        cereal::JSONInputArchive archive(in);
        Node node;
        archive(cereal::make_nvp("root", node));
        return node;
    }
};

Registration const registration(TreeTasks<Cereal>::contender());

} // namespace

} // namespace bench
