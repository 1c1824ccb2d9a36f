// SPDX-License-Identifier: MIT
#pragma once

#include "Memory.h"
#include "Registry.h"
#include "Timer.h"
#include "Workload.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// A contender for the tasks on trees is a class of static members:
//
//     static constexpr char name[];
//     using Tree = ...;                                     // owns a live tree
//     static Tree build(Node const& plan);                  // by the calls that a user would make
//     static Node plain(Tree const&);                       // what the tree holds, for the checks
//
// and any of these; what a contender does not have is not timed:
//
//     static Document write(Tree const&);                   // std::string, or what view() makes text of
//     static std::string_view view(Document const&);
//     static Tree read(std::string_view document);
//     static Tree copy(Tree const&);
//     static bool isEqual(Tree const&, Tree const&);
//     static void merge(Tree& target, Tree const& source);  // all values of the source
//     static Handle find(Tree const&, std::string const&);  // a node by its path below the root
//     static int number(Handle, std::string const&);        // an int attribute by its name
//     static bool accepts(Shape);                           // without it, Shape::Tree only
//     using OnlyDocuments = void;                           // another contender is timed at the same tree

/// The base of contenders that convert from and to the plain structs.
struct OnPlainStructs {
    using OnlyDocuments = void;
    using Tree = Node;
    static Tree build(Node const& plan) { return plan; }
    static Node plain(Tree const& tree) { return tree; }
};

/// What any document of a contender is as text.
template <class C, class Document>
std::string_view viewOf(Document const& document) {
    if constexpr (requires { C::view(document); })
        return C::view(document);
    else
        return document;
}

template <class C>
class TreeTasks {
public:
    static Contender contender() { return {C::name, check, add}; }

private:
    using Tree = typename C::Tree;

    static constexpr bool hasTree = !requires { typename C::OnlyDocuments; };
    static constexpr bool writes = requires(Tree const& tree) { C::write(tree); };
    static constexpr bool reads = requires(std::string_view text) { C::read(text); };
    static constexpr bool copies = requires(Tree const& tree) { C::copy(tree); };
    static constexpr bool compares = requires(Tree const& tree) { C::isEqual(tree, tree); };
    static constexpr bool merges = requires(Tree & target, Tree const& source) { C::merge(target, source); };
    static constexpr bool finds = requires(Tree const& tree, std::string const& path) {
        C::find(tree, path);
    };
    static constexpr std::size_t numLookUps = 1'000;

    static bool accepts(Shape shape) {
        if constexpr (requires { C::accepts(shape); })
            return C::accepts(shape);
        else
            return shape == Shape::Tree;
    }

    // --- Checks

    static std::string check() {
        for (Shape const shape : {Shape::Tree, Shape::Wide, Shape::Members})
            if (accepts(shape))
                if (std::string wrong = checkShape(shape); !wrong.empty())
                    return wrong;
        return {};
    }

    static std::string checkShape(Shape shape) {
        Node const plan = makeTree(300, shape);
        Tree const tree = C::build(plan);
        if (C::plain(tree) != plan)
            return "what was built is not what was asked for";
        if constexpr (writes && reads)
            if (auto const document = C::write(tree); C::plain(C::read(viewOf<C>(document))) != plan)
                return "what was read is not what was written";
        if constexpr (copies)
            if (C::plain(C::copy(tree)) != plan)
                return "the copy is not equal";
        if constexpr (compares)
            if (std::string wrong = checkComparison(plan, tree); !wrong.empty())
                return wrong;
        if constexpr (merges)
            if (std::string wrong = checkMerge(plan, tree); !wrong.empty())
                return wrong;
        if constexpr (finds)
            return checkLookUps(tree, shape);
        return {};
    }

    /// The tree with another value in its last node.
    static Node changed(Node const& plan) {
        Node other = plan;
        Node* last = &other;
        while (!last->children.empty())
            last = &last->children.back();
        ++last->count;
        return other;
    }

    static std::string checkComparison(Node const& plan, Tree const& tree) {
        if (!C::isEqual(tree, C::build(plan)))
            return "equal trees are different";
        if (C::isEqual(tree, C::build(changed(plan))))
            return "a difference is not seen";
        return {};
    }

    static std::string checkMerge(Node const& plan, Tree const& source) {
        Tree target = C::build(changed(plan));
        C::merge(target, source);
        return C::plain(target) == plan ? "" : "a merge does not take over what differs";
    }

    static std::string checkLookUps(Tree const& tree, Shape shape) {
        for (std::string const& path : samplePaths(300, shape, 20)) {
            int const index = std::stoi(path.substr(path.rfind('n') + 1));
            if (C::number(C::find(tree, path), "count") != index * 7919 % 1'000'003 + 1)
                return "a look-up finds something else";
        }
        return {};
    }

    // --- Timing

    /// Small trees are made again and again in the same memory, as by a program that works; large ones each
    /// time in fresh memory, as by one that has just been started. Whether memory is in place must not depend
    /// on how often something was fast enough to be repeated.
    static void renewMemory(std::size_t count) {
        constexpr std::size_t largestSmall = 1'000;
        if (count > largestSmall)
            forgetFreeMemory();
    }

