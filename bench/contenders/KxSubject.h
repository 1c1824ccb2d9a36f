// SPDX-License-Identifier: MIT
#pragma once

#include "Kx.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace bench {

inline constexpr std::uint64_t notify = 0, preNotify = 1, propagate = 2;
inline constexpr short priority = 10;

using Cause = std::optional<std::reference_wrapper<kx::ObservingObject>>;

class KxCounter : public kx::Observer {
public:
    std::string getName() override { return "counter"; }
    kx::Action::ExecReturn changedNotify(kx::Observable&, Cause&) override {
        ++calls;
        return kx::Action::ExecOk;
    }
    kx::Action::ExecReturn toChangeNotify(kx::Observable&, Cause&) override {
        ++calls;
        return kx::Action::ExecOk;
    }
    std::uint64_t calls = 0;
};

class KxRefuser : public KxCounter {
public:
    kx::Action::ExecReturn toChangeNotify(kx::Observable& observable, Cause&) override {
        ++calls;
        observable.addNotifyInfo(std::make_shared<kx::InfoFailed>(
            std::make_unique<Zorvan::ErrorHandling::ErrorWithCode<kx::ErrorCode>>("bench", __LINE__,
                                                                                  kx::WriteProtected)));
        return kx::Action::ExecFailed;
    }
};

/// An attribute of a container, with the observers that it is given.
class KxSubject {
public:
    KxSubject() { container_->addAttribute(attribute_, "value"); }
    void set(int value) { attribute_->setValue(value); }
    int value() const { return attribute_->getValue(); }
    std::uint64_t calls() const {
        std::uint64_t sum = 0;
        for (auto const& observer : observers_)
            sum += observer->calls;
        return sum;
    }

protected:
    kx::Attr<int>& attribute() { return *attribute_; }
    template <class Kind>
    kx::Observer& newObserver() {
        return *observers_.emplace_back(std::make_shared<Kind>());
    }

private:
    std::shared_ptr<kx::AttrContainer> container_ = kx::AttrContainer::create();
    std::shared_ptr<kx::CustAttr<int>> attribute_ = std::make_shared<kx::CustAttr<int>>(0);
    std::vector<std::shared_ptr<KxCounter>> observers_;
};

/// Observers that are told.
struct KxPost : KxSubject {
    explicit KxPost(std::size_t numObservers) {
        for (std::size_t i = 0; i < numObservers; ++i)
            attribute().addObserver(newObserver<KxCounter>(), priority, notify, true);
    }
};

/// Observers that are asked, all of which allow everything or refuse it.
struct KxPre : KxSubject {
    KxPre(std::size_t numObservers, bool refuses) {
        for (std::size_t i = 0; i < numObservers; ++i)
            attribute().addPreObserver(refuses ? newObserver<KxRefuser>() : newObserver<KxCounter>(),
                                       priority, preNotify, true);
    }
};

} // namespace bench
