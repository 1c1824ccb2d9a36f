// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttrVal.h>
#include <AttributeContainer/NewValueInfo.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueTypes.h>
#include <AttributeContainer/WtAttribute.h>

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

class AttributeChange;

/// An attribute that holds a value of type `T`, one of the library's closed set of value types.
///
///     Attr<int>& count = ...;
///     count.setValue(5);                 // asks, stores, tells
///     int const now = count.getValue();  // 5, unless a pre-observer refused
///
/// A change asks the pre-observers from the highest priority down (the latest added first among equals); they
/// find the proposed value in an attached NewValueInfo<T> and refuse by attaching an InfoFailed. A refused
/// change stores nothing and tells nobody. Otherwise the value is stored and the post-observers are told in
/// the same order.
template <class T>
class KX_ATTRIBUTECONTAINER_API Attr : public Attribute {
public:
    using ValueType = T;

    /// The type name of `T`, such as "Attr<Vec3dd>".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    /// The value; the staged one while a cached attribute is pending on this thread. Valid until the next
    /// change.
    T const& getValue() const;
    /// The notified change. Each promise may be empty. A refused change fulfils the first and drops the
    /// second, one that nobody hears of (blocked observation) drops both. `value` may be the attribute's own.
    /// Should a pre-observer throw, or memory run short before the value is stored, nothing has changed;
    /// should a post-observer throw, the value is stored. Promises that were not fulfilled are dropped then.
    void setValue(T const& value, std::shared_ptr<ObservingObject> const& origin, ResultPromise preResults,
                  ResultPromise postResults);
    /// The notified change without origin and results.
    void setValue(T const& value);

    std::shared_ptr<Attribute>
    duplicate(CreateType type, std::optional<std::reference_wrapper<AttrContainer const>> location) override;
    Attribute& operator=(Attribute const& source) override;
    Attr& operator=(Attr const& source) {
        operator=(static_cast<Attribute const&>(source));
        return *this;
    }
    bool isEqual(Attribute const& other) const override;
    void touch(std::shared_ptr<ObservingObject> const& origin, NotificationResults* results) override;
    void assignFrom(std::string const& text, std::shared_ptr<ObservingObject> const& origin,
                    ResultPromise preResults, ResultPromise postResults) override;
    using Attribute::getValueAsText;
    std::string getValueAsText() override;

    [[nodiscard]] Result readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) override;
    [[nodiscard]] Result writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) override;
    void readValueFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) override;

protected:
    /// Holds the initial value of `T` (0, false, empty) and no links.
    Attr();
    ~Attr() override;

private:
    friend class AttributeAccess;

    std::type_info const& proposedValueType() const override;
    bool isWithinTolerance(Attribute const& other) const override;
    bool appendValue(LineWriter& line, bool withInitialValues) const override;
    AttrVal<T> const& valueHolder() const;
    bool isUnwatched(NotifyingThread const& thread) const;
    void changeTold(T const& value, NotifyingThread& thread);
    void changeWatched(T const& value, std::shared_ptr<ObservingObject> const& origin,
                       ResultPromise const& preResults, ResultPromise const& postResults,
                       NotifyingThread& thread);
    bool isChangeAllowed(AttributeChange const& change, T const& value,
                         std::shared_ptr<ObservingObject> const& origin, ResultPromise const& preResults,
                         std::shared_ptr<NewValueInfo<T>>& proposed);
    template <class U>
    void store(U&& value);

    AttrVal<T> holder_;
};

} // namespace Zorvan::AttributeContainer
