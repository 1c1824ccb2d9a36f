// SPDX-License-Identifier: MIT

// Protocol Buffers: its messages are the live tree; the text format and the binary one.

#include "../Text.h"
#include "../TreeTasks.h"

#include <contenders/Item.pb.h>

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/util/message_differencer.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

struct Messages {
    using Tree = std::unique_ptr<proto::Item>;

    static Tree build(Node const& plan) {
        auto item = std::make_unique<proto::Item>();
        fill(*item, plan);
        return item;
    }
    static Node plain(Tree const& tree) { return nodeOf(*tree); }

private:
    static void fill(proto::Item& item, Node const& node) {
        item.set_name(node.name);
        item.set_count(node.count);
        item.set_length(node.length);
        item.set_label(node.label);
        item.set_is_open(node.isOpen);
        item.mutable_position()->Assign(node.position.begin(), node.position.end());
        item.set_id(node.id.data(), node.id.size());
        item.mutable_samples()->Assign(node.samples.begin(), node.samples.end());
        item.mutable_tags()->insert(node.tags.begin(), node.tags.end());
        for (Node const& child : node.children)
            fill(*item.add_children(), child);
    }

    static Node nodeOf(proto::Item const& item) {
        Node node;
        node.name = item.name();
        node.count = item.count();
        node.length = item.length();
        node.label = item.label();
        node.isOpen = item.is_open();
        std::copy_n(item.position().begin(), node.position.size(), node.position.begin());
        std::copy_n(item.id().begin(), node.id.size(), node.id.begin());
        node.samples.assign(item.samples().begin(), item.samples().end());
        node.tags.insert(item.tags().begin(), item.tags().end());
        for (proto::Item const& child : item.children())
            node.children.push_back(nodeOf(child));
        return node;
    }
};

struct ProtobufText : Messages {
    static constexpr char name[] = "Protobuf, text";

    static std::string write(Tree const& tree) {
        std::string text;
        google::protobuf::TextFormat::PrintToString(*tree, &text);
        return text;
    }
    static Tree read(std::string_view text) {
        auto item = std::make_unique<proto::Item>();
        google::protobuf::io::ArrayInputStream in(text.data(), static_cast<int>(text.size()));
        if (!google::protobuf::TextFormat::Parse(&in, item.get()))
            throw std::runtime_error("Protocol Buffers cannot read the document");
        return item;
    }
    static Tree copy(Tree const& tree) { return std::make_unique<proto::Item>(*tree); }
    static bool isEqual(Tree const& first, Tree const& second) {
        return google::protobuf::util::MessageDifferencer::Equals(*first, *second);
    }
};

struct ProtobufBinary : Messages {
    static constexpr char name[] = "Protobuf, binary";

    static std::string write(Tree const& tree) { return tree->SerializeAsString(); }
    static Tree read(std::string_view bytes) {
        auto item = std::make_unique<proto::Item>();
        if (!item->ParseFromArray(bytes.data(), static_cast<int>(bytes.size())))
            throw std::runtime_error("Protocol Buffers cannot read the document");
        return item;
    }
};

Registration const text(TreeTasks<ProtobufText>::contender());
Registration const binary(TreeTasks<ProtobufBinary>::contender());

} // namespace

} // namespace bench
