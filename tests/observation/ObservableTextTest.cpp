// SPDX-License-Identifier: MIT
#include "observation/LinkReading.h"
#include "observation/RecordingObserver.h"

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/ModelInFormat.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteContextBase.h>

#include <gtest/gtest.h>

#include <map>
#include <sstream>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Linked : testing::Test {
    Log log;
    std::shared_ptr<RecordingObservable> observable = RecordingObservable::make();

    static std::string text(Observable& one, int format = ModelFormat::Text) {
        std::ostringstream out;
        EXPECT_EQ(nullptr, one.writeTo(out, std::make_shared<WriteContextBase>(format)));
        return out.str();
    }
    static Result read(Observable& one, std::string const& document, int format = ModelFormat::Text,
                       std::string* next = nullptr) {
        auto const context = std::make_shared<ReadContextBase>();
        context->setFormat(format);
        std::istringstream in(document);
        ReadFromScope scope(in, context);
        Result result = one.readFrom(in, context);
        ModelInFormat::cleanPropagateKeyword();
        if (next != nullptr)
            *next = scope.getImf().getKeyword().value_or("(end)");
        return result;
    }
    /// Code, source and line of an error; "" for none.
    static std::string describe(Result const& result) {
        static std::map<int, std::string> const names = {{NoContext, "NoContext"},
                                                         {StreamFailure, "StreamFailure"},
                                                         {UnknownKeyword, "UnknownKeyword"},
                                                         {ObserverUnresolved, "ObserverUnresolved"}};
        if (result == nullptr)
            return "";
        return names.at(result->getCode()) + ' ' + result->getFile() + ' ' +
               std::to_string(result->getLine());
    }
    static std::string block(std::string const& section, std::string const& path, int priority,
                             std::string const& action) {
        return "\n" + section + " \nObserverPath { \nPath \"" + path + "\"\nPriority " +
               std::to_string(priority) + "\nAction \"" + action + "\"\n}";
    }
};

TEST_F(Linked, PersistentLinksAreWrittenByPriorityThenByOrderOfAddition) {
    auto const named = RecordingObserver::make("n", log, "/named");
    auto const nameless = RecordingObserver::make("x", log);
    observable->addObserver("b", 2, NOTIFY, false);
    observable->addObserver("a", 1, NOTIFY, false);
    observable->addObserver(*named, 1, PRE_NOTIFY, false);
    observable->addObserver("c", 1, NOTIFY, false);
    observable->addPreObserver("p", 3, 2, false);
    observable->addObserver("temporary", 1, NOTIFY, true);
    observable->addObserver("low", 0, NOTIFY, false);
    observable->addObserver("", 1, NOTIFY, false);
    observable->addObserver("actionless", 1, 4711, false);
    observable->addObserver(*nameless, 1, NOTIFY, false);
    std::string const expected =
        block("PreObserver", "p", 3, "Propagate") + block("PostObserver", "a", 1, "Notify") +
        block("PostObserver", "/named", 1, "PreNotify") + block("PostObserver", "c", 1, "Notify") +
        block("PostObserver", "b", 2, "Notify");
    EXPECT_EQ(expected, text(*observable));
    EXPECT_EQ("", text(*observable, ModelFormat::Xml));
    EXPECT_EQ("", text(*RecordingObservable::make()));
    std::ostringstream marked;
    auto const context = std::make_shared<WriteContextBase>();
    context->setWriteOnlyMarked(true);
    EXPECT_EQ(nullptr, observable->writeTo(marked, context));
    EXPECT_EQ("", marked.str());
    EXPECT_EQ(NoContext, observable->writeTo(marked, nullptr)->getCode());
    marked.setstate(std::ios::badbit);
    Result const failed = observable->writeTo(marked, std::make_shared<WriteContextBase>());
    EXPECT_EQ("StreamFailure ObserverPath 482", describe(failed));
    EXPECT_EQ("StreamFailure Observable 618",
              describe(RecordingObservable::make()->writeTo(marked, std::make_shared<WriteContextBase>())));
}

