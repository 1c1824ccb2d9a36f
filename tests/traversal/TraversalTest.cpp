// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/Visitor.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

using VisitResult = VisitorCore::VisitResult;

/// Writes down words and answers what was set for them.
struct Notes {
    std::string text;
    std::map<std::string, VisitResult> answers;
    std::function<void(std::string const&)> handler;

    VisitResult note(std::string const& word) {
        text += (text.empty() ? "" : " ") + word;
        if (handler)
            handler(word);
        auto const answer = answers.find(word);
        return answer == answers.end() ? VisitorCore::Continue : answer->second;
    }
};

/// Writes "name" (visit) and "/name" (visitDone).
template <class Node, class Visitor = GeneralVisitor<Node>>
class Recorder : public Visitor, public Notes {
public:
    explicit Recorder(unsigned int first = 0, unsigned int last = 100) : Visitor(first, last) {}
    VisitResult visit(Node node) override { return note(node.getName()); }
    VisitResult visitDone(Node node) override { return note("/" + node.getName()); }
};

/// The same tree as fields and as children: r { a { b }, c { d { e } } }
struct Trees : testing::Test {
    std::map<std::string, std::shared_ptr<Object>> fields, children;
    std::shared_ptr<Object> fieldRoot, childRoot;

    void SetUp() override {
        for (auto* nodes : {&fields, &children})
            for (char const* name : {"r", "a", "b", "c", "d", "e"})
                (*nodes)[name] = named<Object>(name);
        for (auto const& [parent, node] :
             {std::pair("r", "a"), {"a", "b"}, {"r", "c"}, {"c", "d"}, {"d", "e"}}) {
            EXPECT_TRUE(fields[parent]->addField(fields[node], "", 0));
            EXPECT_TRUE(children[parent]->addChild(children[node], 0));
        }
        fieldRoot = fields["r"];
        childRoot = children["r"];
    }
};

TEST_F(Trees, AreWalkedAsModeLevelsAndAnswersSay) {
    using Answers = std::map<std::string, VisitResult>;
    constexpr auto skip = VisitorCore::SkipChildren, stop = VisitorCore::Stop, ignored = VisitorCore::Ignored;
    struct Row {
        int mode;
        unsigned int first, last;
        Answers answers;
        char const* visits;
        unsigned int result;
    };
    for (Row const& row :
         {Row{0, 0, 9, {}, "b a e d c r", 0}, Row{1, 0, 9, {}, "r a b c d e", 0},
          Row{2, 0, 9, {}, "r a b /b /a c d e /e /d /c /r", 0},
          Row{3, 0, 9, {}, "r a b /b /a c d e /e /d /c /r", 0}, Row{1, 0, 1, {}, "r a c", 1},
          Row{1, 2, 2, {}, "b d", 1}, Row{2, 3, 9, {}, "e /e", 0}, Row{0, 2, 9, {}, "b e d", 0},
          Row{1, 4, 2, {}, "", 1}, Row{1, 0, 9, {{"a", skip}}, "r a c d e", 1},
          Row{1, 0, 9, {{"a", ignored}}, "r a c d e", 4},
          Row{1, 0, 9, {{"a", skip}, {"d", stop}}, "r a c d", 3}, Row{2, 0, 9, {{"a", stop}}, "r a /a /r", 2},
          Row{0, 0, 9, {{"b", stop}}, "b a r", 2}, Row{1, 0, 9, {{"r", stop}}, "r", 2}}) {
        auto const expectWalk = [&](auto recorder, auto const& walk) {
            recorder.answers = row.answers;
            EXPECT_EQ(row.result, walk(recorder)) << row.mode << " " << row.visits;
            EXPECT_EQ(row.visits, recorder.text);
            EXPECT_EQ(0U, recorder.getHierLevel());
        };
        Recorder<AttrContainer&> const ofFields(row.first, row.last);
        expectWalk(ofFields, [&](auto& visitor) { return fieldRoot->fieldVisitor(visitor, row.mode); });
        expectWalk(ofFields,
                   [&](auto& visitor) { return fieldRoot->fieldAndStructureVisitor(visitor, row.mode); });
        expectWalk(Recorder<Object&>(row.first, row.last),
                   [&](auto& visitor) { return childRoot->structureVisitor(visitor, row.mode); });
        expectWalk(Recorder<Object const&>(row.first, row.last), [&](auto& visitor) {
            return std::as_const(*childRoot).structureVisitor(visitor, row.mode);
        });
    }
}

TEST_F(Trees, SkipEmptySlotsAndContainersOnTheirOwnWay) {
    EXPECT_TRUE(fieldRoot->addField(Pump::create(), "p", 0)); // its second slot is empty
    EXPECT_TRUE(fields["e"]->addField(fields["c"], "up", 4));
    EXPECT_TRUE(fields["b"]->addField(fields["c"], "aside", 4));
    Recorder<AttrContainer&> recorder;
    fieldRoot->fieldVisitor(recorder, 1);
    EXPECT_EQ("r a b c d e c d e Pump Motor", recorder.text) << "shared ones are visited once for each way";
    Recorder<Observer&, ObserverVisitor> all(1, 2), top;
    EXPECT_EQ(VisitorCore::SkipChildren, fieldRoot->observerVisitor(all, true));
    EXPECT_EQ("a b c d Pump Motor", all.text) << "observers are not visited again on the way back";
    fieldRoot->observerVisitor(top, false);
    EXPECT_EQ("r", top.text);
    fields["e"]->rmField("up");
}