    /// Times `operation`; what `prepare` makes for it and what it returns are made and go untimed.
    template <class Operation>
    static void time(benchmark::State& state, std::size_t count, Operation const& operation) {
        for (auto _ : state) {
            renewMemory(count);
            double const start = processorTime();
            auto const result = operation();
            double const end = processorTime();
            benchmark::DoNotOptimize(&result);
            state.SetIterationTime(end - start);
        }
        state.counters["items"] = static_cast<double>(count);
    }

    template <class Run>
    static void addTask(std::string const& task, std::size_t size, Options const& options, Run run) {
        auto* const added = addBenchmark(task, C::name, size, [run](benchmark::State& state) {
            forgetFreeMemory();
            run(state);
        });
        added->UseManualTime()->Unit(benchmark::kMicrosecond)->MinTime(options.minTime);
    }

    /// A counted number instead of a time.
    template <class Count>
    static void addCount(std::string const& task, std::size_t size, Count count) {
        addBenchmark(task, C::name, size, [count](benchmark::State& state) {
            forgetFreeMemory();
            for (auto _ : state)
                state.counters["bytes"] = static_cast<double>(count());
        })->Iterations(1);
    }

    static void add(Options const& options) {
        for (std::size_t const size : options.sizes) {
            addFor(size, Shape::Tree, "", options);
            addFor(size, Shape::Wide, "-wide", options);
            addFor(size, Shape::Members, "-members", options);
        }
    }

    static void addFor(std::size_t size, Shape shape, std::string const& suffix, Options const& options) {
        if (!accepts(shape))
            return;
        if constexpr (hasTree)
            addTreeTasks(size, shape, suffix, options);
        if constexpr (writes) {
            addTask("write" + suffix, size, options, [=](benchmark::State& state) {
                Tree const tree = C::build(makeTree(size, shape));
                time(state, size, [&] { return C::write(tree); });
            });
            addCount("document" + suffix, size,
                     [=] { return viewOf<C>(C::write(C::build(makeTree(size, shape)))).size(); });
        }
        if constexpr (writes && reads)
            addTask("read" + suffix, size, options, [=](benchmark::State& state) {
                auto const document = C::write(C::build(makeTree(size, shape)));
                time(state, size, [&] { return C::read(viewOf<C>(document)); });
            });
        if constexpr (finds)
            addLookUps(size, shape, suffix, options);
    }

    static void addTreeTasks(std::size_t size, Shape shape, std::string const& suffix,
                             Options const& options) {
        addTask("build" + suffix, size, options, [=](benchmark::State& state) {
            Node const plan = makeTree(size, shape);
            time(state, size, [&] { return C::build(plan); });
        });
        addTask("destroy" + suffix, size, options, [=](benchmark::State& state) {
            Node const plan = makeTree(size, shape);
            for (auto _ : state) {
                auto tree = std::make_unique<Tree>(C::build(plan));
                double const start = processorTime();
                tree.reset();
                state.SetIterationTime(processorTime() - start);
            }
            state.counters["items"] = static_cast<double>(size);
        });
        addCount("memory" + suffix, size, [=] {
            Node const plan = makeTree(size, shape);
            std::size_t const before = bytesInUse();
            Tree const tree = C::build(plan);
            return bytesInUse() - before;
        });
        if constexpr (copies)
            addTask("copy" + suffix, size, options, [=](benchmark::State& state) {
                Tree const tree = C::build(makeTree(size, shape));
                time(state, size, [&] { return C::copy(tree); });
            });
        if constexpr (compares)
            addTask("compare" + suffix, size, options, [=](benchmark::State& state) {
                Node const plan = makeTree(size, shape);
                Tree const first = C::build(plan), second = C::build(plan);
                time(state, size, [&] { return C::isEqual(first, second); });
            });
        if constexpr (merges)
            addTask("merge" + suffix, size, options, [=](benchmark::State& state) {
                Node const plan = makeTree(size, shape);
                Tree target = C::build(plan);
                Tree const source = C::build(plan);
                time(state, size, [&] { return C::merge(target, source), 0; });
            });
    }

    static void addLookUps(std::size_t size, Shape shape, std::string const& suffix, Options const& options) {
        addTask("find by path" + suffix, size, options, [=](benchmark::State& state) {
            Tree const tree = C::build(makeTree(size, shape));
            auto const paths = samplePaths(size, shape, numLookUps);
            time(state, numLookUps, [&] {
                for (std::string const& path : paths)
                    benchmark::DoNotOptimize(C::find(tree, path));
                return 0;
            });
        });
        addTask("find by name" + suffix, size, options, [=](benchmark::State& state) {
            Tree const tree = C::build(makeTree(size, shape));
            std::vector<decltype(C::find(tree, ""))> nodes;
            for (std::string const& path : samplePaths(size, shape, numLookUps))
                nodes.push_back(C::find(tree, path));
            std::string const attribute = "count";
            time(state, numLookUps, [&] {
                int sum = 0;
                for (auto const& node : nodes)
                    sum += C::number(node, attribute);
                return sum;
            });
        });
    }
};

} // namespace bench