TEST_F(Linked, WhatWasWrittenIsReadBackToTheSameBytes) {
    observable->addPreObserver("quoted \"\\' {}<&>", 3, PRE_NOTIFY, false);
    observable->addPreObserver("/a/b", 32767, 2, false);
    observable->addObserver("~/x", 1, NOTIFY, false);
    for (int const format : {int{ModelFormat::Text}, int{ModelFormat::XmlV2}}) {
        std::string const written = text(*observable, format);
        std::string const end =
            format == ModelFormat::Text ? "\n}\nNext 1" : "</Attr>\n<Next value=\"1\" />\n";
        auto const copy = RecordingObservable::make();
        std::string next;
        EXPECT_EQ(nullptr, read(*copy, written + end, format, &next));
        EXPECT_EQ("}", next) << "the end of the enclosing block is left";
        EXPECT_EQ(2U, copy->getNumPrePaths());
        EXPECT_EQ(written, text(*copy, format));
        EXPECT_EQ(text(*observable), text(*copy));
    }
}

TEST_F(Linked, LinksOfUnknownActionsAreKeptInTheirPlaceAndCopied) {
    std::string const document =
        block("PreObserver", "a", 1, "Foreign") + block("PostObserver", "b", 2, "Notify") +
        block("PostObserver", "c", 2, "Foreign") + block("PostObserver", "d", 2, "Notify") +
        block("PostObserver", "e", 3, "Other");
    Result const result = read(*observable, document + "\n}");
    ASSERT_NE(nullptr, result);
    EXPECT_EQ(ObserverUnresolved, result->getCode());
    EXPECT_EQ(674, result->getLine());
    EXPECT_EQ(2U, observable->getNumPostPaths());
    EXPECT_EQ(document, text(*observable));
    auto const copy =
        std::make_shared<RecordingObservable>(std::optional(std::cref<Observable>(*observable)));
    EXPECT_EQ(document, text(*copy));
    read(*copy, document + "\n}");
    EXPECT_EQ(document, text(*copy)) << "read once more, nothing doubles";
}

TEST_F(Linked, UnregisteredActionsAreWrittenUnderTheirOldName) {
    class Group : public ActionDefinitionBase {
    public:
        std::uint64_t getNumActions() override { return 1; }
        std::optional<std::reference_wrapper<Action>> getActionAt(std::uint64_t) override { return action_; }
        std::string getNameAt(std::uint64_t) override { return "Mine"; }

    private:
        ActionNotify action_{0};
    };
    auto const group = std::make_shared<Group>();
    ActionContainer::the()->registerActionDef(group);
    observable->addObserver("a", 1, group->getBaseToken(), false);
    ActionContainer::the()->unregisterActionDef(group);
    EXPECT_EQ(block("PostObserver", "a", 1, "Mine"), text(*observable));
}

TEST_F(Linked, MalformedLinksEndTheRead) {
    struct Row {
        std::string document;
        char const* expected; ///< how the description of the error begins; "" for none
        std::uint64_t links;
    };
    std::string const good = block("PreObserver", "a", 1, "Notify");
    Row const rows[] = {
        {"", "", 0},
        {"}", "", 0},
        {good, "", 1},
        {good + "\nPostObserver ", "StreamFailure Observable", 1},
        {good + "\nSubContainer { ", "UnknownKeyword Observable 737", 1},
        {good + "\nObserver x", "UnknownKeyword Observable 737", 1},
        {"\"}\" ", "UnknownKeyword Observable 737", 0},
        {"\"\" ", "UnknownKeyword Observable 737", 0},
        {"PreObserver ObserverPath { Path \"a\" Colour 1 } }", "UnknownKeyword ObserverPath 432", 0},
        {"PreObserver ObserverPath { ObserverPath { } } }", "UnknownKeyword ObserverPath 432", 0},
        {"PreObserver ObserverPath { Path \"a\" Action \"Notify\" } }", "", 1},
        {"PreObserver ObserverPath { Path \"a\" Priority many } }", "StreamFailure ObserverPath", 0},
        {"PreObserver ObserverPath { Path \"a\" Priority 99999 } }", "StreamFailure ObserverPath", 0},
        {"PreObserver ObserverPath { Path \"a\"\n} }", "ObserverUnresolved Observable 674", 0},
        {"PreObserver ObserverPath { } }", "ObserverUnresolved Observable 674", 0},
        {"PreObserver ObserverPath { } " + good + "}", "ObserverUnresolved Observable 674", 1},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.document);
        auto const one = RecordingObservable::make();
        std::string const description = describe(read(*one, row.document));
        EXPECT_TRUE(description.starts_with(row.expected) && description.empty() == (*row.expected == 0))
            << description;
        EXPECT_EQ(row.links, one->getNumPrePaths());
    }
    for (std::size_t length = good.find('{'); length < good.size(); ++length) {
        SCOPED_TRACE(length);
        Result const result = read(*RecordingObservable::make(), good.substr(0, length));
        ASSERT_NE(nullptr, result) << "a cut inside the block is noticed";
        EXPECT_EQ(StreamFailure, result->getCode());
    }
    std::istringstream in(good);
    EXPECT_EQ("NoContext Observable 627", describe(observable->readFrom(in, nullptr)));
    Result const both = read(*observable, block("PreObserver", "a", 1, "Foreign") + "\nSubContainer { ");
    ASSERT_EQ(1U, both->getNested().size()) << "what was recorded before is not lost";
}