// A way that is longer than the traversal searches, with a cycle from its end to each third of it.
TEST_F(Trees, FindCyclesOnLongWays) {
    std::vector<std::shared_ptr<AttrContainer>> way{AttrContainer::create()};
    for (int i = 1; i < 300; ++i) {
        way.push_back(AttrContainer::create());
        way[way.size() - 2]->addField(way.back(), "below", 0);
    }
    for (std::size_t i = 0; i < way.size(); i += 3)
        way.back()->addField(way[i], "up", 4);
    Recorder<AttrContainer&> recorder(0, 1000);
    std::size_t numVisits = 0;
    recorder.handler = [&](std::string const&) { ++numVisits; };
    for (int i = 1; i <= 2; ++i) {
        way.front()->fieldVisitor(recorder, 1);
        EXPECT_EQ(i * way.size(), numVisits);
    }
    auto last = way.front()->duplicate(CreateType::Deep);
    while (auto const below = last->getField("below").lock())
        last = below;
    EXPECT_EQ(Names(way.size() / 3, "-"), fieldNames(*last)) << "a copy does not enter them either";
    while (way.back()->getNumFields() != 0)
        way.back()->rmField(std::uint64_t{0});
}

TEST_F(Trees, MayBeChangedByTheirVisitors) {
    Recorder<Object&> recorder;
    recorder.handler = [&](std::string const& name) {
        if (name == "a") {
            children.clear();
            childRoot->rmChild(std::uint64_t{0}, 0); // the visited child itself: the next one moves down
        }
    };
    childRoot->structureVisitor(recorder, 1);
    EXPECT_EQ("r a b", recorder.text) << "it is still entered, and its successor is passed over";

    Recorder<AttrContainer&> fieldRecorder;
    fieldRecorder.handler = [&](std::string const& name) {
        if (name == "d") {
            fields.clear();
            fieldRoot.reset();
        }
    };
    fieldRoot->fieldVisitor(fieldRecorder, 2);
    EXPECT_EQ("r a b /b /a c d e /e /d /c /r", fieldRecorder.text);
}

/// Writes "[name" and "name]" for containers and the attributes' names between.
class AttributeRecorder : public AttributeVisitor, public Notes {
public:
    AttributeRecorder(unsigned int first, unsigned int last) : AttributeVisitor(first, last) {}
    using AttributeVisitor::visitDone;
    VisitResult visit(Attribute& attribute) override { return note(attribute.getName()); }
    VisitResult visit(AttrContainer& container) override { return note("[" + container.getName()); }
    VisitResult visitDone(AttrContainer& container) override { return note(container.getName() + "]"); }
};

TEST(AttributeTraversal, VisitsAsLevelsAndAnswersSay) {
    auto const root = named("r"), a = named("a"), b = named("b");
    for (auto const& container : {root, a, b})
        for (char const* suffix : {"x", "y"})
            container->addAttribute(std::make_shared<CustAttr<int>>(1), container->getName() + suffix);
    root->addField(a, "", 0);
    root->addField(b, "", 0);
    using Row = std::tuple<bool, unsigned int, unsigned int, std::map<std::string, VisitResult>, char const*,
                           unsigned>;
    for (auto const& [recurses, first, last, answers, visits, result] : std::initializer_list<Row>{
             {true, 0, 9, {}, "[r Name rx ry [a Name ax ay a] [b Name bx by b] r]", 0},
             {false, 0, 9, {}, "[r Name rx ry r]", 0},
             {true, 1, 9, {}, "[r [a Name ax ay a] [b Name bx by b] r]", 0},
             {true, 0, 0, {}, "[r Name rx ry r]", 1},
             {true, 0, 9, {{"[a", VisitorCore::Ignored}}, "[r Name rx ry [a [b Name bx by b] r]", 4},
             {true, 0, 9, {{"[r", VisitorCore::Stop}}, "[r", 2},
             {true, 0, 9, {{"ax", VisitorCore::Stop}}, "[r Name rx ry [a Name ax a] r]", 2},
             {false, 0, 9, {{"Name", VisitorCore::SkipChildren}}, "[r Name rx r]", 1},
             {true, 0, 9, {{"a]", VisitorCore::Stop}}, "[r Name rx ry [a Name ax ay a] r]", 2}}) {
        AttributeRecorder recorder(first, last);
        recorder.answers = answers;
        EXPECT_EQ(result, root->attributeVisitor(recorder, recurses)) << visits;
        EXPECT_EQ(visits, recorder.text);
        EXPECT_EQ(0U, recorder.getHierLevel());
    }
}

} // namespace
