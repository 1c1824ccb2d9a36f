// SPDX-License-Identifier: MIT

// This library's attributes and observers.

#include "../ChangeTasks.h"
#include "Kx.h"

#include <vector>

namespace bench {

namespace {

constexpr std::uint64_t notify = 0, preNotify = 1, propagate = 2;
constexpr short priority = 10;

using Cause = std::optional<std::reference_wrapper<kx::ObservingObject>>;

class Counter : public kx::Observer {
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

class Refuser : public Counter {
public:
    kx::Action::ExecReturn toChangeNotify(kx::Observable& observable, Cause&) override {
        ++calls;
        observable.addNotifyInfo(std::make_shared<kx::InfoFailed>(
            std::make_unique<Zorvan::ErrorHandling::ErrorWithCode<kx::ErrorCode>>("bench", __LINE__,
                                                                                  kx::WriteProtected)));
        return kx::Action::ExecFailed;
    }
};

/// An attribute of a container.
class Subject {
public:
    Subject() { container_->addAttribute(attribute_, "value"); }
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
    std::vector<std::shared_ptr<Counter>> observers_;
};

struct KxChanges {
    static constexpr char name[] = "KX";

    struct Post : Subject {
        explicit Post(std::size_t numObservers) {
            for (std::size_t i = 0; i < numObservers; ++i)
                attribute().addObserver(newObserver<Counter>(), priority, notify, true);
        }
    };

    struct Pre : Subject {
        Pre(std::size_t numObservers, bool refuses) {
            for (std::size_t i = 0; i < numObservers; ++i)
                attribute().addPreObserver(refuses ? newObserver<Refuser>() : newObserver<Counter>(),
                                           priority, preNotify, true);
        }
    };

    struct Links : Post {
        using Post::Post;
        void connectAndDisconnect() {
            attribute().addObserver(*guest_, priority, notify, true);
            attribute().rmObserver(*guest_);
        }

    private:
        std::shared_ptr<Counter> guest_ = std::make_shared<Counter>();
    };

    class Chain {
    public:
        explicit Chain(std::size_t length) {
            for (std::size_t i = 0; i < length; ++i) {
                auto const attribute = std::make_shared<kx::CustAttr<int>>(0);
                container_->addAttribute(attribute, "value" + std::to_string(i));
                if (i > 0)
                    attributes_.back()->addObserver(*attribute->getObserver().lock(), priority, propagate,
                                                    true);
                attributes_.push_back(attribute);
            }
        }
        void set(int value) { attributes_.front()->setValue(value); }
        int value() const { return attributes_.back()->getValue(); }

    private:
        std::shared_ptr<kx::AttrContainer> container_ = kx::AttrContainer::create();
        std::vector<std::shared_ptr<kx::CustAttr<int>>> attributes_;
    };
};

Registration const registration(ChangeTasks<KxChanges>::contender());

} // namespace

} // namespace bench
