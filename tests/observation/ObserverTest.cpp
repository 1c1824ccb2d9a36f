// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "observation/ObservationFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Watching : ObservationTest {
    std::shared_ptr<RecordingObservable> foreign = RecordingObservable::make();
    std::shared_ptr<RecordingObservable> both = RecordingObservable::make();

    void TearDown() override { RecordingObserver::setPathRoot(nullptr); }
};

TEST_F(Watching, EntriesStandInTheOrderOfActivation) {
    for (int const more : {1, 30}) { // above the length at which an index is kept, with gaps
        for (int i = 0; i < more; ++i)
            a->informAddObserve(*both);
        for (auto const& one : {observable, foreign, observable})
            EXPECT_TRUE(a->informAddObserve(*one));
        a->informRmObserveAll(*both);
        EXPECT_TRUE(a->entryOf(*observable) == 2 && a->entryOf(*foreign) == 1);
        a->informRmObserve(*observable);
        EXPECT_EQ(0U, a->entryOf(*observable)) << "the last one goes first";
        a->informRmObserve(*both);
        a->informDelete(*observable);
        EXPECT_EQ(0U, a->entryOf(*foreign));
        a->informRmObserveAll(*foreign);
        EXPECT_TRUE(a->watchesNothing());
    }
}

TEST_F(Watching, ObservationsOfForeignObservablesAreCopiedTakenOverAndEndTogether) {
    observable->owner = *a;
    observable->addObserver(*a, 1, NOTIFY, false);
    EXPECT_EQ(0U, b->copyObservationsFrom(*a));
    foreign->addObserver(*a, 4, NOTIFY, true);
    foreign->addPreObserver(*a, 5, PRE_NOTIFY, false);
    both->addObserver(*a, 6, NOTIFY, false);
    both->addObserver(*b, 7, NOTIFY, false);
    auto const c = RecordingObserver::make("c", log);
    foreign->addObserver(*c, 9, NOTIFY, false);
    foreign->addPreObserver(*c, 9, PRE_NOTIFY, false);
    EXPECT_EQ(0U, a->copyObservationsFrom(*a) + a->takeOverObservationsFrom(*a));
    EXPECT_EQ(3U, b->copyObservationsFrom(*a)) << "the one that was there counts, too";
    EXPECT_EQ(NOT_FOUND, b->entryOf(*observable));
    EXPECT_TRUE(foreign->getPath(4).isTemporary());
    EXPECT_EQ(2U, both->getNumPostPaths());
    EXPECT_EQ("c?b?a?cba", logged([&] { foreign->ask(), foreign->tell(); })) << "each in its place";

    b->detachFromAll();
    both->addObserver(*b, 3, NOTIFY, false);
    EXPECT_EQ(3U, b->takeOverObservationsFrom(*a));
    EXPECT_TRUE(a->entryOf(*foreign) == NOT_FOUND && a->entryOf(*observable) != NOT_FOUND);
    EXPECT_EQ(1U, numLinks(*both)) << "two links that became equal are one";
    EXPECT_EQ("c?b?cb", logged([&] { foreign->ask(), foreign->tell(); }));
    a->detachFromAll();
    b.reset();
    EXPECT_TRUE(a->watchesNothing());
    EXPECT_EQ(2U, numLinks(*observable) + numLinks(*foreign) + numLinks(*both));
}

TEST_F(Watching, PathsLeadFromTheObserverOrFromThePathRoot) {
    auto const root = RecordingObserver::make("root", log);
    a->known["b"] = b;
    b->known["x"] = observable;
    root->known = {{"a", a}, {"#7", b}};
    std::map<std::string, ObservingObject const*> const all{
        {"a", a.get()}, {"b", b.get()}, {"x", observable.get()}, {"root", root.get()}, {"", nullptr}};
    for (auto const& usedRoot : {root, std::shared_ptr<RecordingObserver>()}) {
        RecordingObserver::setPathRoot(usedRoot);
        for (auto const& row : dataRows("observation/paths.txt"))
            if (row.section != "seen from another") {
                auto const* const found = std::as_const(*a).inqObserver(row[0]).lock().get();
                bool const isFound = usedRoot || row.section == "relative";
                EXPECT_EQ(isFound ? all.at(row[1]) : nullptr, found) << row.place;
                EXPECT_EQ(found, a->inqObserver(row[0]).lock().get()) << row.place;
            }
    }
    EXPECT_EQ(a.get(), a->inqObserver(std::nullopt).lock().get());
    RecordingObserver::setPathRoot(root);
    std::string const slashes(1'000'000, '/');
    EXPECT_EQ(a.get(), b->inqObserver(slashes + "a" + slashes).lock().get());
}

TEST_F(Watching, PathsAreWrittenAsSeenFromAnother) {
    auto const path = [](std::string const& text) {
        return text == "none" ? std::nullopt : std::optional(text);
    };
    for (auto const& row : dataRows("observation/paths.txt"))
        if (row.section == "seen from another") {
            a->objectPath = path(row[0]);
            b->objectPath = path(row[1]);
            EXPECT_EQ(path(row[2]), a->inqObjPath(b.get())) << row.place;
            EXPECT_EQ(path(row[0]), a->inqObjPath(nullptr));
        }
    a->objectPath = std::nullopt;
    b->objectPath = "/b";
    b->known["a"] = a;
    EXPECT_EQ("a", a->inqObjPath(b.get())) << "found by its name";
}

} // namespace
