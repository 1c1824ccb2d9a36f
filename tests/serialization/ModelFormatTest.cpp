// SPDX-License-Identifier: MIT
#include <AttributeContainer/ModelFormat.h>

#include <gtest/gtest.h>

using Zorvan::AttributeContainer::ModelFormat;

namespace {

// Filled while the static objects of this file are initialised.
std::string const headerSeenByStaticInitialiser = ModelFormat::XML_HEADER + ModelFormat::XML_FOOTER;

TEST(ModelFormatTest, TextsAreThoseThatReadersCompareWith) {
    EXPECT_EQ(ModelFormat::START_OF_BLOCK, L'{');
    EXPECT_EQ(ModelFormat::END_OF_BLOCK, L'}');
    EXPECT_EQ(ModelFormat::START_OF_BLOCK_STR, "{");
    EXPECT_EQ(ModelFormat::END_OF_BLOCK_STR, "}");
    EXPECT_EQ(ModelFormat::XML_HEADER, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    EXPECT_EQ(ModelFormat::XML_HEADER.size(), 38U);
    EXPECT_EQ(ModelFormat::XML_V2_COMMENT, "<!-- XML v. 2 -->");
    EXPECT_EQ(ModelFormat::XML_NEXT_ROOT, "<!-- NEXT: XML Root Element -->");
    EXPECT_EQ(ModelFormat::XML_NEXT_VERSION, "<!-- NEXT: Version Information -->");
    EXPECT_EQ(ModelFormat::XML_NEXT_ROOT_MODEL, "<!-- NEXT: Root Model Information -->");
    EXPECT_EQ(ModelFormat::XML_START_COMMENT, "<!-- ");
    EXPECT_EQ(ModelFormat::XML_END_COMMENT, " -->");
    EXPECT_EQ(ModelFormat::XML_ROOT_START_TAG, "<VOXA>");
    EXPECT_EQ(ModelFormat::XML_ROOT_END_TAG, "</VOXA>");
    EXPECT_EQ(ModelFormat::XML_FOOTER, "</VOXA>");
}

TEST(ModelFormatTest, TextsAreReadyForStaticInitialisers) {
    EXPECT_EQ(headerSeenByStaticInitialiser, "<?xml version=\"1.0\" encoding=\"UTF-8\"?></VOXA>");
}

TEST(ModelFormatTest, FormatsAreNumberedAsDocumentsExpect) {
    EXPECT_EQ(ModelFormat::Text, 0);
    EXPECT_EQ(ModelFormat::Xml, 1);
    EXPECT_EQ(ModelFormat::XmlV2, 2);
    EXPECT_EQ(sizeof(ModelFormat::Format), 4U);
}

} // namespace
