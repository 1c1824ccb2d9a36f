// SPDX-License-Identifier: MIT
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

TEST_F(Watching, ObservationsOfForeignObservablesAreCopied) {
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
    EXPECT_EQ(0U, a->copyObservationsFrom(*a));
    EXPECT_EQ(3U, b->copyObservationsFrom(*a)) << "the one that was there counts, too";
    EXPECT_EQ(NOT_FOUND, b->entryOf(*observable));
    EXPECT_TRUE(foreign->getPath(4).isTemporary());
    EXPECT_EQ(2U, both->getNumPostPaths());
    EXPECT_EQ("c?b?a?cba", logged([&] { foreign->ask(), foreign->tell(); })) << "each in its place";
}

TEST_F(Watching, ObservationsAreTakenOverOrEndTogether) {
    observable->owner = *a;
    for (auto const& one : {observable, foreign, both}) {
        one->addObserver(*a, 1, NOTIFY, false);
        one->addPreObserver(*a, 2, PRE_NOTIFY, false);
    }
    both->addObserver(*b, 3, NOTIFY, false);
    EXPECT_EQ(0U, a->takeOverObservationsFrom(*a));
    EXPECT_EQ(4U, b->takeOverObservationsFrom(*a));
    EXPECT_TRUE(a->entryOf(*foreign) == NOT_FOUND && a->entryOf(*observable) != NOT_FOUND);
    EXPECT_EQ(2U, numLinks(*both)) << "two links that became equal are one";
    EXPECT_EQ("b", logged([&] { both->tell(); }));
    a->detachFromAll();
    b.reset();
    EXPECT_TRUE(a->watchesNothing());
    EXPECT_EQ(0U, numLinks(*observable) + numLinks(*foreign) + numLinks(*both));
}

TEST_F(Watching, PathsLeadFromTheObserverOrFromThePathRoot) {
    auto const root = RecordingObserver::make("root", log);
    a->known["b"] = b;
    b->known["x"] = observable;
    root->known = {{"a", a}, {"#7", b}};
    ObservingObject const* const x = observable.get();
    std::pair<char const*, ObservingObject const*> const relative[] = {
        {"", a.get()},    {"b", b.get()},   {"c", nullptr},     {"b/x", x},   {"b//x/", x},
        {"b/y", nullptr}, {"c/x", nullptr}, {"b/x/z", nullptr}, {" \tb/x", x}};
    std::pair<char const*, ObservingObject const*> const absolute[] = {
        {"/a", a.get()}, {" ///a/b/x", x}, {"/ / /a", a.get()}, {"/", root.get()},
        {"#7", b.get()}, {"#8", nullptr},  {" ", nullptr}};
    for (auto const& usedRoot : {root, std::shared_ptr<RecordingObserver>()}) {
        RecordingObserver::setPathRoot(usedRoot);
        for (auto const& [path, expected] : relative)
            EXPECT_EQ(expected, a->inqObserver(path).lock().get()) << path;
        for (auto const& [path, expected] : absolute)
            EXPECT_EQ(usedRoot ? expected : nullptr, std::as_const(*a).inqObserver(path).lock().get())
                << path;
    }
    EXPECT_EQ(a.get(), a->inqObserver(std::nullopt).lock().get());
    RecordingObserver::setPathRoot(root);
    std::string const slashes(1'000'000, '/');
    EXPECT_EQ(a.get(), b->inqObserver(slashes + "a" + slashes).lock().get());
}

TEST_F(Watching, PathsAreWrittenAsSeenFromAnother) {
    using Text = std::optional<std::string>;
    using Row = std::tuple<Text, Text, Text>;
    Row const rows[] = {{"/a/b", "/", "/a/b"},      {"/a/b", "/a", "b"},
                        {"/a", "/a/b", "~/"},       {"/a/b", "/a/c", "~/b"},
                        {"/a/b", "/x", "~/a/b"},    {"/a/b/c", "/a/x/y", "~/~/b/c"},
                        {"/a", "/a", ""},           {"/ab", "/a", "~/ab"},
                        {"/a", std::nullopt, "/a"}, {std::nullopt, "/a", std::nullopt}};
    for (auto const& [own, other, expected] : rows) {
        a->objectPath = own;
        b->objectPath = other;
        EXPECT_EQ(expected, a->inqObjPath(b.get())) << own.value_or("-") << " from " << other.value_or("-");
        EXPECT_EQ(own, a->inqObjPath(nullptr));
    }
    a->objectPath = std::nullopt;
    b->objectPath = "/b";
    b->known["a"] = a;
    EXPECT_EQ("a", a->inqObjPath(b.get())) << "found by its name";
}

} // namespace
