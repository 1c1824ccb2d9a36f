// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "traversal/TreeFixture.h"

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

/// The same tree as fields and as children.
struct Trees : testing::Test {
    std::shared_ptr<Object> fieldRoot = make(""), childRoot = make("child");

    static std::shared_ptr<Object> make(std::string const& member) {
        std::string text = "Object/r { #a { #b { } } #c { #d { #e { } } } }";
        for (std::size_t place; (place = text.find('#')) != text.npos;)
            text.replace(place, 1, member + ":Object/");
        return std::dynamic_pointer_cast<Object>(TreeText(text).make());
    }
};

/// Writes "[name" and "name]" for containers and the attributes' names between.
class AttributeRecorder : public AttributeVisitor, public Notes {
public:
    AttributeRecorder(unsigned int first, unsigned int last) : AttributeVisitor(first, last) {}
    using AttributeVisitor::visitDone;
    VisitResult visit(Attribute& attribute) override { return note(attribute.getName()); }
    VisitResult visit(AttrContainer& container) override { return note("[" + container.getName()); }
    VisitResult visitDone(AttrContainer& container) override { return note(container.getName() + "]"); }
};

/// Answers as the row says, and expects what it says.
void expectWalk(DataRow const& row, auto recorder, auto const& walk) {
    std::istringstream answers(row[3]);
    for (std::string answer; answers >> answer;)
        recorder.answers[answer.substr(0, answer.size() - 2)] = static_cast<VisitResult>(answer.back() - '0');
    EXPECT_EQ(row[5], std::to_string(walk(recorder))) << row.place;
    EXPECT_EQ(row[4], recorder.text) << row.place;
    EXPECT_EQ(0U, recorder.getHierLevel());
}

TEST_F(Trees, AreWalkedAsTheFileSays) {
    auto const attributed = TreeText("r { rx=1 ry=1 a:a { ax=1 ay=1 } b:b { bx=1 by=1 } }").make();
    for (auto const& row : dataRows("traversal/walks.txt")) {
        auto const first = row.number(1), last = row.number(2);
        if (row[0].ends_with("attributes")) {
            expectWalk(row, AttributeRecorder(first, last), [&](auto& visitor) {
                return attributed->attributeVisitor(visitor, row[0].starts_with("all"));
            });
            continue;
        }
        int const mode = row[0].back() - '0';
        Recorder<AttrContainer&> const ofFields(first, last);
        expectWalk(row, ofFields, [&](auto& visitor) { return fieldRoot->fieldVisitor(visitor, mode); });
        expectWalk(row, ofFields,
                   [&](auto& visitor) { return fieldRoot->fieldAndStructureVisitor(visitor, mode); });
        expectWalk(row, Recorder<Object&>(first, last),
                   [&](auto& visitor) { return childRoot->structureVisitor(visitor, mode); });
        expectWalk(row, Recorder<Object const&>(first, last),
                   [&](auto& visitor) { return std::as_const(*childRoot).structureVisitor(visitor, mode); });
    }
}

TEST_F(Trees, SkipEmptySlotsAndContainersOnTheirOwnWay) {
    EXPECT_TRUE(fieldRoot->addField(Pump::create(), "p", 0)); // its second slot is empty
    auto const c = at(fieldRoot, "c"), e = at(fieldRoot, "c/d/e");
    EXPECT_TRUE(e->addField(c, "up", 4) && at(fieldRoot, "a/b")->addField(c, "aside", 4));
    Recorder<AttrContainer&> recorder;
    fieldRoot->fieldVisitor(recorder, 1);
    EXPECT_EQ("r a b c d e c d e Pump Motor", recorder.text) << "shared ones are visited once for each way";
    Recorder<Observer&, ObserverVisitor> all(1, 2), top;
    EXPECT_EQ(VisitorCore::SkipChildren, fieldRoot->observerVisitor(all, true));
    EXPECT_EQ("a b c d Pump Motor", all.text) << "observers are not visited again on the way back";
    fieldRoot->observerVisitor(top, false);
    EXPECT_EQ("r", top.text);
    e->rmField("up");
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
        if (name == "a")
            childRoot->rmChild(std::uint64_t{0}, 0); // the visited child itself: the next one moves down
    };
    childRoot->structureVisitor(recorder, 1);
    EXPECT_EQ("r a b", recorder.text) << "it is still entered, and its successor is passed over";

    Recorder<AttrContainer&> fieldRecorder;
    fieldRecorder.handler = [&](std::string const& name) {
        if (name == "d")
            fieldRoot.reset();
    };
    fieldRoot->fieldVisitor(fieldRecorder, 2);
    EXPECT_EQ("r a b /b /a c d e /e /d /c /r", fieldRecorder.text);
}

} // namespace
