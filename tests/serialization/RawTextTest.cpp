// SPDX-License-Identifier: MIT
#include "serialization/RawText.h"

#include "DataFile.h"
#include "ReaderFixture.h"
#include "serialization/ModelInFormatAccess.h"
#include "serialization/XmlName.h"

namespace Zorvan::AttributeContainer {
namespace {

TEST(RawText, IsTranslatedByItsMeaning) {
    for (auto const& row : dataRows("serialization/raw-text.txt"))
        if (row.section == "names") {
            EXPECT_EQ(row[1] == "allowed", isXmlName(row[0])) << row.place;
        } else if (row.section == "from XML") {
            EXPECT_EQ(translateRawText(row[0], XML, TEXT), row[1]) << row.place;
        } else {
            std::optional<std::string> const xml = translateRawText(row[0], TEXT, XML);
            EXPECT_EQ(xml, row[1]) << row.place;
            EXPECT_EQ(translateRawText(xml.value_or(""), XML, TEXT), row[row.columns.size() > 2 ? 2 : 0])
                << row.place;
        }
}

/// Passes over `text`, the entries of a block, which must end exactly where the block does.
bool isBalanced(ModelFormat::Format format, std::string const& text) {
    if (format != TEXT) {
        Document document(format, "<A>\n" + text + "</A><End>");
        return document.current() == "A" && ModelInFormatAccess::skipEntry(document.imf) &&
               document.current() == "End";
    }
    Document document(format, text + "\n} End ");
    while (!ModelInFormatAccess::isBlockEnd(document.imf))
        if (!ModelInFormatAccess::skipEntry(document.imf) || document.current() == "<end>")
            return false;
    document.imf.nextKeyword();
    return document.current() == "End";
}

TEST(RawText, WhateverComesInWhatComesOutIsBalanced) {
    std::string const text =
        "A<b>{ \"C\" { \"\\\"}\" } x\"=>\"{\" }\n} D{}{ 1 < > & ' }\n\"E\" 1\n{ 2 }Value { \" PreObserver "
        "\nObserverPath { \n} F \"a\"=>\"}\" {\n";
    std::string const xml =
        "<A x=\"y\" value=\"1'}\"/>z{<B type=\"q{\"><C></D>< <!-- - --->\"/>\"><PreObserver> "
        "<ObserverPath></E>}&quot;<?g?>&lt;<Child><F value=\"'\\'{\"/></VOXA>";
    for (auto const& [from, whole] : {std::pair(TEXT, text), std::pair(XML, xml)}) {
        EXPECT_TRUE(translateRawText(whole, from, from == TEXT ? XML : TEXT));
        auto const to = from == TEXT ? XML : TEXT;
        for (std::size_t begin = 0; begin < whole.size(); ++begin)
            for (std::size_t end = begin; end <= whole.size(); ++end) {
                std::string const part = whole.substr(begin, end - begin);
                if (auto const translated = translateRawText(part, from, to)) {
                    EXPECT_TRUE(isBalanced(to, *translated)) << part << "\nbecame\n" << *translated;
                }
            }
    }
}

TEST(RawText, DeepAndLongTextIsTranslatedInLinearTimeWithoutRecursion) {
    std::string text, xml;
    for (int i = 0; i < 100000; ++i) {
        text += "A { ";
        xml += "<A>";
    }
    EXPECT_EQ(translateRawText(text, TEXT, XML).value_or("").size(),
              100000 * std::string("<A>\n</A>\n").size());
    EXPECT_EQ(translateRawText(xml, XML, TEXT).value_or("").size(), 100000 * std::string("A { \n}\n").size());
    EXPECT_TRUE(translateRawText(std::string(200000, '\''), TEXT, XML));
    EXPECT_TRUE(translateRawText("<A value=\"" + std::string(200000, '\''), XML, TEXT));
}

} // namespace
} // namespace Zorvan::AttributeContainer
