// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"

#include <gtest/gtest.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// An observer that leaves everything to the base class.
class PlainObserver : public Observer {
public:
    std::string getName() override { return "plain"; }
};

struct Watching : testing::Test {
    Log log;
    std::shared_ptr<RecordingObserver> a = RecordingObserver::make("a", log);
    std::shared_ptr<RecordingObserver> b = RecordingObserver::make("b", log);
    std::vector<std::shared_ptr<RecordingObservable>> observables;

    void SetUp() override {
        for (int i = 0; i < 3; ++i)
            observables.push_back(RecordingObservable::make());
    }
    void TearDown() override { RecordingObserver::setPathRoot(nullptr); }
};

TEST_F(Watching, APlainObserverHandlesNothingAndHasNoPaths) {
    auto const plain = std::make_shared<PlainObserver>();
    Cause cause;
    EXPECT_EQ(Action::ExecNotHandled, plain->toChangeNotify(*observables[0], cause));
    EXPECT_EQ(Action::ExecNotHandled, plain->changedNotify(*observables[0], cause));
    EXPECT_EQ(std::nullopt, plain->inqObjPath(nullptr));
    EXPECT_EQ(std::nullopt, plain->inqDisplayPath());
    EXPECT_TRUE(plain->checkLocking(Observer::ActionForCheckLocking::Remove));
    EXPECT_EQ("Observer", plain->getClassName());
    EXPECT_EQ(plain.get(), &plain->lookupSelf()->get());
}

TEST_F(Watching, EntriesStandInTheOrderOfActivation) {
    for (bool const many : {false, true}) {
        if (many) // above the length at which an index is kept, with gaps
            for (int i = 0; i < 30; ++i)
                a->informAddObserve(*observables[2]);
        for (int const i : {0, 1, 0})
            EXPECT_TRUE(a->informAddObserve(*observables[static_cast<std::size_t>(i)]));
        a->informRmObserveAll(*observables[2]);
        EXPECT_EQ(2U, a->entryOf(*observables[0]));
        EXPECT_EQ(1U, a->entryOf(*observables[1]));
        EXPECT_EQ(NOT_FOUND, a->entryOf(*observables[2]));
        a->informRmObserve(*observables[0]);
        EXPECT_EQ(0U, a->entryOf(*observables[0])) << "the last one goes first";
        a->informRmObserve(std::nullopt);
        a->informRmObserve(*observables[2]);
        a->informDelete(*observables[0]);
        EXPECT_EQ(0U, a->entryOf(*observables[1]));
        a->informRmObserveAll(*observables[1]);
        EXPECT_TRUE(a->watchesNothing());
    }
}

TEST_F(Watching, DetachingRemovesTheLinksOfEverythingWatched) {
    for (auto const& observable : observables) {
        observable->addObserver(*a, 1, NOTIFY, false);
        observable->addPreObserver(*a, 1, PRE_NOTIFY, false);
        observable->addObserver(*b, 1, NOTIFY, false);
    }
    a->detachFromAll();
    EXPECT_TRUE(a->watchesNothing());
    b.reset();
    for (auto const& observable : observables)
        EXPECT_EQ(0U, observable->getNumPrePaths() + observable->getNumPostPaths());
}

TEST_F(Watching, ObservationsAreCopiedFromForeignObservables) {
    auto const& [own, foreign, both] = std::tie(observables[0], observables[1], observables[2]);
    own->owner = *a;
    own->addObserver(*a, 1, NOTIFY, false);
    EXPECT_EQ(0U, b->copyObservationsFrom(*a));
    foreign->addObserver(*a, 4, NOTIFY, true);
    foreign->addPreObserver(*a, 5, PRE_NOTIFY, false);
    both->addObserver(*a, 6, NOTIFY, false);
    both->addObserver(*b, 7, NOTIFY, false);
    EXPECT_EQ(0U, a->copyObservationsFrom(*a));
    EXPECT_EQ(3U, b->copyObservationsFrom(*a)) << "the one that was there counts, too";
    EXPECT_EQ(NOT_FOUND, b->entryOf(*own));
    ASSERT_EQ(2U, foreign->getNumPostPaths());
    EXPECT_TRUE(foreign->getPath(3).isTemporary());
    EXPECT_EQ(5, foreign->getPath(1).getPriority());
    EXPECT_EQ(2U, both->getNumPostPaths());
    foreign->ask();
    EXPECT_EQ((Log{"b?", "a?"}), log);
}

