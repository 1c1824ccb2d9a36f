// SPDX-License-Identifier: MIT
#include "StreamFixture.h"
#include "traversal/TreeFixture.h"

#include <AttributeContainer/ModelFormat.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/XMLSerialization.h>

#include <gtest/gtest.h>

#include <sstream>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// The lines between those of the root element.
std::string exported(Container const& container, WriteContextBase const& options = WriteContextBase(),
                     bool withChildren = false) {
    auto const context = std::make_shared<WriteContextBase>(options);
    std::ostringstream out;
    EXPECT_FALSE(withChildren ? XMLSerialization::toWithChildren(out, *container, context)
                              : XMLSerialization::to(out, *container, context));
    EXPECT_EQ(ModelFormat::Xml, context->getFormat());
    std::string const text = out.str();
    std::string const start =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root version=\"9.1.0.0\" format=\"0\">\n";
    std::string const end = "</Root>";
    EXPECT_TRUE(text.starts_with(start) && text.ends_with(end)) << text;
    return text.substr(start.size(), text.size() - start.size() - end.size());
}

TEST(XMLSerialization, WritesFieldsAndAttributes) {
    auto const root = named("root");
    add(root, "count", 5);
    add(root, "a", std::string("x&y"));
    add(root, "point", Zorvan::Vec3d<double>(1, 2.5, 3));
    auto const field = addField(root, "slot", "own");
    EXPECT_TRUE(field->addField(root, "loop", 0)); // Not entered again.
    EXPECT_EQ("<root type=\"AttrContainer\"><fields>\n"
              "<own type=\"AttrContainer\" fieldname=\"slot\"><fields>\n</fields>\n"
              "<attrs>\n<Name type=\"String\">\"own\"</Name>\n</attrs>\n</own>\n"
              "</fields>\n<attrs>\n"
              "<Name type=\"String\">\"root\"</Name>\n"
              "<count type=\"int\">5</count>\n"
              "<a type=\"String\">\"x&amp;y\"</a>\n"
              "<point type=\"Vec3dd\">1 2.5 3</point>\n"
              "</attrs>\n</root>\n",
              exported(root, WriteContextBase(ModelFormat::XmlV2)));
    EXPECT_TRUE(root->rmField("slot"));
}

TEST(XMLSerialization, LeavesOutWhatTheContextAndTheCategorySay) {
    auto const root = named("x");
    addField(root, "f", "f");
    add(root, "v", 1)->setMarked(true);
    WriteContextBase marked, markedObjects;
    marked.setWriteOnlyMarked(true);
    markedObjects.setWriteOnlyMarkedObjects(true);
    std::string const v = "<v type=\"int\">1</v>\n";
    EXPECT_EQ("<x type=\"AttrContainer\"><fields>\n"
              "<f type=\"AttrContainer\" fieldname=\"f\"><fields>\n</fields>\n<attrs>\n</attrs>\n</f>\n"
              "</fields>\n<attrs>\n" +
                  v + "</attrs>\n</x>\n",
              exported(root, marked));
    EXPECT_EQ("", exported(root, markedObjects)) << "the first attribute is not marked";
    root->Attr_name().setMarked(true);
    EXPECT_EQ("<x type=\"AttrContainer\"><fields>\n</fields>\n<attrs>\n<Name type=\"String\">\"x\"</Name>\n" +
                  v + "</attrs>\n</x>\n",
              exported(root, markedObjects));
}

TEST(XMLSerialization, WritesChildrenOnRequest) {
    auto const root = named<Object>("r"), child = named<Object>("c");
    EXPECT_TRUE(root->addChild(child, 0));
    std::string const plain = exported(root), full = exported(root, WriteContextBase(), true);
    EXPECT_EQ(std::string::npos, plain.find("<c "));
    std::string const end = "</r>\n", inner = exported(child, WriteContextBase(), true);
    EXPECT_EQ(plain.substr(0, plain.size() - end.size()) + "<children>\n" + inner + "</children>\n" + end,
              full);
    EXPECT_TRUE(inner.ends_with("</attrs>\n<children>\n</children>\n</c>\n")) << inner;
}

/// Has room for a number of characters.
class FullDisk : public std::streambuf {
public:
    explicit FullDisk(std::size_t room) : room_(room) {}

protected:
    int_type overflow(int_type c) override { return room_ && room_-- ? c : traits_type::eof(); }

private:
    std::size_t room_;
};

TEST(XMLSerialization, ReportsWhatItCannotWriteTo) {
    auto const root = named("root");
    auto const context = std::make_shared<WriteContextBase>();
    std::ostringstream whole;
    EXPECT_EQ(NoContext, XMLSerialization::to(whole, *root, nullptr)->getCode());
    EXPECT_EQ("", whole.str());
    EXPECT_FALSE(XMLSerialization::to(whole, *root, context));
    for (std::size_t room = 0; room <= whole.str().size(); ++room) {
        FullDisk disk(room);
        std::ostream out(&disk);
        auto const error = XMLSerialization::to(out, *root, context);
        EXPECT_EQ(room < whole.str().size(), error && error->getCode() == StreamFailure) << room;
    }
}

} // namespace
