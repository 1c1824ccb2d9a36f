// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Observer.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

class AttrContainer;
class BlockUpdateObservers;
class ExchangePtr;
class Observable;

/// Which observer is the copy of which, while the calling thread copies a tree. Made by the first scope that
/// a thread opens, gone with its last one.
class KX_ATTRIBUTECONTAINER_API ObserverRelationTableObserver : public Observer {
public:
    ~ObserverRelationTableObserver() override;

    /// "ObserverRelationTableObserver".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;
    using Observer::getName;
    /// "ObserverRelationTableObserver".
    std::string getName() override;

private:
    friend class BlockUpdateObservers;
    friend class ExchangePtr;
    friend class ObservationAccess;
    friend class Observable;
    friend class Observer;
    friend class PreserveObserverRelation;

    using Containers = std::vector<std::weak_ptr<AttrContainer>>;

    ObserverRelationTableObserver();

    /// The calling thread's table, null when no scope is open.
    static ObserverRelationTableObserver* current() noexcept;
    /// The same, made when there is none.
    static std::shared_ptr<ObserverRelationTableObserver> obtain();
    /// Forgets an observer, as source and as copy, in the calling thread's table.
    static void forget(Observer const& observer) noexcept;

    /// Notes a copy; the first one of a source counts.
    void record(Observer const& source, Observer& copy);
    /// The copy of a source, or null.
    Observer* lookup(Observer const& source);
    /// Notes a container whose links are to be updated.
    void enlist(std::weak_ptr<AttrContainer> container);
    /// Hands the containers over, in the order in which they were noted; none is left here.
    Containers takeEnlisted();

    void clearRelations() noexcept;
    void index();

    std::atomic<std::uint64_t> preserveDepth_{0};
    std::vector<std::pair<Observer const*, Observer*>> recorded_; ///< what is not in the maps yet
    std::unordered_map<Observer const*, Observer*> relations_;
    std::unordered_multimap<Observer const*, Observer const*> sourcesOfCopies_;
    std::uint64_t blockDepth_ = 0;
    Containers enlisted_;
};

/// While such a scope is open on a thread, the thread remembers which observer is the copy of which. The
/// outermost one forgets the relations when it ends. A scope ends on the thread on which it began.
class KX_ATTRIBUTECONTAINER_API PreserveObserverRelation {
public:
    PreserveObserverRelation();
    PreserveObserverRelation(PreserveObserverRelation const&) = delete;
    PreserveObserverRelation& operator=(PreserveObserverRelation const&) = delete;
    virtual ~PreserveObserverRelation() noexcept(false);

protected:
    ObserverRelationTableObserver& table() const { return *table_; }

private:
    std::shared_ptr<ObserverRelationTableObserver> table_;
};

} // namespace Zorvan::AttributeContainer
