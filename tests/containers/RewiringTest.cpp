// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "observation/RecordingObserver.h"

#include "containers/ApplicationClasses.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// root { pump { inner { leaf } }, station (an object) { its declared Pump } }
struct Rewiring : testing::Test {
    Log log;
    std::shared_ptr<AttrContainer> root = named<Pump>("root");
    std::shared_ptr<Pump> pump = named<Pump>("pump");
    std::shared_ptr<AttrContainer> inner = named<Pump>("inner"), leaf = named<Pump>("leaf");
    std::unique_ptr<FieldFactory::FactoryRegistration> registration =
        FieldFactory::registerField<Pump>("Pump");
    std::shared_ptr<Station> station = named<Station>("station");
    std::shared_ptr<RecordingObserver> outside = RecordingObserver::make("outside", log, "/outside");

    void SetUp() override {
        EXPECT_TRUE(root->addField(pump, "pump", 0));
        EXPECT_TRUE(pump->addField(inner, "inner", 0));
        EXPECT_TRUE(inner->addField(leaf, "leaf", 0));
        EXPECT_TRUE(root->addField(station, "station", 0));
        inner->addAttribute(std::make_shared<CustAttr<int>>(1), "custom");
    }

    /// The container's own observable for an empty attribute name.
    static std::shared_ptr<Observable> observableOf(std::shared_ptr<AttrContainer> const& top,
                                                    std::string const& path, std::string const& attribute) {
        auto const container = at(top, path);
        return attribute.empty() ? container->observable()
                                 : std::shared_ptr<Observable>(container->getAttr(attribute).lock());
    }
    /// The persistent link of an observable.
    static ObserverPath& link(Observable& observable) {
        for (std::uint64_t i = 0;; ++i)
            if (!observable.getPath(i).isTemporary())
                return observable.getPath(i);
    }
};

TEST_F(Rewiring, LinksOfACopiedTreeLeadToItsOwnObserversAndToThoseOutside) {
    auto const top = std::shared_ptr<AttrContainer>(root);
    auto const links = dataRows("containers/links.txt");
    auto const watcherIn = [&](std::shared_ptr<AttrContainer> const& tree, DataRow const& row) -> Observer* {
        return row[2] == "outside" ? static_cast<Observer*>(outside.get()) : at(tree, row[2]).get();
    };
    for (auto const& row : links) {
        auto const observable = observableOf(root, row[0], row[1]);
        auto& watcher = *watcherIn(root, row);
        EXPECT_EQ(Observable::Added, row[3] == "asked"
                                         ? observable->addPreObserver(watcher, 5, PRE_NOTIFY, false)
                                         : observable->addObserver(watcher, 5, NOTIFY, false));
    }
    auto const expectWired = [&](std::shared_ptr<AttrContainer> const& tree) {
        for (auto const& row : links) {
            auto const observable = observableOf(tree, row[0], row[1]);
            EXPECT_EQ(row[1] == "Name" ? 2U : 1U,
                      observable->getNumPrePaths() + observable->getNumPostPaths())
                << row.place;
            ObserverPath& path = link(*observable);
            ASSERT_TRUE(path.lookupObserver()) << row.place;
            EXPECT_EQ(watcherIn(tree, row), &path.lookupObserver()->get()) << row.place;
            EXPECT_TRUE(path.isActive()) << row.place;
        }
    };
    auto copy = root->duplicate(CreateType::Deep);
    expectWired(copy);
    expectWired(copy->duplicate(CreateType::Deep));
    expectWired(root);
    copy.reset();
    expectWired(root);
    log.clear();
    root->name("renamed");
    EXPECT_EQ((Log{"outside"}), log) << "copies that went are not told, nor is anybody twice";
}

TEST_F(Rewiring, SharedFieldsAndCopiesOfPartsKeepTheirLinks) {
    auto const rootName = root->getAttr(0).lock(), power = pump->getAttr("Power").lock();
    rootName->addObserver(*pump, 1, NOTIFY, false);
    power->addObserver(*root, 1, NOTIFY, false);
    rootName->addObserver(*root, 2, NOTIFY, false);
    auto const copy = root->duplicate(CreateType::ShareFields);
    auto const copiedName = copy->getAttr(0).lock();
    EXPECT_EQ(pump.get(), &copiedName->getPath(1).lookupObserver()->get());
    EXPECT_EQ(copy.get(), &copiedName->getPath(2).lookupObserver()->get());
    EXPECT_EQ(root.get(), &power->getPath(0).lookupObserver()->get());
    EXPECT_EQ(1U, power->getNumPostPaths());

    // A copy of a part keeps its links to the rest; paths as texts resolve in the copy.
    inner->getAttr("custom").lock()->addObserver(std::string("leaf"), 1, NOTIFY, false);
    power->addObserver(*inner, 1, NOTIFY, false);
    auto const part = pump->duplicate(CreateType::Deep);
    auto const partPower = part->getAttr("Power").lock();
    EXPECT_EQ(root.get(), &partPower->getPath(0).lookupObserver()->get());
    EXPECT_EQ(at(part, "inner").get(), &partPower->getPath(1).lookupObserver()->get());
    EXPECT_EQ(at(part, "inner/leaf").get(),
              &link(*observableOf(part, "inner", "custom")).lookupObserver()->get());
}

TEST_F(Rewiring, WaitsForTheOutermostScopeUnlessThatFails) {
    auto const linkOf = [](AttrContainer& one) -> ObserverPath& {
        return one.getAttr("Power").lock()->getPath(0);
    };
    pump->getAttr("Power").lock()->addObserver(*station, 1, NOTIFY, false);
    std::shared_ptr<AttrContainer> copy, stationCopy;
    {
        BlockUpdateObservers scope(nullptr);
        copy = pump->duplicate(CreateType::Deep);
        EXPECT_FALSE(linkOf(*copy).isActive());
        stationCopy = station->duplicate(CreateType::Deep);
        scope.setToBeUpdated(stationCopy);
    }
    EXPECT_TRUE(linkOf(*copy).isActive());
    EXPECT_EQ(stationCopy.get(), &linkOf(*copy).lookupObserver()->get())
        << "two copies of one operation belong together";
    try {
        BlockUpdateObservers const scope(nullptr);
        copy = pump->duplicate(CreateType::Deep);
        throw std::runtime_error("stop");
    } catch (std::runtime_error const&) {
        EXPECT_FALSE(linkOf(*copy).isActive());
    }
    EXPECT_TRUE(linkOf(*pump->duplicate(CreateType::Deep)).isActive()) << "the next one is left alone";
}

} // namespace