TEST_F(Watching, ObservationsAreTakenOver) {
    auto const& [own, foreign, both] = std::tie(observables[0], observables[1], observables[2]);
    own->owner = *a;
    for (auto const& observable : observables) {
        observable->addObserver(*a, 1, NOTIFY, false);
        observable->addPreObserver(*a, 2, PRE_NOTIFY, false);
    }
    both->addObserver(*b, 3, NOTIFY, false);
    EXPECT_EQ(0U, a->takeOverObservationsFrom(*a));
    EXPECT_EQ(4U, b->takeOverObservationsFrom(*a));
    EXPECT_EQ(NOT_FOUND, a->entryOf(*foreign));
    EXPECT_EQ(NOT_FOUND, a->entryOf(*both));
    EXPECT_NE(NOT_FOUND, a->entryOf(*own));
    EXPECT_EQ(1U, both->getNumPostPaths()) << "two links that became equal are one";
    both->tell();
    both->ask();
    foreign->tell();
    EXPECT_EQ((Log{"b", "b?", "b"}), log);
    own->rmObserver(*a);
    EXPECT_TRUE(a->watchesNothing());
}

TEST_F(Watching, PathsLeadFromTheObserverOrFromThePathRoot) {
    auto const root = RecordingObserver::make("root", log);
    a->known["b"] = b;
    b->known["x"] = observables[0];
    root->known["a"] = a;
    root->known["#7"] = b;
    struct Row {
        char const* path;
        ObservingObject const* withRoot;
        ObservingObject const* withoutRoot;
    };
    ObservingObject const* const x = observables[0].get();
    Row const rows[] = {
        {"", a.get(), a.get()},
        {"b", b.get(), b.get()},
        {"c", nullptr, nullptr},
        {"b/x", x, x},
        {"b//x/", x, x},
        {"b/y", nullptr, nullptr},
        {"c/x", nullptr, nullptr},
        {"b/x/z", nullptr, nullptr},
        {" \tb/x", x, x},
        {"/a", a.get(), nullptr},
        {" ///a/b/x", x, nullptr},
        {"/ / /a", a.get(), nullptr},
        {"/", root.get(), nullptr},
        {"#7", b.get(), nullptr},
        {"#8", nullptr, nullptr},
        {" ", nullptr, nullptr},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.path);
        RecordingObserver::setPathRoot(root);
        EXPECT_EQ(row.withRoot, a->inqObserver(row.path).lock().get());
        RecordingObserver::setPathRoot(nullptr);
        EXPECT_EQ(row.withoutRoot, std::as_const(*a).inqObserver(row.path).lock().get());
    }
    EXPECT_EQ(a.get(), a->inqObserver(std::nullopt).lock().get());
    RecordingObserver::setPathRoot(root);
    std::string const slashes(1'000'000, '/');
    EXPECT_EQ(a.get(), b->inqObserver(slashes + "a" + slashes).lock().get());
}

TEST_F(Watching, PathsAreWrittenAsSeenFromAnother) {
    struct Row {
        std::optional<std::string> own;
        std::optional<std::string> other;
        std::optional<std::string> expected;
    };
    Row const rows[] = {
        {"/a/b", "/", "/a/b"},
        {"/a/b", "/a", "b"},
        {"/a", "/a/b", "~/"},
        {"/a/b", "/a/c", "~/b"},
        {"/a/b", "/x", "~/a/b"},
        {"/a/b/c", "/a/x/y", "~/~/b/c"},
        {"/a", "/a", ""},
        {"/ab", "/a", "~/ab"},
        {"/a", std::nullopt, "/a"},
        {std::nullopt, "/a", std::nullopt},
        {std::nullopt, std::nullopt, std::nullopt},
    };
    for (Row const& row : rows) {
        a->objectPath = row.own;
        b->objectPath = row.other;
        EXPECT_EQ(row.expected, a->inqObjPath(b.get()))
            << row.own.value_or("-") << " from " << row.other.value_or("-");
        EXPECT_EQ(row.own, a->inqObjPath(nullptr));
    }
    a->objectPath = std::nullopt;
    b->objectPath = "/b";
    b->known["a"] = a;
    EXPECT_EQ("a", a->inqObjPath(b.get())) << "found by its name";
}

} // namespace
