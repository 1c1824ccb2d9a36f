// SPDX-License-Identifier: MIT

// What the state of this library's objects takes in memory, beside the values themselves.

#include "../Memory.h"
#include "../Registry.h"
#include "Kx.h"

#include <vector>

namespace bench {

namespace {

constexpr std::size_t numInstances = 20'000;
constexpr std::uint64_t numMembers = 8;

/// A class that declares nothing, or `numInts` attributes.
template <std::uint64_t numInts>
class Declaring : public kx::AttrContainer {
public:
    using OptionalSource = std::optional<std::reference_wrapper<Declaring const>>;

    Declaring(ConstructorProtector const& protector, kx::CreateType type, OptionalSource source)
        : AttrContainer(protector, type, source) {}
    static std::shared_ptr<Declaring> create() {
        auto made = std::make_shared<Declaring>(ConstructorProtector(), kx::CreateType::Deep, std::nullopt);
        made->init(kx::CreateType::Deep, std::nullopt);
        static std::vector<kx::AttrDefinition> const table = definitions();
        made->createAttributes(table, kx::CreateType::Deep, std::nullopt);
        return made;
    }

private:
    static std::vector<kx::AttrDefinition> definitions() {
        std::vector<kx::AttrDefinition> table;
        for (std::uint64_t token = 1; token <= numInts; ++token)
            table.push_back({token, "int" + std::to_string(token), kx::AttrTypeInt, 0});
        return table;
    }
};

std::shared_ptr<kx::AttrContainer> makePlain() { return kx::AttrContainer::create(); }

std::shared_ptr<kx::AttrContainer> makeCustom() {
    auto container = kx::AttrContainer::create();
    for (std::uint64_t i = 1; i <= numMembers; ++i)
        container->addAttribute(std::make_shared<kx::CustAttr<int>>(0), "int" + std::to_string(i));
    return container;
}

template <std::uint64_t numInts>
std::shared_ptr<kx::AttrContainer> makeDeclaring() {
    return Declaring<numInts>::create();
}

class Silent : public kx::Observer {
public:
    std::string getName() override { return "silent"; }
};

/// An attribute of a container that so many observers watch, which watch nothing else.
template <std::uint64_t numLinks>
std::shared_ptr<kx::AttrContainer> makeWatched() {
    static std::vector<std::shared_ptr<Silent>> observers;
    auto container = kx::AttrContainer::create();
    for (std::uint64_t i = 0; i < numLinks; ++i)
        container->Attr_name().addObserver(*observers.emplace_back(std::make_shared<Silent>()), 10, 0, true);
    return container;
}

/// The same without the links.
template <std::uint64_t numLinks>
std::shared_ptr<kx::AttrContainer> makeUnwatched() {
    static std::vector<std::shared_ptr<Silent>> observers;
    for (std::uint64_t i = 0; i < numLinks; ++i)
        observers.push_back(std::make_shared<Silent>());
    return kx::AttrContainer::create();
}

using Make = std::shared_ptr<kx::AttrContainer> (*)();

double bytesOf(Make make) {
    forgetFreeMemory();
    std::vector<std::shared_ptr<kx::AttrContainer>> made(numInstances);
    make();
    std::size_t const before = bytesInUse();
    for (auto& container : made)
        container = make();
    return static_cast<double>(bytesInUse() - before) / numInstances;
}

struct Row {
    char const* what;
    Make with, without; ///< The latter may be null.
    std::uint64_t count;
};

constexpr Row rows[] = {
    {"plain container", makePlain, nullptr, 1},
    {"declared int attribute", makeDeclaring<numMembers>, makeDeclaring<0>, numMembers},
    {"custom int attribute", makeCustom, makePlain, numMembers},
    {"first link", makeWatched<1>, makeUnwatched<1>, 1},
    {"link of eight", makeWatched<numMembers>, makeUnwatched<numMembers>, numMembers},
};

void add(Options const& options) {
    if (!options.changes)
        return;
    for (Row const& row : rows)
        addBenchmark(std::string("state bytes, ") + row.what, "KX", 1, [&row](benchmark::State& state) {
            for (auto _ : state)
                state.counters["bytes"] = (bytesOf(row.with) - (row.without ? bytesOf(row.without) : 0)) /
                                          static_cast<double>(row.count);
        })->Iterations(1);
}

Registration const registration({"KX", [] { return std::string(); }, add});

} // namespace

} // namespace bench