TEST_F(Linked, AStringFromADocumentStaysAsLongAsItLeadsToTheObserver) {
    auto const observer = RecordingObserver::make("o", log, "/root/o");
    auto const other = RecordingObserver::make("p", log, "/root/p");
    std::string const document = block("PostObserver", "~/o", 1, "Notify");
    observable->known["~/o"] = observer;
    EXPECT_EQ(nullptr, read(*observable, document));
    EXPECT_EQ("/root/o", observable->getPath(0).getPath());
    EXPECT_FALSE(observable->getPath(0).isActive());
    EXPECT_EQ(document, text(*observable));
    auto const copy = RecordingObservable::make();
    copy->copyFrom(*observable);
    EXPECT_EQ(block("PostObserver", "/root/o", 1, "Notify"), text(*copy))
        << "seen from there it leads nowhere";
    copy->known["~/o"] = observer;
    EXPECT_EQ(document, text(*copy));
    observer->objectPath = std::nullopt;
    copy->known.clear();
    EXPECT_EQ(document, text(*copy)) << "the observer has no other name";
    copy->getPath(0).setObserver(*other, true);
    EXPECT_EQ(block("PostObserver", "/root/p", 1, "Notify"), text(*copy));
}

TEST_F(Linked, LinksOfATreeAreResolvedWhenItIsThere) {
    auto const root = RecordingObserver::make("root", log), inner = RecordingObserver::make("inner", log);
    auto const dropped = RecordingObservable::make();
    observable->known["x"] = inner;
    {
        LinkReadingScope const abandoned(true);
        EXPECT_EQ(nullptr, read(*dropped, block("PostObserver", "x", 1, "Notify")));
    }
    {
        LinkReadingScope outer(true);
        LinkReadingScope nested(false);
        EXPECT_EQ(nullptr, read(*observable, block("PostObserver", "x", 1, "Notify") +
                                                 block("PostObserver", "/y", 2, "Notify")));
        EXPECT_EQ(nullptr, read(*RecordingObservable::make(), block("PostObserver", "x", 1, "Notify")));
        {
            LinkReadingScope another(true);
            auto const elsewhere = RecordingObservable::make();
            elsewhere->known["x"] = root;
            EXPECT_EQ(nullptr, read(*elsewhere, block("PreObserver", "x", 1, "PreNotify")));
            another.finish(nullptr);
            elsewhere->ask();
            EXPECT_EQ((Log{"root?"}), log);
        }
        nested.finish(inner);
        EXPECT_FALSE(observable->getPath(0).isActive());
        root->known["y"] = root;
        // Plain observables look their paths up themselves; containers hand absolute ones to the root.
        observable->known["/y"] = std::const_pointer_cast<ObservingObject>([&] {
            PathRootScope const scope(root);
            return std::as_const(*inner).inqObserver("/y").lock();
        }());
        outer.finish(root);
    }
    log.clear();
    observable->tell();
    EXPECT_EQ((Log{"root", "inner"}), log);
    EXPECT_FALSE(dropped->getPath(0).isActive());
    EXPECT_EQ(nullptr, inner->inqObserver("/y").lock()) << "the root is that of the scope";
}

} // namespace
