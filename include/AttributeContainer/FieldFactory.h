// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/CreateType.h>
#include <AttributeContainer/Export.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Zorvan::AttributeContainer {

class AttrContainer;
class Object;

/// Makes containers by class name, so that readers can create what a document names.
///
///     static auto const registration = FieldFactory::registerField<Country>("Country");
///
/// One instance per process. Registrations may be static objects in any order of translation units and
/// libraries. Any thread may register, remove and create at any time; creators run on the thread that asks.
class KX_ATTRIBUTECONTAINER_API FieldFactory {
public:
    using Creator = std::function<std::shared_ptr<AttrContainer>()>;

    /// Owns one entry of the registry: destroying it removes the name, whoever registered it last.
    class KX_ATTRIBUTECONTAINER_API FactoryRegistration {
    public:
        /// Registers nothing by itself.
        FactoryRegistration(std::string const& name, std::shared_ptr<FieldFactory const> factory);
        ~FactoryRegistration();
        FactoryRegistration(FactoryRegistration const&) = delete;
        FactoryRegistration& operator=(FactoryRegistration const&) = delete;

    private:
        std::string name_;
        std::shared_ptr<FieldFactory const> factory_;
    };

    FieldFactory();
    ~FieldFactory();
    FieldFactory(FieldFactory const&) = delete;
    FieldFactory& operator=(FieldFactory const&) = delete;

    /// The process-wide instance, made with the library's own classes on the first call.
    static std::shared_ptr<FieldFactory> the();

    /// A new instance of the class registered under `name`; empty when there is none. Throws what the class's
    /// `create` throws.
    std::shared_ptr<AttrContainer> createField(std::string const& name);
    /// The same for classes derived from Object; empty for other classes.
    std::shared_ptr<Object> createObject(std::string const& name);
    /// All registered names, in no particular order.
    std::vector<std::string> getAllRegisteredFields();
    /// Removes an entry; false when there was none.
    static bool removeField(std::string const& name);

    /// Registers class `T`, which is made by `T::create`. Empty when the name is taken: the earlier entry
    /// stays.
    template <class T>
    [[nodiscard]] static std::unique_ptr<FactoryRegistration> registerField(std::string const& name) {
        return registerCreator(
            name, []() -> std::shared_ptr<AttrContainer> { return T::create(CreateType::Deep, {}); });
    }

private:
    static std::unique_ptr<FactoryRegistration> registerCreator(std::string const& name, Creator creator);
    template <class T>
    void add();

    std::unordered_map<std::string, Creator> creators_;
};

} // namespace Zorvan::AttributeContainer
