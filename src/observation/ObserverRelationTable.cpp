// SPDX-License-Identifier: MIT
#include <AttributeContainer/ObserverRelationTable.h>

#include "observation/ObservationAccess.h"

#include <memory>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

// The table clears the pointer itself when the last scope of the thread lets go of it.
constinit thread_local ObserverRelationTableObserver* currentTable = nullptr;

} // namespace

ObserverRelationTableObserver::ObserverRelationTableObserver() { currentTable = this; }

ObserverRelationTableObserver::~ObserverRelationTableObserver() {
    if (currentTable == this)
        currentTable = nullptr;
}

std::string const& ObserverRelationTableObserver::getStaticClassName() {
    static std::string const& name = *new std::string("ObserverRelationTableObserver");
    return name;
}

std::string const& ObserverRelationTableObserver::getClassName() const { return getStaticClassName(); }

std::string ObserverRelationTableObserver::getName() { return getStaticClassName(); }

ObserverRelationTableObserver* ObserverRelationTableObserver::current() noexcept { return currentTable; }

std::shared_ptr<ObserverRelationTableObserver> ObserverRelationTableObserver::obtain() {
    if (currentTable != nullptr)
        return std::static_pointer_cast<ObserverRelationTableObserver>(currentTable->shared_from_this());
    return std::shared_ptr<ObserverRelationTableObserver>(new ObserverRelationTableObserver());
}

// Usually nothing is looked up, and no observer goes, before all relations are forgotten.
void ObserverRelationTableObserver::index() {
    for (auto const& [source, copy] : recorded_) {
        auto const [it, isNew] = relations_.try_emplace(source, copy);
        if (!isNew)
            continue;
        try {
            sourcesOfCopies_.emplace(copy, source);
        } catch (...) {
            relations_.erase(it);
            throw;
        }
    }
    recorded_.clear();
}

void ObserverRelationTableObserver::forget(Observer const& observer) noexcept {
    ObserverRelationTableObserver* const table = currentTable;
    if (table == nullptr || (table->recorded_.empty() && table->relations_.empty()))
        return;
    try {
        table->index();
    } catch (...) {
        std::erase_if(table->recorded_, [&](auto const& relation) {
            return relation.first == &observer || relation.second == &observer;
        });
    }
    if (auto const asSource = table->relations_.find(&observer); asSource != table->relations_.end()) {
        auto [it, end] = table->sourcesOfCopies_.equal_range(asSource->second);
        while (it != end && it->second != &observer)
            ++it;
        if (it != end)
            table->sourcesOfCopies_.erase(it);
        table->relations_.erase(asSource);
    }
    auto const [begin, end] = table->sourcesOfCopies_.equal_range(&observer);
    for (auto it = begin; it != end; ++it)
        table->relations_.erase(it->second);
    table->sourcesOfCopies_.erase(begin, end);
}

void ObserverRelationTableObserver::record(Observer const& source, Observer& copy) {
    recorded_.emplace_back(&source, &copy);
}

Observer* ObserverRelationTableObserver::lookup(Observer const& source) {
    index();
    auto const found = relations_.find(&source);
    return found == relations_.end() ? nullptr : found->second;
}

void ObserverRelationTableObserver::enlist(std::weak_ptr<AttrContainer> container) {
    enlisted_.push_back(std::move(container));
}

ObserverRelationTableObserver::Containers ObserverRelationTableObserver::takeEnlisted() {
    return std::exchange(enlisted_, {});
}

void ObserverRelationTableObserver::clearRelations() noexcept {
    recorded_.clear();
    relations_.clear();
    sourcesOfCopies_.clear();
}

ObserverRelationTableObserver* ObservationAccess::relationTable() noexcept {
    return ObserverRelationTableObserver::current();
}

PreserveObserverRelation::PreserveObserverRelation() : table_(ObserverRelationTableObserver::obtain()) {
    ++table_->preserveDepth_;
}

PreserveObserverRelation::~PreserveObserverRelation() noexcept(false) {
    if (--table_->preserveDepth_ == 0)
        table_->clearRelations();
}

} // namespace Zorvan::AttributeContainer
