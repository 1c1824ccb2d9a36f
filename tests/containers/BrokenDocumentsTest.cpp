// SPDX-License-Identifier: MIT
#include "CapturedLog.h"
#include "DocumentFixture.h"
#include "SmallStack.h"
#include "observation/RecordingObserver.h"

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/FallbackObject.h>
#include <AttributeContainer/UnknownAttrContainer.h>

#include <functional>
#include <random>
#include <set>
#include <vector>

namespace Zorvan::AttributeContainer::Testing {

namespace {

class BrokenDocumentsTest : public testing::Test {
protected:
    CapturedLog const unheard{0};

    static std::size_t begin(std::string const& document, ModelFormat::Format format) {
        return format == TEXT ? 0 : document.find("<VOXA>") + 7;
    }
};

} // namespace

TEST_F(BrokenDocumentsTest, ContainersNestTo256LevelsOnAStackOf1MiB) {
    for (char const* kind : {"AttrContainer", "Object", "None", "Child"})
        for (int depth : {255, 256, 3000}) {
            bool const isChild = std::string(kind) == "Child";
            std::string opening = part("r");
            std::string closing;
            if (!isChild)
                opening.resize(opening.size() - 2);
            for (int i = 0; i < depth; ++i) {
                opening += isChild ? "Child {\n\"Object\" \"c\"\n" + part("c")
                                   : "SubContainer {\n\"" + std::string(kind) + "\" \"f\"\nAttrContainer {\n";
                closing += isChild ? "}\n" : "}\n}\n";
            }
            std::string const text = opening + closing + (isChild ? "" : "}\n");
            runOnSmallStack([&] {
                auto const root = Object::create();
                Result const result = read(*root, text);
                EXPECT_EQ(verdict(result), depth == 255 ? "ok" : "StreamFailure") << kind << depth;
                if (result)
                    EXPECT_EQ(result->getInfos().count("Description"), 1u);
                else
                    expectStable(*root, "ok");
            });
        }
}

TEST_F(BrokenDocumentsTest, RandomTreesSurviveBothRenderings) {
    std::vector<std::string> const words = {
        "",   "a",       "\"", "\\",  "'",  "{ }", "} {", "\n\r\t", "<a b=\"c\"/>", "&amp;", "\xc3\xa4\xff",
        "=>", "</VOXA>", " ",  "\\n", "-->"};
    std::vector<std::string> const classes = {"None", "Gone.2"};
    std::set<AttrType> types;
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 random(seed);
        auto const upTo = [&](std::size_t count) {
            return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
        };
        auto const string = [&] {
            std::string text;
            for (std::size_t i = upTo(4); i > 0; --i)
                text += words[upTo(words.size())];
            return text;
        };
        std::function<void(AttrContainer&, int)> const fill = [&](AttrContainer& container, int depth) {
            for (std::size_t i = upTo(8); i > 0; --i) {
                auto const type = static_cast<AttrType>(upTo(54));
                std::string const name = "a" + std::to_string(i);
                AttrDefinition const definition{0, name, type, 0};
                auto const attribute = definition.createAttr(CreateType::Deep, std::nullopt, std::nullopt);
                if (!attribute)
                    continue;
                types.insert(type);
                std::string const texts[] = {string(), "1 2 3 4 5 6 7 8 9 8 7 6 5 4 3 2",
                                             "{ 1 2 3 4 5 6 7 8 }", "{ \"a\"=>\"" + string() + "\" }",
                                             "00112233-4455-6677-8899-aabbccddeeff"};
                attribute->assignFrom(texts[upTo(5)], nullptr, nullptr, nullptr);
                upTo(2) ? attribute->addObserver("/" + string(), 3, NOTIFY, false)
                        : attribute->addPreObserver("/" + string(), 4, PRE_NOTIFY, false);
                container.addAttribute(attribute, name);
            }
            for (std::size_t i = depth < 3 ? upTo(3) : 0; i > 0; --i) {
                std::string const name = "f" + std::to_string(i);
                auto const unknown = UnknownAttrContainer::create();
                unknown->setTypeName(classes[upTo(2)]);
                std::shared_ptr<AttrContainer> field = unknown;
                if (upTo(2))
                    field = upTo(2) ? AttrContainer::create() : Object::create();
                fill(*field, depth + 1);
                container.addField(field, name, 0);
            }
            auto* object = dynamic_cast<Object*>(&container);
            for (std::size_t i = object && depth < 3 ? upTo(3) : 0; i > 0; --i) {
                auto const fallback = FallbackObject::create();
                fallback->setFallbackClassName(classes[upTo(2)]);
                std::shared_ptr<Object> const child = upTo(2) ? fallback : Object::create();
                static_cast<void>(child->setName("c" + std::to_string(i), 0));
                fill(*child, depth + 1);
                object->addChild(child, 4);
            }
        };
        auto const root = Object::create();
        fill(*root, 0);
        std::string const text = write(*root);
        std::string const xml = write(*root, XML);
        std::size_t const rootBegin = begin(xml, XML), rootSize = xml.size() - rootBegin - 7;
        ASSERT_EQ(xmlOf(text), xml) << seed;
        ASSERT_EQ("\n" + translateRawText(xml.substr(rootBegin, rootSize), XML, TEXT).value_or(""),
                  text + "\n");
        for (auto const format : {TEXT, XML}) {
            auto const again = Object::create();
            Result const result = read(*again, format == TEXT ? text : xml, format);
            ASSERT_TRUE(!result || result->getCode() == UnknownClass) << verdict(result) << " " << seed;
            ASSERT_EQ(write(*again), text) << seed;
            ASSERT_EQ(write(*again, XML), xml) << seed;
        }
    }
    EXPECT_EQ(types.size(), 51u);
}

} // namespace Zorvan::AttributeContainer::Testing
