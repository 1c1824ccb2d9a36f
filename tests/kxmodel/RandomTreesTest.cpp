// SPDX-License-Identifier: MIT
#include "Program.h"
#include "RandomTree.h"

using namespace kxmodel_test;

namespace {

class RandomTrees : public Program {
protected:
    using Lines = std::vector<std::string>;

    /// What `diff` lists, in alphabetical order.
    static Lines listed(Ending const& diff) {
        Lines lines;
        std::istringstream in(diff.out);
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        EXPECT_FALSE(lines.empty()) << diff.err;
        lines.resize(lines.size() - !lines.empty());
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    static Lines without(Lines const& from, Lines const& what) {
        Lines rest;
        std::set_difference(from.begin(), from.end(), what.begin(), what.end(), std::back_inserter(rest));
        return rest;
    }
    std::string merged(std::string const& target, std::string const& source,
                       std::vector<std::string> const& options) const {
        std::vector<std::string> call{"merge", target, source, "-o", "-"};
        call.insert(call.end(), options.begin(), options.end());
        Ending const result = run(call);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.out;
    }
};

TEST_F(RandomTrees, DifferencesAreListedExactly) {
    for (unsigned seed = 0; seed < 25; ++seed) {
        SCOPED_TRACE(seed);
        RandomTree random(seed);
        auto const tree = random.make();
        auto const other = seed % 8 != 0 ? random.make() : tree;
        std::string const first = put("first", documentOf(*tree)), second = put("second", documentOf(*other));
        Lines const expected = differences(valuesOf(*tree), valuesOf(*other));
        Ending const result = run({"diff", first, second});
        EXPECT_EQ(result.status, expected.empty() ? 0 : 1) << result.err;
        Lines const lines = listed(result);
        EXPECT_EQ(without(lines, expected), Lines()) << "listed, but the same";
        EXPECT_EQ(without(expected, lines), Lines()) << "differences that are not listed";
        if (!lines.empty()) {
            std::string const& line = lines[lines.size() / 2];
            bool const isSecond = line.find(": only-second") != line.npos;
            std::string const path = line.substr(0, line.find(": "));
            EXPECT_EQ(run({"get", isSecond ? second : first, path}).status, 0) << path;
        }
    }
}

TEST_F(RandomTrees, MergedOnesAreEqualAndStaySo) {
    for (unsigned seed = 1; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        RandomTree random(seed, RandomTree::Types::Stay);
        std::string const target = put("target", documentOf(*random.make()));
        std::string const source = put("source", documentOf(*random.make()));
        std::string const equal = put("equal", merged(target, source, {"--delete"}));
        Ending const difference = run({"diff", equal, source});
        EXPECT_EQ(difference.status, 0) << difference.out;
        std::string const united = put("united", merged(target, source, {}));
        EXPECT_EQ(run({"diff", united, source, "--only-in", "second"}).out,
                  run({"diff", united, source, "--only-in", "none"}).out);
        expectSame(merged(equal, source, {"--delete"}), contentOf(equal));
        expectSame(merged(united, source, {}), contentOf(united));
    }
}

} // namespace
