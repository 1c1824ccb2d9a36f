// SPDX-License-Identifier: MIT
#include "observation/ObservationFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// A short or a long list of references, and the foreign code that runs in the middle of an operation.
struct ForeignCode : ObservationTest {
    std::vector<std::shared_ptr<RecordingObserver>> observers;

    void fill(int count) {
        observable = RecordingObservable::make();
        observers.clear();
        for (int i = 0; i < count; ++i) {
            observers.push_back(RecordingObserver::make("o", log, "/o" + std::to_string(i)));
            observable->known["/o" + std::to_string(i)] = observers.back();
            observable->addObserver(*observers.back(), static_cast<short>(1 + i % 3), NOTIFY, false);
            observable->addPreObserver(*observers.back(), 1, NOTIFY, false);
        }
        observable->addObserver("/nobody", 1, NOTIFY, false);
    }
    static ObserverPath pathTo2(std::uint64_t action) {
        return {std::nullopt, std::optional<std::string const>("/o2"), 1, action};
    }
    void remove(std::size_t first, std::size_t last) {
        for (std::size_t i = first; observable && i < std::min(last, observers.size()); ++i)
            observable->rmObserver(*observers[i]);
    }
    void addAll() {
        for (std::size_t i = 0; observable && i < observers.size(); ++i)
            observable->addObserver(*observers[i], 2, PRE_NOTIFY, false);
    }
    /// Observers know exactly the links that are there.
    void expectConsistency() {
        for (auto const& observer : observers) {
            bool isHeld = false;
            for (std::uint64_t i = 0; observable && i < numLinks(*observable); ++i)
                if (ObserverPath& path = observable->getPath(i); path.isActive())
                    isHeld = isHeld || &path.lookupObserver()->get() == observer.get();
            EXPECT_EQ(!isHeld, observer->watchesNothing());
        }
        if (observable)
            observable->tell();
    }
};

using Case = ForeignCode;
using Act = std::pair<char const*, void (*)(Case&)>;

Act const acts[] = {
    {"removes one", [](Case& t) { t.remove(2, 3); }},
    {"removes all", [](Case& t) { t.remove(0, 99); }},
    {"adds some", [](Case& t) { t.addAll(); }},
    {"ends the observers", [](Case& t) { t.observers.clear(); }},
    {"ends the observable", [](Case& t) { t.observable.reset(); }},
};

TEST_F(ForeignCode, MayDoAnythingWhilePathsAreCompared) {
    using O = RecordingObservable;
    using Path = ObserverPath;
    // The path names the third observer.
    std::pair<char const*, void (*)(Case&, O&, Path&)> const operations[] = {
        {"adds a path", [](Case&, O& o, Path&) { o.addObserver("/o2", 1, NOTIFY, false); }},
        {"looks a path up", [](Case&, O& o, Path& path) { o.lookupPath(path); }},
        {"removes by path", [](Case&, O& o, Path& path) { o.removePath(path); }},
        {"removes a listed one", [](Case&, O& o, Path&) { o.removePath(o.getPath(2)); }},
        {"is informed", [](Case&, O& o, Path&) { o.informRmObservedBy(pathTo2(PRE_NOTIFY)); }},
        {"turns one into a path", [](Case&, O& o, Path&) { o.getPath(2).setObserverAsPath(std::nullopt); }},
        {"redirects", [](Case& t, O& o, Path&) { o.getPath(1).setObserver(*t.observers[2], true); }},
        {"compares", [](Case&, O& o, Path& path) { EXPECT_TRUE(path == o.getPath(2)); }},
        {"resolves", [](Case&, O& o, Path&) { o.updateObserverLists(true); }},
        {"activates", [](Case&, O& o, Path&) { o.getPath(o.getNumPrePaths()).activate(); }},
        {"is copied", [](Case&, O& o, Path&) { ForeignCode::copyOf(o); }},
        {"is written", [](Case&, O& o, Path&) { text(o); }},
        {"is taken over", [](Case& t, O&, Path&) { t.b->takeOverObservationsFrom(*t.observers[2]); }},
    };
    for (int const count : {5, 40})
        for (auto const& [actName, act] : acts)
            for (auto const& [name, operate] : operations) {
                SCOPED_TRACE(std::string(name) + " and it " + actName + ", " + std::to_string(count));
                fill(count);
                int acted = 0;
                observers[2]->asked = observable->asked = [&, chosen = act] {
                    if (++acted == 1)
                        chosen(*this);
                };
                ObserverPath path = pathTo2(NOTIFY);
                operate(*this, *observable, path);
                expectConsistency();
            }
}

TEST_F(ForeignCode, MayComeWithTheEndOfAnActionsGroup) {
    // Of the links the pre list has one, the post list that to nobody, another one, and four of such actions.
    Act const operations[] = {
        {"removes the observer", [](Case& t) { t.observable->rmObserver(*t.observers[0]); }},
        {"is informed", [](Case& t) { t.observable->informRmObservedBy(*t.observers[0]); }},
        {"removes one", [](Case& t) { t.observable->removePath(std::uint64_t{3}); }},
        {"removes equal ones", [](Case& t) { t.observable->removePath(t.observable->getPath(3)); }},
        {"assigns", [](Case& t) { t.observable->getPath(3) = ObserverPath(); }},
        {"changes the action", [](Case& t) { t.observable->getPath(3).setAction(NOTIFY); }},
        {"ends the observer", [](Case& t) { auto const ended = std::exchange(t.observers, {}); }},
        {"ends the observable", [](Case& t) { t.observable.reset(); }},
        {"adds a link", [](Case& t) { t.observable->addObserver(*t.observers[0], 9, PRE_NOTIFY, false); }},
        {"tells", [](Case& t) { t.observable->tell(); }},
        {"tells after they went",
         [](Case& t) {
             t.observable->asked = [&t] { t.remove(0, 1); };
             t.observable->updateObserverLists(false);
             t.observable->tell();
         }},
    };
    for (auto const& [actName, act] : acts)
        for (auto const& [name, operate] : operations) {
            SCOPED_TRACE(std::string(name) + " and it " + actName);
            fill(1);
            int ended = 0;
            for (short priority = 2; priority < 6; ++priority)
                addLost(*observers[0], priority, [&, chosen = act] {
                    ++ended;
                    chosen(*this);
                });
            observers[0]->changed = doing([o = observable.get()] { o->removePath(std::uint64_t{2}); });
            operate(*this);
            remove(0, 1);
            observable.reset();
            observers.clear();
            EXPECT_EQ(4, ended);
        }
}

} // namespace
