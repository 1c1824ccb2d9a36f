// SPDX-License-Identifier: MIT

// This library, with a class that declares the attributes, and child objects.

#include "../TreeTasks.h"
#include "KxItem.h"

namespace bench {

namespace {

auto const factoryRegistration = kx::FieldFactory::registerField<KxItem>(KxItem::getStaticClassName());

struct KxDeclared {
    static constexpr char name[] = "KX declared";
    static constexpr auto rendering = kx::ModelFormat::Text;
    using Tree = std::shared_ptr<KxItem>;

    static bool accepts(Shape shape) { return shape != Shape::Members; }

    static Tree build(Node const& plan) {
        auto item = KxItem::create();
        expectGood(item->setName(plan.name, 0));
        item->set(KxItem::count, plan.count);
        item->set(KxItem::length, plan.length);
        item->set(KxItem::label, plan.label);
        item->set(KxItem::isOpen, plan.isOpen);
        item->set(KxItem::position, vectorOf(plan.position));
        item->set(KxItem::id, Zorvan::uuids::uuid(plan.id));
        item->set(KxItem::samples, plan.samples);
        item->set(KxItem::tags, plan.tags);
        for (Node const& child : plan.children)
            item->addChild(build(child), 0);
        return item;
    }

    static Node plain(Tree const& tree) {
        Node node{tree->getName(),
                  tree->get<int>(KxItem::count),
                  tree->get<double>(KxItem::length),
                  tree->get<std::string>(KxItem::label),
                  tree->get<bool>(KxItem::isOpen),
                  arrayOf(tree->get<Zorvan::Vec3d<double>>(KxItem::position)),
                  arrayOf(tree->get<Zorvan::uuids::uuid>(KxItem::id)),
                  tree->get<std::vector<double>>(KxItem::samples),
                  tree->get<std::map<std::string, std::string>>(KxItem::tags),
                  {}};
        for (std::uint64_t i = 0; i < tree->children().getNumChildren(); ++i)
            node.children.push_back(plain(childOf(tree, i)));
        return node;
    }

    static std::string write(Tree const& tree) { return writeKx(*tree, rendering); }
    static Tree read(std::string_view document) {
        auto root = KxItem::create();
        readKx(*root, document, rendering);
        return root;
    }

    /// A copy of an object has no children; its user gives it copies of them.
    static Tree copy(Tree const& tree) {
        auto result = KxItem::create(kx::CreateType::Deep, *tree);
        for (std::uint64_t i = 0; i < tree->children().getNumChildren(); ++i)
            result->addChild(copy(childOf(tree, i)), 0);
        return result;
    }

    // Comparing and merging leave children to their users, too.
    static bool isEqual(Tree const& first, Tree const& second) {
        static kx::AttrContComparer const comparer;
        std::uint64_t const numChildren = first->children().getNumChildren();
        if (comparer.compare(*first, *second) != 0 || second->children().getNumChildren() != numChildren)
            return false;
        for (std::uint64_t i = 0; i < numChildren; ++i)
            if (!isEqual(childOf(first, i), childOf(second, i)))
                return false;
        return true;
    }
    static void merge(Tree& target, Tree const& source) { mergeInto(*target, *source); }

    static KxItem* find(Tree const& tree, std::string const& path) {
        return static_cast<KxItem*>(tree->inqObject(path).get());
    }
    static int number(KxItem* item, std::string const& attribute) { return valueOf<int>(*item, attribute); }

private:
    static Tree childOf(Tree const& tree, std::uint64_t index) {
        return std::static_pointer_cast<KxItem>(tree->children().getChild(index));
    }
    static void mergeInto(kx::Object& target, kx::Object const& source) {
        kx::AttrContMerger::merge(target, source, kx::AttrContMerger::ASSIGN_ONLY_CHANGED_VALUES, nullptr);
        for (std::uint64_t i = 0; i < source.children().getNumChildren(); ++i) {
            auto const& child = source.children().getChild(i);
            if (auto const& own = target.children().inqChild(child->name()))
                mergeInto(*own, *child);
        }
    }
};

/// The same tree in the other rendering.
struct KxXml {
    static constexpr char name[] = "KX declared, XML";
    static constexpr auto rendering = kx::ModelFormat::XmlV2;
    using Tree = KxDeclared::Tree;
    using OnlyDocuments = void;

    static Tree build(Node const& plan) { return KxDeclared::build(plan); }
    static Node plain(Tree const& tree) { return KxDeclared::plain(tree); }
    static std::string write(Tree const& tree) { return writeKx(*tree, rendering); }
    static Tree read(std::string_view document) {
        auto root = KxItem::create();
        readKx(*root, document, rendering);
        return root;
    }
};

Registration const registration(TreeTasks<KxDeclared>::contender());
Registration const xmlRegistration(TreeTasks<KxXml>::contender());

} // namespace

} // namespace bench
