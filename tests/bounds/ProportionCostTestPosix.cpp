// SPDX-License-Identifier: MIT
// Reading a document and writing what was read takes time and memory in proportion to its size, whatever it
// says.
#include "CapturedLog.h"
#include "Document.h"
#include "bounds/Usage.h"
#include "containers/DocumentFixture.h"

namespace Zorvan::AttributeContainer::Testing {

namespace {

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

/// `open` and `close`, `count` times each, around `inner`.
std::string nested(std::string_view open, std::string_view close, std::size_t count,
                   std::string_view inner = {}) {
    return repeated(open, count) + std::string(inner) + repeated(close, count);
}

std::string numbered(std::string_view before, std::string_view after, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result.append(before).append(std::to_string(i)).append(after);
    return result;
}

std::string valueOf(std::string const& type, std::string const& value) {
    return block("AttrContainer", attr(type, "a", "Value " + value + "\n"));
}

/// Links of an attribute, to `count` names or, if it is given, to one.
std::string links(std::string const& name, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += link("PostObserver", "/" + (name.empty() ? std::to_string(i) : name),
                       "Priority 1\nAction \"Notify\"\n");
    return result;
}

std::string const part = "AttrContainer { \n}\n";

/// The blocks of a document that grows with a number; what begins with "<" is in XML, the rest is translated
/// for it.
struct Row {
    char const* what;
    std::size_t count; ///< In the whole form; the short one has a fiftieth.
    std::string (*text)(std::size_t count);
};

Row const rows[] = {
    {"fields in fields", 100'000,
     [](std::size_t n) {
         return nested("AttrContainer { \nSubContainer { \n\"AttrContainer\" \"f\"\n", "}\n}\n", n, part);
     }},
    {"unknown fields in fields", 100'000,
     [](std::size_t n) {
         return nested("AttrContainer { \nSubContainer { \n\"Gone\" \"f\"\n", "}\n}\n", n, part);
     }},
    {"children in children", 100'000,
     [](std::size_t n) { return part + nested("Child { \n\"Object\" \"c\"\n" + part, "}\n", n); }},
    {"unknown children in children", 100'000,
     [](std::size_t n) { return part + nested("Child { \n\"Gone\" \"c\"\n" + part, "}\n", n); }},
    {"unknown blocks in blocks", 100'000, [](std::size_t n) { return part + nested("A { \n", "}\n", n); }},
    {"blocks in the text of a placeholder", 100'000,
     [](std::size_t n) { return part + child("Gone", "c", nested("A { \n", "}\n", n)); }},
    {"braces in a collection", 100'000,
     [](std::size_t n) { return valueOf("IntVector", nested("{ ", "} ", n)); }},
    {"braces in a placeholder's value", 100'000,
     [](std::size_t n) { return part + child("Gone", "c", "V " + nested("{ ", "} ", n) + "\n"); }},
    {"braces that are not closed", 100'000, [](std::size_t n) { return part + repeated("A { ", n); }},
    {"blocks that were not opened", 100'000, [](std::size_t n) { return part + repeated("} ", n); }},
    {"empty blocks", 1'000'000, [](std::size_t n) { return part + repeated("A { \n}\n", n); }},
    {"empty children", 200'000, [](std::size_t n) { return part + repeated("Child { \n}\n", n); }},
    {"empty fields", 200'000,
     [](std::size_t n) { return block("AttrContainer", repeated("SubContainer { \n}\n", n)); }},
    {"empty attributes", 1'000'000,
     [](std::size_t n) { return block("AttrContainer", repeated("Attr<int> { \n}\n", n)); }},
    {"attributes of one name", 1'000'000,
     [](std::size_t n) { return block("AttrContainer", repeated(attr("int", "a", "Value 1\n"), n)); }},
    {"attributes", 200'000,
     [](std::size_t n) { return block("AttrContainer", numbered("Attr<int> { \nName \"a", "\"\n}\n", n)); }},
    {"children of one name", 200'000,
     [](std::size_t n) { return part + repeated(child("Object", "c", ""), n); }},
    {"children of one name that is numbered", 200'000,
     [](std::size_t n) { return part + repeated(child("Object", "c1", part), n); }},
    {"fields of one name", 200'000,
     [](std::size_t n) { return block("AttrContainer", repeated(field("AttrContainer", "f", part), n)); }},
    {"placeholders", 200'000, [](std::size_t n) { return part + repeated(child("Gone", "c", "A 1\n"), n); }},
    {"one keyword", 1'000'000, [](std::size_t n) { return part + repeated("Name \"a\"\n", n); }},
    {"names of an attribute", 1'000'000,
     [](std::size_t n) { return block("AttrContainer", block("Attr<int>", repeated("Name \"a\"\n", n))); }},
    {"a string", 100'000'000,
     [](std::size_t n) { return valueOf("String", '"' + std::string(n, 'x') + '"'); }},
    {"a string of escapes", 10'000'000,
     [](std::size_t n) { return valueOf("String", '"' + repeated("\\\"", n) + '"'); }},
    {"a string that is not closed", 10'000'000,
     [](std::size_t n) { return valueOf("String", '"' + std::string(n, 'x')); }},
    {"a name", 100'000'000,
     [](std::size_t n) { return block("AttrContainer", attr("int", std::string(n, 'x'), "Value 1\n")); }},
    {"a keyword", 10'000'000, [](std::size_t n) { return part + std::string(n, 'x') + "\n"; }},
    {"digits", 10'000'000, [](std::size_t n) { return valueOf("int", std::string(n, '1')); }},
    {"white space", 10'000'000, [](std::size_t n) { return part + std::string(n, ' '); }},
    {"numbers of a collection", 1'000'000,
     [](std::size_t n) { return valueOf("IntVector", "{ " + repeated("1 ", n) + "}"); }},
    {"entries of a map", 200'000,
     [](std::size_t n) {
         return valueOf("StringMap", std::to_string(n) + numbered(" \"k", "\"=>\"v\"", n));
     }},
    {"counts of 2^64-1", 200'000,
     [](std::size_t n) {
         std::string const count = "18446744073709551615";
         return block("AttrContainer",
                      attr("StringMap", "m", "Value " + count + numbered(" \"k", "\"=>\"v\"", n) + "\n") +
                          repeated(attr("StringSet", "s", "Value " + count + "\n"), n / 4) +
                          attr("StringVector", "v", "Value " + count + repeated(" \"a\"", n) + "\n"));
     }},
    {"shared instances", 100'000,
     [](std::size_t n) {
         return part + numbered("Child { \n\"Object\" \"c\"\nInstanceID 1844674407", "\n}\n", n) +
                numbered("Child { \n\"Object\" \"c\"\nInstanceID 1844674407", "\nReferenceToShared \n}\n", n);
     }},
    {"links of an attribute", 10'000,
     [](std::size_t n) { return block("AttrContainer", attr("int", "a", links("", n))); }},
    {"links that find one object", 10'000,
     [](std::size_t n) {
         return block("AttrContainer", attr("int", "a", links("c", n))) + child("Object", "c", "");
     }},
    {"elements that are not closed", 1'000'000, [](std::size_t n) { return repeated("<A>", n); }},
    {"tags that are not ended", 1'000'000, [](std::size_t n) { return repeated("<A ", n); }},
    {"end tags", 1'000'000,
     [](std::size_t n) { return "<AttrContainer></AttrContainer>" + repeated("</A>", n); }},
    {"comments", 1'000'000, [](std::size_t n) { return repeated("<!---->", n); }},
    {"values of a tag", 1'000'000, [](std::size_t n) { return "<A" + repeated(" a=\"\"", n) + "/>"; }},
    {"entities", 1'000'000,
     [](std::size_t n) {
         return "<AttrContainer><Attr type=\"String\"><Name value=\"'a'\" /><Value value=\"'" +
                repeated("&#x41;&amp;&x", n) + "'\" /></Attr></AttrContainer>";
     }},
};

class Proportion : public testing::TestWithParam<std::size_t> {
protected:
    CapturedLog const unheard{0};

    static Usage usageOf(std::string const& document) {
        return Usage::of([&] {
            kxmodel::Document const read = kxmodel::readDocument(document);
            Result why;
            if (read.root)
                kxmodel::writeDocument(read, read.rendering, why);
        });
    }
};

TEST_P(Proportion, OfTimeAndMemoryToTheSizeOfADocument) {
    Row const& row = rows[GetParam()];
    std::size_t const count = row.count / (isWholeForm() ? 1 : 50);
    std::string const texts[] = {row.text(count / 4), row.text(count)};
    for (bool const isXml : {false, true}) {
        if (!isXml && texts[0].starts_with('<'))
            continue;
        std::string documents[2];
        for (std::size_t k : {0u, 1u})
            documents[k] = !isXml                      ? texts[k]
                           : texts[0].starts_with('<') ? xmlDocument(texts[k])
                                                       : xmlOf(texts[k]);
        // The best of several tries, because other programs run meanwhile.
        double seconds[] = {3600, 3600};
        for (int i = 0; i < 7 && (i == 0 || seconds[1] > 5 * seconds[0]); ++i)
            for (std::size_t k : {0u, 1u}) {
                Usage const usage = usageOf(documents[k]);
                seconds[k] = std::min(seconds[k], usage.seconds);
                // The smallest child, a dozen bytes, is an object.
                EXPECT_LE(usage.peak, 100 * documents[k].size() + 100'000)
                    << row.what << (isXml ? ", XML" : "");
            }
        EXPECT_LE(seconds[1], 5 * seconds[0]) << row.what << (isXml ? ", XML" : "");
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, Proportion, testing::Range<std::size_t>(0, std::size(rows)));

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
