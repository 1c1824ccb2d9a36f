// SPDX-License-Identifier: MIT

// This library, with plain containers as fields of each other, and attributes that are added at run time.

#include "../TreeTasks.h"
#include "Kx.h"

namespace bench {

namespace {

using Container = std::shared_ptr<kx::AttrContainer>;

template <class T>
void addTo(kx::AttrContainer& container, std::string const& name, T const& value) {
    container.addAttribute(std::make_shared<kx::CustAttr<T>>(value), name);
}

/// What holds for all plain containers, however they are filled.
struct KxContainers {
    using Tree = Container;

    static std::string write(Tree const& tree) { return writeKx(*tree, kx::ModelFormat::Text); }
    static Tree read(std::string_view document) {
        auto root = kx::AttrContainer::create();
        readKx(*root, document, kx::ModelFormat::Text);
        return root;
    }
    static Tree copy(Tree const& tree) { return tree->duplicate(kx::CreateType::Deep); }
    static bool isEqual(Tree const& first, Tree const& second) {
        return kx::AttrContComparer().compare(*first, *second) == 0;
    }
    static void merge(Tree& target, Tree const& source) {
        kx::AttrContMerger::merge(*target, *source, kx::AttrContMerger::ASSIGN_ONLY_CHANGED_VALUES, nullptr);
    }
};

struct KxCustom : KxContainers {
    static constexpr char name[] = "KX custom";

    static bool accepts(Shape shape) { return shape != Shape::Members; }

    static Tree build(Node const& plan) {
        auto container = kx::AttrContainer::create();
        expectGood(container->setName(plan.name, 0));
        addTo(*container, "count", plan.count);
        addTo(*container, "length", plan.length);
        addTo(*container, "label", plan.label);
        addTo(*container, "isOpen", plan.isOpen);
        addTo(*container, "position", vectorOf(plan.position));
        addTo(*container, "id", Zorvan::uuids::uuid(plan.id));
        addTo(*container, "samples", plan.samples);
        addTo(*container, "tags", plan.tags);
        for (Node const& child : plan.children)
            container->addField(build(child), child.name, 0);
        return container;
    }

    static Node plain(Tree const& tree) {
        Node node{tree->getName(),
                  valueOf<int>(*tree, "count"),
                  valueOf<double>(*tree, "length"),
                  valueOf<std::string>(*tree, "label"),
                  valueOf<bool>(*tree, "isOpen"),
                  arrayOf(valueOf<Zorvan::Vec3d<double>>(*tree, "position")),
                  arrayOf(valueOf<Zorvan::uuids::uuid>(*tree, "id")),
                  valueOf<std::vector<double>>(*tree, "samples"),
                  valueOf<std::map<std::string, std::string>>(*tree, "tags"),
                  {}};
        for (std::uint64_t i = 0; i < tree->getNumFields(); ++i)
            node.children.push_back(plain(tree->getField(i).lock()));
        return node;
    }

    static kx::AttrContainer* find(Tree const& tree, std::string const& path) {
        auto const found = tree->inqObserver(path).lock();
        return dynamic_cast<kx::AttrContainer*>(found.get());
    }
    static int number(kx::AttrContainer* container, std::string const& attribute) {
        return valueOf<int>(*container, attribute);
    }
};

/// One container with very many attributes.
struct KxMembers : KxContainers {
    static constexpr char name[] = "KX custom";

    static bool accepts(Shape shape) { return shape == Shape::Members; }

    static Tree build(Node const& plan) {
        auto container = kx::AttrContainer::create();
        expectGood(container->setName(plan.name, 0));
        // No member has the root's name.
        addTo(*container, plan.name, plan.count);
        for (Node const& child : plan.children)
            addTo(*container, child.name, child.count);
        return container;
    }

    static Node plain(Tree const& tree) {
        Node node;
        node.name = tree->getName();
        node.count = valueOf<int>(*tree, node.name);
        for (std::uint64_t i = 2; i < tree->getNumAttributes(); ++i) {
            Node& child = node.children.emplace_back();
            child.name = *tree->getAttrName(i);
            child.count = valueOf<int>(*tree, child.name);
        }
        return node;
    }

    static kx::Attribute* find(Tree const& tree, std::string const& path) {
        return tree->getAttr(path).lock().get();
    }
    static int number(kx::Attribute* attribute, std::string const&) {
        return dynamic_cast<kx::Attr<int>&>(*attribute).getValue();
    }
};

Registration const registration(TreeTasks<KxCustom>::contender());
Registration const membersRegistration(TreeTasks<KxMembers>::contender());

} // namespace

} // namespace bench
