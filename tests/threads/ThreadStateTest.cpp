// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"
#include "threads/Activities.h"

#include <AttributeContainer/CachedAttributeInfo.h>
#include <AttributeContainer/ModelInFormat.h>

namespace Zorvan::AttributeContainer::Testing {

namespace {

/// What a thread switches on for itself.
struct Switch {
    char const* name;
    void (*set)(Object& tree);
};

constexpr Switch switches[] = {
    {"observing is blocked", [](Object&) { Attribute::setObservingBlocked(true); }},
    {"a staged value is pending",
     [](Object& tree) {
         tree.getAttr("follower")
             .lock()
             ->addNotifyInfo(std::make_shared<CachedAttributeInfo>(std::make_shared<CustAttr<int>>(77)));
         Attribute::setIsCachedAttributePending(true);
     }},
    {"a refusal is attached",
     [](Object& tree) { refuse(*tree.getField("cfg").lock()->getAttr("level").lock()); }},
    {"paths begin elsewhere", [](Object&) { RecordingObserver::setPathRoot(Object::create()); }},
    {"a keyword is handed on", [](Object&) { ModelInFormat::setPropagateKeyword(std::string("}")); }},
    {"there is an info container",
     [](Object& tree) {
         static auto const info = AttrContainer::create();
         tree.addAttrContInfo(info);
     }},
};

} // namespace

TEST(ThreadState, IsNotSeenOnAnotherThread) {
    for (auto const& [name, set] : switches)
        for (bool const hasEnded : {false, true}) {
            SCOPED_TRACE(std::string(name) + (hasEnded ? ", on a thread that has ended" : ""));
            auto const tree = makeTree(1);
            Meeting meeting(2);
            std::thread other([&, &setIt = set] {
                setIt(*tree);
                meeting.arriveAndWait();
                if (!hasEnded)
                    meeting.arriveAndWait();
            });
            meeting.arriveAndWait();
            if (hasEnded)
                other.join();
            useTree(*tree);
            EXPECT_FALSE(Attribute::isObservingBlocked() || Attribute::isCachedAttributePending());
            EXPECT_TRUE(tree->lookupAttrContInfo().expired());
            if (!hasEnded) {
                meeting.arriveAndWait();
                other.join();
            }
        }
}

} // namespace Zorvan::AttributeContainer::Testing
