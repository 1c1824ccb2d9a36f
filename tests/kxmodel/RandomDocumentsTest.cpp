// SPDX-License-Identifier: MIT
#include "Program.h"

#include <map>
#include <set>

using namespace kxmodel_test;

namespace {

/// In alphabetical order.
using Lines = std::multiset<std::string>;

/// A document of objects and fields with a few names each, so that two of them have much in common. What has
/// one name is of one class.
class RandomDocument {
public:
    explicit RandomDocument(std::mt19937& random) : random_(random), text_(blocks("", "root", true, 3)) {}

    std::string const& text() const { return text_; }

    /// The lines by which `diff` is to list what differs.
    Lines differences(RandomDocument const& other) const {
        Lines lines;
        for (auto const& [path, old] : values_)
            if (auto const found = other.values_.find(path); found == other.values_.end())
                lines.insert(path + ": only-first, " + old.first + ": " + old.second);
            else if (auto const& [type, value] = found->second; type != old.first)
                lines.insert(path + ": type-changed, " + old.first + " -> " + type + ": " + old.second +
                             " -> " + value);
            else if (value != old.second)
                lines.insert(path + ": changed, " + type + ": " + old.second + " -> " + value);
        for (auto const& [path, value] : other.values_)
            if (!values_.contains(path))
                lines.insert(path + ": only-second, " + value.first + ": " + value.second);
        return lines;
    }

private:
    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }

    std::string blocks(std::string const& path, std::string const& name, bool isObject, int depth) {
        std::string members, children;
        auto const add = [&](char const* own, char const* type, std::string const& value) {
            values_[path + "/" + own] = {type, value};
            members += attribute(type, own, value);
        };
        add("Name", "String", '"' + name + '"');
        if (isObject) {
            for (char const* const own : {"Action", "Event"})
                add(own, "String", "\"\"");
            for (char const* const own : {"MajorVersion", "MinorVersion"})
                add(own, "uint16_t", "0");
            add("UUID", "Uuid", "00000000-0000-0000-0000-000000000000");
        }
        for (char const* const own : {"a", "b", "c", "d"})
            if (below(3) > 0) {
                static constexpr char const* types[] = {"int", "int", "uint64_t", "String"};
                unsigned const type = below(4);
                std::string const value = std::to_string(below(3));
                add(own, types[type], type == 3 ? '"' + value + '"' : value);
            }
        std::map<std::string, int> numbers;
        for (unsigned i = depth > 0 ? below(isObject ? 7 : 4) : 0; i > 0; --i) {
            bool const isChild = isObject && below(2) == 0;
            unsigned const kind = below(4);
            std::string const own = (isChild ? "child" : "field") + std::to_string(kind);
            int const number = ++numbers[own];
            std::string const content =
                blocks(path + "/" + own + (number > 1 ? "[" + std::to_string(number) + "]" : ""), own,
                       isChild || kind == 0, depth - 1);
            if (isChild)
                children += "\nChild { \n\"Object\" \"" + own + '"' + content + "\n}";
            else
                members += field(kind == 0 ? "Object" : "AttrContainer", own, content);
        }
        return "\nAttrContainer { " + members + "\n}" + children;
    }

    std::mt19937& random_;
    std::map<std::string, std::pair<std::string, std::string>> values_; ///< type and value, by path
    std::string text_;
};

class RandomDocuments : public Program {};

TEST_F(RandomDocuments, DifferencesAreListedExactly) {
    for (unsigned seed = 0; seed < 25; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        RandomDocument const one(random), another(random), &other = seed % 8 != 0 ? another : one;
        std::string const first = put("first", one.text()), second = put("second", other.text());
        Lines const expected = one.differences(other);
        Ending const result = run({"diff", first, second});
        EXPECT_EQ(result.status, expected.empty() ? 0 : 1) << result.err;
        auto const lines = linesOf(result.out);
        ASSERT_FALSE(lines.empty()) << result.err;
        EXPECT_EQ(Lines(lines.begin(), lines.end() - 1), expected) << "without the summary behind them";
        if (!expected.empty()) {
            std::string const& line = *std::next(expected.begin(), expected.size() / 2);
            bool const isSecond = line.find(": only-second") != line.npos;
            std::string const path = line.substr(0, line.find(": "));
            EXPECT_EQ(run({"get", isSecond ? second : first, path}).status, 0) << path;
        }
    }
}

} // namespace
