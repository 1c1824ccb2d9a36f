// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "observation/ObservationFixture.h"

#include <AttributeContainer/ReadFromScope.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Linked : ObservationTest {
    std::ostringstream out;

    static Result read(Observable& one, std::string const& document) {
        auto const context = std::make_shared<ReadContextBase>();
        std::istringstream in(document);
        ReadFromScope const scope(in, context);
        Result result = one.readFrom(in, context);
        ModelInFormat::cleanPropagateKeyword();
        return result;
    }
    /// Code, source and line of an error; "" for none.
    static std::string describe(Result const& result) {
        return !result ? ""
                       : std::string(errorCodeName(result->getCode())) + ' ' + result->getFile() + ' ' +
                             std::to_string(result->getLine());
    }
    static std::string block(std::string const& section, std::string const& path, int priority,
                             std::string const& action) {
        return "\n" + section + "Observer \nObserverPath { \nPath \"" + path + "\"\nPriority " +
               std::to_string(priority) + "\nAction \"" + action + "\"\n}";
    }
};

TEST_F(Linked, PersistentLinksAreWrittenByPriorityThenByOrderOfAddition) {
    auto const lost = RecordingObserver::make("l", log, "/lost");
    addLost(*lost, 2);
    observable->addObserver("a", 1, NOTIFY, false);
    observable->addObserver(*a, 1, PRE_NOTIFY, false);
    observable->addObserver("c", 1, NOTIFY, false);
    observable->addPreObserver("p", 3, 2, false);
    observable->addObserver("temporary", 1, NOTIFY, true);
    observable->addObserver("low", 0, NOTIFY, false);
    observable->addObserver("", 1, NOTIFY, false);
    observable->addObserver("actionless", 1, 4711, false);
    observable->addObserver(*b, 1, NOTIFY, false);
    EXPECT_EQ(block("Pre", "p", 3, "Propagate") + block("Post", "a", 1, "Notify") +
                  block("Post", "/a", 1, "PreNotify") + block("Post", "c", 1, "Notify") +
                  block("Post", "/lost", 2, "M"),
              text(*observable));
    auto const copy = copyOf(*observable);
    EXPECT_EQ(6U, numLinks(*copy)) << "only those, too, and the one without name";
    EXPECT_TRUE(!copy->getPath(2).isActive() && !copy->updateObserverLists(true));
    EXPECT_EQ(text(*observable), text(*copy));
    EXPECT_EQ(1U, a->entryOf(*copy)) << "what a reference names becomes active";
    EXPECT_EQ(1, copy->copyFrom(*copy));
    EXPECT_EQ(6U, numLinks(*copy));
    EXPECT_EQ("", text(*observable, ModelFormat::Xml));
    EXPECT_EQ("", text(*RecordingObservable::make()));
    auto const context = std::make_shared<WriteContextBase>();
    context->setWriteOnlyMarked(true);
    EXPECT_EQ(nullptr, observable->writeTo(out, context));
    EXPECT_EQ("", out.str());
    context->setWriteOnlyMarked(false);
    out.setstate(std::ios::badbit);
    EXPECT_EQ(NoContext, observable->writeTo(out, nullptr)->getCode());
    EXPECT_EQ("StreamFailure ObserverPath 482", describe(observable->writeTo(out, context)));
    EXPECT_EQ("StreamFailure Observable 618", describe(RecordingObservable::make()->writeTo(out, context)));
}

TEST_F(Linked, LinksOfUnknownActionsAreKeptInTheirPlaceAndCopied) {
    std::string const document = block("Pre", "a", 1, "Foreign") + block("Post", "b", 2, "Notify") +
                                 block("Post", "c", 2, "Foreign") + block("Post", "d", 2, "Notify") +
                                 block("Post", "e", 3, "Other");
    EXPECT_EQ("ObserverUnresolved Observable 674", describe(read(*observable, document + "\n}")));
    EXPECT_EQ(2U, numLinks(*observable));
    EXPECT_EQ(document, text(*observable));
    auto const copy = copyOf(*observable);
    EXPECT_EQ(document, text(*copy));
    EXPECT_NE(nullptr, read(*copy, document + "\n}"));
    EXPECT_EQ(document, text(*copy)) << "read once more, nothing doubles";
}

TEST_F(Linked, MalformedLinksEndTheRead) {
    std::string const good = block("Pre", "a", 1, "Notify");
    for (auto const& row : dataRows("observation/documents.txt")) {
        SCOPED_TRACE(row.place);
        std::string document = row[0];
        if (auto const at = document.find("GOOD"); at != document.npos)
            document.replace(at, 4, good);
        auto const one = RecordingObservable::make();
        std::string const description = describe(read(*one, document));
        EXPECT_TRUE(description.starts_with(row[2]) && description.empty() == row[2].empty()) << description;
        EXPECT_EQ(row.number(1), one->getNumPrePaths());
    }
    for (std::size_t length = good.find('{'); length < good.size(); ++length)
        EXPECT_TRUE(describe(read(*observable, good.substr(0, length))).starts_with("StreamFailure"))
            << "a cut inside the block is noticed, " << length;
    std::istringstream in(good);
    EXPECT_EQ("NoContext Observable 627", describe(observable->readFrom(in, nullptr)));
    Result const both = read(*observable, block("Pre", "a", 1, "Foreign") + "\nSubContainer { ");
    EXPECT_EQ(1U, both->getNested().size()) << "what was recorded before is not lost";
}

TEST_F(Linked, AStringFromADocumentStaysAsLongAsItLeadsToTheObserver) {
    std::string const document = block("Post", "~/a", 1, "Notify");
    observable->known["~/a"] = a;
    EXPECT_EQ(nullptr, read(*observable, document));
    EXPECT_EQ("/a", observable->getPath(0).getPath());
    EXPECT_FALSE(observable->getPath(0).isActive());
    EXPECT_EQ(document, text(*observable));
    auto const copy = copyOf(*observable);
    EXPECT_EQ(block("Post", "/a", 1, "Notify"), text(*copy)) << "seen from there it leads nowhere";
    copy->known["~/a"] = a;
    EXPECT_EQ(document, text(*copy));
    a->objectPath = std::nullopt;
    copy->known.clear();
    EXPECT_EQ(document, text(*copy)) << "the observer has no other name";
    b->objectPath = "/b";
    copy->getPath(0).setObserver(*b, true);
    EXPECT_EQ(block("Post", "/b", 1, "Notify"), text(*copy));
}
} // namespace
