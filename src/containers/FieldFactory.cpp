// SPDX-License-Identifier: MIT
#include <AttributeContainer/FieldFactory.h>

#include <AttributeContainer/ArrayContainer.h>
#include <AttributeContainer/Object.h>
#include <AttributeContainer/UnknownAttrContainer.h>

#include <mutex>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

// Guards the registered classes. No foreign code runs while it is held. Never destroyed, like the factory.
std::mutex& registrations() {
    static auto& mutex = *new std::mutex();
    return mutex;
}

} // namespace

FieldFactory::FactoryRegistration::FactoryRegistration(std::string const& name,
                                                       std::shared_ptr<FieldFactory const> factory)
    : name_(name), factory_(std::move(factory)) {}

FieldFactory::FactoryRegistration::~FactoryRegistration() { FieldFactory::removeField(name_); }

FieldFactory::FieldFactory() = default;

FieldFactory::~FieldFactory() = default;

std::shared_ptr<FieldFactory> FieldFactory::the() {
    // Never released: registrations and readers of applications may come after every static object has gone.
    static auto const& instance = *new std::shared_ptr<FieldFactory>([] {
        auto factory = std::make_shared<FieldFactory>();
        factory->add<ArrayContainer>();
        factory->add<AttrContainer>();
        factory->add<Object>();
        factory->add<UnknownAttrContainer>();
        return factory;
    }());
    return instance;
}

template <class T>
void FieldFactory::add() {
    creators_.try_emplace(T::getStaticClassName(),
                          []() -> std::shared_ptr<AttrContainer> { return T::create(CreateType::Deep, {}); });
}

std::shared_ptr<AttrContainer> FieldFactory::createField(std::string const& name) {
    Creator creator;
    {
        std::lock_guard const lock(registrations());
        auto const found = creators_.find(name);
        if (found == creators_.end())
            return nullptr;
        creator = found->second;
    }
    return creator(); // It may register or remove classes.
}

std::shared_ptr<Object> FieldFactory::createObject(std::string const& name) {
    return std::dynamic_pointer_cast<Object>(createField(name));
}

std::vector<std::string> FieldFactory::getAllRegisteredFields() {
    std::lock_guard const lock(registrations());
    std::vector<std::string> names;
    names.reserve(creators_.size());
    for (auto const& entry : creators_)
        names.push_back(entry.first);
    return names;
}

bool FieldFactory::removeField(std::string const& name) {
    auto const factory = the();
    std::lock_guard const lock(registrations());
    return factory->creators_.erase(name) != 0;
}

// NOLINTBEGIN(performance-unnecessary-value-param): it is moved where the name is new.
std::unique_ptr<FieldFactory::FactoryRegistration> FieldFactory::registerCreator(std::string const& name,
                                                                                 Creator creator) {
    // NOLINTEND(performance-unnecessary-value-param)
    auto const factory = the();
    std::lock_guard const lock(registrations());
    auto const [entry, isNew] = factory->creators_.try_emplace(name, std::move(creator));
    if (!isNew)
        return nullptr;
    try {
        return std::make_unique<FactoryRegistration>(name, factory);
    } catch (...) {
        factory->creators_.erase(entry);
        throw;
    }
}

} // namespace Zorvan::AttributeContainer
