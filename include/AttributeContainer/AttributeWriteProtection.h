// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Observer.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

class Attribute;

/// Protects an attribute against changes.
///
/// The check function is called before and after every change; it returns the requested value as text to
/// refuse the change, nothing to allow it. A refused change fails with `WriteProtected`. A change that came
/// in by a way that asks nobody (text, staged values) is undone: the value that the attribute had when the
/// protection was made is stored again and the post-observers are told, with the protection as origin.
///
///     auto protection = AttributeWriteProtection::create(attribute, [](Attribute& a) {
///         return std::optional<std::string>(a.getValueAsText());
///     });
class KX_ATTRIBUTECONTAINER_API AttributeWriteProtection : public Observer {
public:
    using Check = std::function<std::optional<std::string>(Attribute&)>;

    /// Protects `attribute` as long as the returned object lives. The current value is the protected one. The
    /// result is empty for an empty attribute or check.
    [[nodiscard]] static std::shared_ptr<AttributeWriteProtection>
    create(std::shared_ptr<Attribute> const& attribute, Check const& check);
    ~AttributeWriteProtection() override;

    using Observer::getName;
    /// "AttributeWriteProtection".
    std::string getName() override;
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    /// Refuses with an attached InfoFailed and `ExecFailed` when the check returns a text.
    Action::ExecReturn toChangeNotify(Observable& observable,
                                      std::optional<std::reference_wrapper<ObservingObject>>& cause) override;
    /// Restores the protected value when the check returns a text. `ExecFailed` unless it caused the change
    /// itself.
    Action::ExecReturn changedNotify(Observable& observable,
                                     std::optional<std::reference_wrapper<ObservingObject>>& cause) override;

private:
    AttributeWriteProtection(std::shared_ptr<Attribute> const& attribute, Check const& check);

    void logRefusal(std::string const& requested, int line, char const* function) const;

    std::weak_ptr<Attribute> attribute_;
    Check check_;
    std::string protectedText_;
    std::shared_ptr<Attribute> protectedValue_; ///< A duplicate: the text form loses digits and more.
    bool isRestoring_ = false;
};

} // namespace Zorvan::AttributeContainer
