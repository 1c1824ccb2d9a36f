// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "traversal/TreeFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Searched : testing::Test {
    Container root = TreeText("root { :a { :x { } } :b { :x { :x { } } } :x { } }").make();
    Container a = at(root, "a"), b = at(root, "b");
    std::vector<Container> x{at(root, "a/x"), at(root, "b/x"), at(root, "b/x/x"), at(root, "x")};

    static bool isX(AttrContainer const& container) { return container.name() == "x"; }
};

TEST_F(Searched, FindFieldEndsAtTheFirstMatch) {
    FindField find(isX, 0, 9);
    EXPECT_EQ(VisitorCore::SkipChildren | VisitorCore::Stop, root->fieldVisitor(find, 1));
    EXPECT_EQ(x[0], find.getMatch());
    EXPECT_EQ(VisitorCore::Stop, b->fieldVisitor(find, 1)) << "it has its match";
    EXPECT_EQ(x[0], find.getMatch());

    FindField bounded(isX, 0, 9);
    bounded.setStopAt(a);
    EXPECT_EQ(VisitorCore::Stop, root->fieldVisitor(bounded, 1));
    EXPECT_EQ(nullptr, bounded.getMatch());

    FindField empty(nullptr, 0, 9);
    EXPECT_THROW(root->fieldVisitor(empty, 1), std::bad_function_call);
    EXPECT_EQ(0U, empty.getHierLevel());
}

TEST_F(Searched, CollectFieldsFindsNestedMatchesToo) {
    CollectFields collect(isX, 1, 9);
    EXPECT_EQ(VisitorCore::Continue, root->fieldVisitor(collect, 1));
    EXPECT_EQ(x, std::vector(collect.begin(), collect.end()));
    EXPECT_EQ(x[3], collect.getMatch());
    EXPECT_EQ(nullptr, collect.get(4));
    collect.setStopAt(b);
    root->fieldVisitor(collect, 1);
    EXPECT_EQ(5U, collect.getNumElements()) << "later walks append";
    EXPECT_EQ(x[0], collect.get(4));
    EXPECT_EQ(nullptr, collect.getMatch());
}

TEST(AttrCopyVisitorTest, CopiesAndAnnouncesWhatItsFileSays) {
    for (auto const& row : dataRows("traversal/copies.txt")) {
        SCOPED_TRACE(row.place);
        auto const source = TreeText(row[0]).make(), target = TreeText(row[1]).make();
        Listeners listeners;
        listeners.watch(target);
        AttrCopyVisitor copy(*target, row.number(2));
        copy.setConsiderAuxiliaryOnly(row[3] == "marked");
        for (int time = 1; time <= 2; ++time) {
            EXPECT_EQ(row[6], std::to_string(source->attributeVisitor(copy, true)));
            EXPECT_EQ(0U, differences(*target, *TreeText(row[4]).make()));
            EXPECT_EQ(row[5], joined(std::exchange(listeners.log, {})));
        }
    }
}

TEST(MarkVisitors, SetClearAndCountMarks) {
    auto const root = TreeText("root { *v=1 :a { v=1 *Name:=a } :b { v=1 } :c { *v=1 } }").make();
    AttrCountMarkedVisitor all, top(0);
    SetAttrMarksVisitor clear(false, 9), set(true, 9);
    root->attributeVisitor(all, true);
    root->attributeVisitor(top, true);
    EXPECT_EQ(3U, all.getNumMarkedAttributes());
    EXPECT_EQ(1U, top.getNumMarkedAttributes());
    root->attributeVisitor(set, true);
    root->attributeVisitor(all, true);
    EXPECT_EQ(3U + 8U, all.getNumMarkedAttributes());
    root->attributeVisitor(clear, true);
    root->attributeVisitor(all, true);
    EXPECT_EQ(3U + 8U, all.getNumMarkedAttributes());
}

} // namespace
