// SPDX-License-Identifier: MIT
// Documents with one fault at each place. Reading them answers in bounded time and memory, and what is read
// without loss is written and read again like any other document.
#include "CapturedLog.h"
#include "DocumentChecks.h"
#include "bounds/Usage.h"
#include "containers/DocumentFixture.h"

#include <set>

namespace Zorvan::AttributeContainer::Testing {

namespace {

using kxmodel::Outcome;

struct Sample {
    std::string name, text;
    /// Where a shorter document ends that is whole.
    std::set<std::size_t> ends;
};

/// The sample document with its first children only, and one that holds one of everything.
std::vector<Sample> samples() {
    std::ifstream in(KX_SAMPLE_DATA_DIR "/world-110m.model", std::ios::binary);
    std::string const world = restOf(in);
    std::string const header = world.substr(0, world.find("AttrContainer"));
    std::string const everything = header + documentCases("everything.txt").front().texts.front();
    struct Source {
        std::string name, text;
        std::vector<std::string> children;
    };
    std::vector<Sample> samples;
    for (auto const& [name, text, children] :
         {Source{"world", world, {"Fiji", "Tanzania"}}, Source{"everything", everything, {"a", "r"}}}) {
        kxmodel::Document document = kxmodel::readDocument(text);
        auto& root = dynamic_cast<Object&>(*document.root);
        while (root.children().getNumChildren() > children.size())
            root.rmChild(root.children().getNumChildren() - 1, 0);
        Sample model{name + ".model", fuzzing::written(document, TEXT), {}};
        for (std::string const& child : children) {
            // The line end of the block before it may go, too.
            std::size_t const end = model.text.rfind("\nChild", model.text.find("\" \"" + child + "\"\n"));
            model.ends.insert({end, end + 1});
        }
        samples.push_back(std::move(model));
        samples.push_back({name + ".xml", fuzzing::written(document, XML), {}});
    }
    return samples;
}

class Damage : public testing::TestWithParam<std::size_t> {
protected:
    CapturedLog const unheard{0};
    Sample const sample = samples()[GetParam()];
    Usage const undamaged = usageOf(sample.text);

    static Usage usageOf(std::string const& text, kxmodel::Document* document = nullptr) {
        return Usage::of([&] {
            kxmodel::Document read = kxmodel::readDocument(text);
            if (document)
                *document = std::move(read);
        });
    }

    kxmodel::Document readInBounds(std::string const& text, std::size_t at) {
        kxmodel::Document document;
        Usage usage = usageOf(text, &document);
        // Other programs run meanwhile.
        for (int i = 0; i < 5 && usage.seconds > 10 * undamaged.seconds + 0.001; ++i)
            usage = usageOf(text);
        EXPECT_LE(usage.seconds, 10 * undamaged.seconds + 0.001) << sample.name << " at " << at;
        EXPECT_LE(usage.peak, 4 * undamaged.peak) << sample.name << " at " << at;
        return document;
    }

    /// Places that are apart, unless the whole form is asked for.
    std::size_t step(std::size_t apart) const { return isWholeForm() ? 1 : apart; }
};

TEST_P(Damage, CutsAreReportedUnlessTheyLeaveAWholeDocument) {
    for (std::size_t size = 0; size < sample.text.size(); size += step(4)) {
        kxmodel::Document const document = readInBounds(sample.text.substr(0, size), size);
        EXPECT_EQ(document.outcome <= Outcome::Warnings, sample.ends.contains(size)) << size;
    }
    for (std::size_t const end : sample.ends)
        EXPECT_LE(readInBounds(sample.text.substr(0, end), end).outcome, Outcome::Warnings) << end;
}

TEST_P(Damage, AnyByteMayBeAnotherOrMissing) {
    static constexpr std::string_view hostile("\0{}\"'<>/\\ \n\r\t=&;!?-1x\x7f\x80\xff", 24);
    std::size_t const kinds = hostile.size() + 1, atEach = isWholeForm() ? kinds : 1;
    for (std::size_t at = 0, k = 0; at < sample.text.size(); at += step(7))
        for (std::size_t const end = k + atEach; k < end; ++k) {
            std::string damaged = sample.text;
            damaged.replace(at, 1, hostile.substr(k % kinds, 1));
            bool const isWhole = fuzzing::isWhole(readInBounds(damaged, at));
            // It takes many times as long as reading alone.
            if (isWhole && (!isWholeForm() || k % 4 == 0))
                fuzzing::checkDocument(damaged);
        }
}

INSTANTIATE_TEST_SUITE_P(Samples, Damage, testing::Range<std::size_t>(0, 4));

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
