// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttributeWriteProtection.h>

#include "foundation/MakeError.h"

#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/WtAttribute.h>
#include <ErrorHandling/Logger.h>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "AttributeWriteProtection";
constexpr short priority = 100;
constexpr std::uint64_t notifyToken = 0;
constexpr std::uint64_t preNotifyToken = 1;

/// Sets a flag for a scope.
class FlagScope {
public:
    explicit FlagScope(bool& flag) : flag_(flag) { flag = true; }
    ~FlagScope() { flag_ = false; }
    FlagScope(FlagScope const&) = delete;
    FlagScope& operator=(FlagScope const&) = delete;

private:
    bool& flag_;
};

} // namespace

AttributeWriteProtection::AttributeWriteProtection(std::shared_ptr<Attribute> const& attribute,
                                                   Check const& check)
    : Observer(std::nullopt), attribute_(attribute), check_(check),
      protectedText_(attribute->getValueAsText()),
      protectedValue_(attribute->duplicate(CreateType::Deep, std::nullopt)) {}

AttributeWriteProtection::~AttributeWriteProtection() = default;

std::shared_ptr<AttributeWriteProtection>
AttributeWriteProtection::create(std::shared_ptr<Attribute> const& attribute, Check const& check) {
    if (!attribute || !check)
        return nullptr;
    std::shared_ptr<AttributeWriteProtection> protection(new AttributeWriteProtection(attribute, check));
    attribute->addPreObserver(*protection, priority, preNotifyToken, true);
    attribute->addObserver(*protection, priority, notifyToken, true);
    return protection;
}

std::string AttributeWriteProtection::getName() { return getStaticClassName(); }

std::string const& AttributeWriteProtection::getStaticClassName() {
    static std::string const& name = *new std::string(sourceName);
    return name;
}

std::string const& AttributeWriteProtection::getClassName() const { return getStaticClassName(); }

void AttributeWriteProtection::logRefusal(std::string const& requested, int line,
                                          char const* function) const {
    ErrorHandling::Logger::appendLogMsgExt(
        "Trying to modify write protected attribute value. Original value: " + protectedText_ +
            " New requested value: " + requested,
        3, sourceName, line, function);
}

Action::ExecReturn
AttributeWriteProtection::toChangeNotify(Observable& observable,
                                         std::optional<std::reference_wrapper<ObservingObject>>& cause) {
    if (isRestoring_ || (cause && &cause->get() == this))
        return Action::ExecNotHandled;
    // The check, and a sink of the logger, may let go of this protection and of the attribute.
    auto const self = shared_from_this();
    auto const attribute = attribute_.lock();
    if (!attribute)
        return Action::ExecOk;
    auto const requested = check_(*attribute);
    if (!requested)
        return Action::ExecNotHandled;
    logRefusal(*requested, 33, "Zorvan::AttributeContainer::AttributeWriteProtection::toChangeNotify");
    // Usually the same object; the refusal belongs to what is being changed.
    observable.addNotifyInfo(std::make_shared<InfoFailed>(makeError(sourceName, 106, WriteProtected)));
    return Action::ExecFailed;
}

Action::ExecReturn
AttributeWriteProtection::changedNotify(Observable&,
                                        std::optional<std::reference_wrapper<ObservingObject>>& cause) {
    if (isRestoring_ || (cause && &cause->get() == this))
        return Action::ExecNotHandled;
    auto const self = shared_from_this();
    std::shared_ptr<Attribute> const attribute(attribute_);
    if (auto const requested = check_(*attribute)) {
        // Two protections of one attribute would otherwise restore each other for ever.
        FlagScope const restoring(isRestoring_);
        {
            BlockObserver const unasked;
            *attribute = *protectedValue_; // first: whatever fails then, the value is protected
        }
        logRefusal(*requested, 53, "Zorvan::AttributeContainer::AttributeWriteProtection::changedNotify");
        attribute->touch(self, nullptr);
    }
    return Action::ExecFailed;
}

} // namespace Zorvan::AttributeContainer
