// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "traversal/TreeFixture.h"

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

TEST(XMLSerialization, WritesWhatTheContextAndTheCategorySay) {
    for (auto const& row : dataRows("traversal/xml.txt")) {
        WriteContextBase options(ModelFormat::XmlV2);
        options.setWriteOnlyMarked(row[1] == "marked");
        options.setWriteOnlyMarkedObjects(row[1] == "marked objects");
        EXPECT_EQ(row[2], exported(TreeText(row[0]).make(), options, row[1] == "children")) << row.place;
    }
}

TEST(XMLSerialization, EntersNoAncestorAgain) {
    auto const root = TreeText("root { slot:own { } }").make();
    std::string const straight = exported(root);
    EXPECT_TRUE(root->getField("slot").lock()->addField(root, "loop", 0));
    EXPECT_EQ(straight, exported(root));
    EXPECT_TRUE(root->rmField("slot"));
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
