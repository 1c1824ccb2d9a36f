// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ObserverInfo.h>

#include <string>
#include <utility>

namespace Zorvan::AttributeContainer {

/// The class name shared by all instantiations of NewValueInfo: the literal "NewValueInfo<T>".
KX_ATTRIBUTECONTAINER_API std::string const& newValueInfoClassName();

/// Carries the value that a change proposes; pre-observers find it on the attribute with
/// `lookupNotifyInfo(typeid(NewValueInfo<T>))`.
template <class T>
class NewValueInfo : public ObserverInfo {
public:
    explicit NewValueInfo(T const& newValue) : newValue_(newValue) {}

    static std::string const& getStaticClassName() { return newValueInfoClassName(); }
    std::string const& getClassName() const override { return newValueInfoClassName(); }

    /// The proposed value.
    T const& getNewValue() const { return newValue_; }

private:
    T newValue_;
};

} // namespace Zorvan::AttributeContainer
