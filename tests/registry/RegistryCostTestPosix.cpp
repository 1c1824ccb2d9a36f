// SPDX-License-Identifier: MIT
#include "CostFixture.h"
#include "registry/RegistryFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct RegistryCostTest : ScratchKey {
    /// A key that is empty at first.
    struct State {
        explicit State(int) {}
        ~State() { place()->deleteTree(""); }
        std::shared_ptr<RegKeys> keys = place()->createFrom(true);
    };

    static void nothing(State&, int) {}
    static std::string descending(int i) { return std::to_string(1'000'000 - i); }
    static void make(State& state, int i) { state.keys->createKey(descending(i), false); }
    static void store(State& state, int i) { state.keys->setKey(descending(i), "value"); }
    static void list(State& state, int i) { EXPECT_NE("", state.keys->getSubKey(i)); }
    static void removeFirst(State& state, int) {
        EXPECT_TRUE(state.keys->deleteKey(state.keys->getSubKey(0)));
    }
};

TEST_F(RegistryCostTest, HardlyGrowsWithTheNumberOfKeysAndValues) {
    expectCostHardlyGrows<State>({{"make a key before the others", nothing, make},
                                  {"store a value before the others", nothing, store},
                                  {"list one subkey after the other", make, list},
                                  {"delete the first subkey", make, removeFirst}});
}

} // namespace
