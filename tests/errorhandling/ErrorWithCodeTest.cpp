// SPDX-License-Identifier: MIT
#include <ErrorHandling/ErrorWithCode.h>

#include <gtest/gtest.h>

namespace Shop {
enum class Trouble { Late, Lost };
bool isWarning(Trouble const& trouble) { return trouble == Trouble::Late; }
} // namespace Shop

namespace {

using Shop::Trouble;
using Error = Zorvan::ErrorHandling::ErrorWithCode<Trouble>;

TEST(ErrorWithCode, CloneOutlivesTheErrorAndSharesItsCauses) {
    auto error = std::make_unique<Error>("Parcel", 12, Trouble::Late);
    error = addInfo(addInfo(std::move(error), "Where", "Hall"), "Where", "the first one stays");
    error = addNested(std::move(error), Error("Van", 7, Trouble::Lost));
    error = addNested(std::move(error), Error("Road", 8, Trouble::Late));
    auto const nested = error->getNested();

    auto const base = error->clone();
    error.reset();
    auto const* const clone = dynamic_cast<Error const*>(base.get());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->getFile() + std::to_string(clone->getLine()), "Parcel12");
    EXPECT_TRUE(clone->isWarning());
    EXPECT_EQ(clone->getInfos().size(), 1u);
    EXPECT_EQ(*clone->findInfo("Where"), "Hall");
    EXPECT_EQ(clone->getNested(), nested);
    ASSERT_EQ(nested.size(), 2u);
    EXPECT_EQ(nested[0]->getFile() + nested[1]->getFile(), "VanRoad");
    EXPECT_FALSE(nested[0]->isWarning());
    // No error stays none.
    EXPECT_EQ(addInfo(std::move(error), "Where", "Hall"), nullptr);
    EXPECT_EQ(addNested(std::move(error), *clone), nullptr);
}

TEST(ErrorWithCode, VeryDeepCausesAreReleasedWithoutDeepStack) {
    // Two causes each: the release has to find its way back up as well.
    auto error = std::make_unique<Error>("Parcel", 0, Trouble::Lost);
    std::weak_ptr<Zorvan::ErrorHandling::ErrorBase> deepest;
    for (int i = 1; i <= 300000; ++i) {
        auto outer = std::make_unique<Error>("Parcel", i, Trouble::Lost);
        outer->addNested(std::move(error));
        outer->addNested(std::make_shared<Error>("Van", i, Trouble::Late));
        if (i == 1)
            deepest = outer->getNested()[0];
        error = std::move(outer);
    }
    auto middle = error->getNested()[0]->getNested()[0];
    error.reset();
    EXPECT_EQ(middle->getLine(), 300000 - 2);
    EXPECT_FALSE(deepest.expired());
    middle.reset();
    EXPECT_TRUE(deepest.expired());
}

} // namespace
