// SPDX-License-Identifier: MIT

// This library's attributes and observers.

#include "../ChangeTasks.h"
#include "KxSubject.h"

#include <vector>

namespace bench {

namespace {

struct KxChanges {
    static constexpr char name[] = "KX";

    using Post = KxPost;
    using Pre = KxPre;

    struct Links : KxPost {
        using KxPost::KxPost;
        void connectAndDisconnect() {
            attribute().addObserver(*guest_, priority, notify, true);
            attribute().rmObserver(*guest_);
        }

    private:
        std::shared_ptr<KxCounter> guest_ = std::make_shared<KxCounter>();
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
