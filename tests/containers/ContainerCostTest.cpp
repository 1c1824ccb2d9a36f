// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

#include <AttributeContainer/Visitors.h>

#include <gtest/gtest.h>

#include <chrono>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

std::string numbered(int i) { return "member" + std::to_string(i); }

struct Wide {
    std::shared_ptr<Object> object = Object::create();
    int size;

    void addFields(int mode = 0) {
        for (int i = 0; i < size; ++i)
            object->addField(AttrContainer::create(), mode == 16 ? "member" : numbered(i), mode);
    }
    void addAttributes() {
        for (int i = 0; i < size; ++i)
            object->addAttribute(std::make_shared<CustAttr<int>>(i), numbered(i));
    }
    void addChildren(int flags = 0) {
        for (int i = 0; i < size; ++i) {
            auto const child = Object::create();
            if (!(flags & 16))
                static_cast<void>(child->setName(numbered(i), 0));
            object->addChild(child, flags);
        }
    }
};

struct Job {
    char const* name;
    void (*prepare)(Wide&);
    void (*run)(Wide&);
};

constexpr Job jobs[] = {
    {"add fields under unique names", [](Wide&) {}, [](Wide& w) { w.addFields(16); }},
    {"count up from every taken name", [](Wide& w) { w.addFields(); },
     [](Wide& w) {
         for (int i = 0; i < w.size; ++i)
             w.object->addField(AttrContainer::create(), numbered(i), 16);
     }},
    {"look up fields", [](Wide& w) { w.addFields(); },
     [](Wide& w) {
         for (int i = 0; i < w.size; ++i)
             EXPECT_NE(noToken, w.object->getFieldToken(*w.object->getField(numbered(i)).lock()));
     }},
    {"remove fields that are there twice",
     [](Wide& w) {
         w.addFields();
         for (int i = 0; i < 2; ++i)
             w.object->addField(w.object->getField(std::uint64_t{0}).lock(), "again", 4);
     },
     [](Wide& w) {
         for (int i = 1; i < w.size; ++i)
             w.object->rmField(w.object->getField(numbered(i)).lock());
     }},
    {"copy fields", [](Wide& w) { w.addFields(); }, [](Wide& w) { w.object->duplicate(CreateType::Deep); }},
    {"destroy fields", [](Wide& w) { w.addFields(); }, [](Wide& w) { w.object.reset(); }},
    {"visit fields", [](Wide& w) { w.addFields(); },
     [](Wide& w) {
         CollectFields all([](AttrContainer const&) { return true; }, 1, 1);
         w.object->fieldVisitor(all, 1);
         EXPECT_EQ(static_cast<std::uint64_t>(w.size), all.getNumElements());
     }},
    {"add attributes", [](Wide&) {}, [](Wide& w) { w.addAttributes(); }},
    {"remove attributes", [](Wide& w) { w.addAttributes(); },
     [](Wide& w) {
         for (int i = 0; i < w.size; ++i)
             EXPECT_TRUE(w.object->rmAttribute(numbered(i)));
     }},
    {"copy attributes", [](Wide& w) { w.addAttributes(); },
     [](Wide& w) { w.object->duplicate(CreateType::Deep); }},
    {"add children", [](Wide&) {}, [](Wide& w) { w.addChildren(); }},
    {"add children under unique names", [](Wide&) {}, [](Wide& w) { w.addChildren(16); }},
    {"rename children", [](Wide& w) { w.addChildren(); },
     [](Wide& w) {
         for (int i = 0; i < w.size; ++i)
             static_cast<void>(w.object->inqObject(numbered(i))->setName("x" + numbered(i), 0));
     }},
    {"remove every second child", [](Wide& w) { w.addChildren(); },
     [](Wide& w) {
         for (std::uint64_t i = 0; i < w.object->children().getNumChildren(); ++i)
             w.object->rmChild(*w.object->children().getChild(i), 0);
     }},
    {"remove children at a position", [](Wide& w) { w.addChildren(); },
     [](Wide& w) {
         while (w.object->rmChild(1, 0)) {
         }
     }},
    {"destroy children", [](Wide& w) { w.addChildren(); }, [](Wide& w) { w.object.reset(); }},
};

/// The time for one member: the best of several tries, because other programs
/// run meanwhile.
double timeOfOne(Job const& job, int size) {
    double best = 1e9;
    for (int attempt = 0; attempt < 3; ++attempt) {
        Wide wide{.size = size};
        job.prepare(wide);
        auto const start = std::chrono::steady_clock::now();
        job.run(wide);
        best = std::min(
            best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / size);
    }
    return best;
}

// Fifteen times as many members: each may cost a few times as much, since they
// no longer fit the caches; a search in each step would cost fifteen times.
TEST(ContainerCost, OfOneMemberHardlyGrowsWithTheirNumber) {
    for (Job const& job : jobs) {
        double const few = timeOfOne(job, 400), many = timeOfOne(job, 6'000);
        EXPECT_LT(many, 5 * few) << job.name;
    }
}

} // namespace
