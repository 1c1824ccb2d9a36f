// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"
#include "traversal/TreeFixture.h"

#include <AttributeContainer/Visitors.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// root { a { x }, b { x { x } }, x }
struct Searched : testing::Test {
    std::shared_ptr<AttrContainer> root = named("root"), a = named("a"), b = named("b");
    std::vector<std::shared_ptr<AttrContainer>> x{named("x"), named("x"), named("x"), named("x")};

    void SetUp() override {
        for (auto const& [parent, field] :
             {std::pair(root, a), {root, b}, {a, x[0]}, {b, x[1]}, {x[1], x[2]}, {root, x[3]}})
            EXPECT_TRUE(parent->addField(field, "", 0));
    }
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
    EXPECT_EQ((std::vector<std::shared_ptr<AttrContainer>>{x[0], x[1], x[2], x[3]}),
              std::vector(collect.begin(), collect.end()));
    EXPECT_EQ(x[3], collect.getMatch());
    EXPECT_EQ(nullptr, collect.get(4));
    collect.setStopAt(b);
    root->fieldVisitor(collect, 1);
    EXPECT_EQ(5U, collect.getNumElements()) << "later walks append";
    EXPECT_EQ(x[0], collect.get(4));
    EXPECT_EQ(nullptr, collect.getMatch());
}

/// A tree with the same attribute in each container, and the fields a, b and c, or without b.
Container valued(int value, bool withB) {
    std::string const v = " { value=" + std::to_string(value) + " ";
    return TreeText("root" + v + ":a" + v + "} " + (withB ? ":b" + v + "} " : "") + ":c" + v + "} }").make();
}

std::string values(AttrContainer& root) {
    std::string text = root.getAttr("value").lock()->getValueAsText();
    for (std::uint64_t i = 0; i < root.getNumFields(); ++i)
        text += "," + root.getField(i).lock()->getAttr("value").lock()->getValueAsText();
    return text;
}

TEST(AttrCopyVisitorTest, CopiesWhatHasACounterpart) {
    auto const source = valued(1, true), target = valued(2, true);
    source->getField("b").lock()->addField(named("below"), "", 0);
    source->getField("c").lock()->addAttribute(std::make_shared<CustAttr<int>>(9), "more");
    AttrCopyVisitor copy(*target, 9);
    EXPECT_EQ(VisitorCore::Ignored, source->attributeVisitor(copy, true));
    EXPECT_EQ("1,1,1,1", values(*target));
    EXPECT_EQ(0U, target->getField("b").lock()->getNumFields());

    auto const smaller = valued(3, false); // a, c: its second field is the counterpart of b
    source->getField("c").lock()->getAttr("value").lock()->assignFrom("5", nullptr, nullptr, nullptr);
    AttrCopyVisitor second(*smaller, 9);
    source->attributeVisitor(second, true);
    EXPECT_EQ("1,1,1", values(*smaller));
    EXPECT_EQ("b", smaller->getField("c").lock()->getName()) << "by token, the name too";

    auto const shallow = valued(4, true);
    AttrCopyVisitor topOnly(*shallow, 0);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(VisitorCore::SkipChildren, source->attributeVisitor(topOnly, true));
    EXPECT_EQ("1,4,4,4", values(*shallow));
}

TEST(AttrCopyVisitorTest, ConsidersMarkedAttributesOnlyAndNotifies) {
    auto const source = valued(1, true), target = valued(2, true);
    source->getField("c").lock()->getAttr("value").lock()->setMarked(true);
    AttrCopyVisitor copy(*target, 9);
    copy.setConsiderAuxiliaryOnly(true);
    source->attributeVisitor(copy, true);
    EXPECT_EQ("2,2,2,1", values(*target));
    copy.setConsiderAuxiliaryOnly(false);
    Log log;
    auto const witness = RecordingObserver::make("witness", log);
    auto const told = target->getField("a").lock()->getAttr("value").lock();
    told->addPreObserver(*witness, 1, PRE_NOTIFY, false);
    told->addObserver(*witness, 1, NOTIFY, false);
    EXPECT_EQ(VisitorCore::Continue, source->attributeVisitor(copy, true));
    EXPECT_EQ("1,1,1,1", values(*target));
    EXPECT_EQ((Log{"witness?", "witness"}), log);
}

TEST(MarkVisitors, SetClearAndCountMarks) {
    auto const root = valued(1, true);
    root->getAttr("value").lock()->setMarked(true);
    root->getField("a").lock()->getAttr(0).lock()->setMarked(true);
    root->getField("c").lock()->getAttr("value").lock()->setMarked(true);
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
