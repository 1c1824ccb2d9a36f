// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/RawText.h"

#include <AttributeContainer/ModelInFormat.h>
#include <AttributeContainer/Object.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WriteToScope.h>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer::Testing {

constexpr ModelFormat::Format TEXT = ModelFormat::Text;
constexpr ModelFormat::Format XML = ModelFormat::XmlV2;

/// The code of an error and, in parentheses, what is nested in it; "ok" for
/// none.
inline std::string verdict(ErrorHandling::ErrorBase const& error) {
    auto const* coded = dynamic_cast<Result::element_type const*>(&error);
    std::string text = coded ? errorCodeName(coded->getCode()) : "?";
    std::string nested;
    for (auto const& cause : error.getNested())
        nested += (nested.empty() ? "" : " ") + verdict(*cause);
    return nested.empty() ? text : text + "(" + nested + ")";
}
inline std::string verdict(Result const& result) { return result ? verdict(*result) : "ok"; }

inline std::shared_ptr<ReadContextBase> readContext(ModelFormat::Format format) {
    auto context = std::make_shared<ReadContextBase>();
    context->setFormat(format);
    return context;
}

/// Reads the blocks of a document, which in XML has its header too, into
/// `root`.
inline Result read(AttrContainer& root, std::string const& document,
                   std::shared_ptr<ReadContextBase> const& context) {
    std::istringstream in(document);
    ReadFromScope scope(in, context);
    if (context->getFormat() == XML) {
        std::string title;
        scope.getImf().determineFormat();
        scope.getImf().readHeader(title);
    }
    return root.readFrom(in, context);
}
inline Result read(AttrContainer& root, std::string const& document, ModelFormat::Format format = TEXT) {
    return read(root, document, readContext(format));
}

inline std::string write(AttrContainer& root, std::shared_ptr<WriteContextBase> const& context) {
    std::ostringstream out;
    WriteToScope scope(out, context);
    bool const isXml = context->getFormat() == XML;
    if (isXml)
        scope.getMof().writeHeader("");
    Result const result = root.writeTo(out, context);
    if (isXml)
        scope.getMof().writeFooter();
    return result ? verdict(result) : out.str();
}
inline std::string write(AttrContainer& root, ModelFormat::Format format = TEXT) {
    return write(root, std::make_shared<WriteContextBase>(format));
}

/// The entries of a text as a container block.
inline std::string block(std::string const& opener, std::string const& entries) {
    return opener + " { \n" + entries + "}\n";
}
inline std::string attr(std::string const& type, std::string const& name, std::string const& entries) {
    return block("Attr<" + type + ">", "Name \"" + name + "\"\n" + entries);
}
/// A "Child" or "SubContainer" block.
inline std::string member(std::string const& keyword, std::string const& className, std::string const& name,
                          std::string const& entries) {
    return block(keyword, "\"" + className + "\" \"" + name + "\"\n" + entries);
}
inline std::string child(std::string const& className, std::string const& name, std::string const& entries) {
    return member("Child", className, name, entries);
}
inline std::string field(std::string const& className, std::string const& name, std::string const& entries) {
    return member("SubContainer", className, name, entries);
}
/// The part that every container has, with its name.
inline std::string part(std::string const& name, std::string const& entries = "") {
    return block("AttrContainer", attr("String", "Name", "Value \"" + name + "\"\n") + entries);
}
inline std::string link(std::string const& kind, std::string const& path, std::string const& entries) {
    return kind + "\n" + block("ObserverPath", "Path \"" + path + "\"\n" + entries);
}

/// An XML document of these elements.
inline std::string xmlDocument(std::string const& elements) {
    std::ostringstream out;
    WriteToScope scope(out, std::make_shared<WriteContextBase>(XML));
    scope.getMof().writeHeader("");
    out << elements;
    scope.getMof().writeFooter();
    return out.str();
}

/// The blocks of a text as an XML document.
inline std::string xmlOf(std::string const& text) {
    return xmlDocument(translateRawText(text, TEXT, XML).value_or("(no XML)"));
}

/// A tree on one line: "Class name{attribute=value ...}[field:... ...](child
/// ...)"; what an attribute's class declares is left out while it is empty or
/// 0.
inline std::string outline(AttrContainer& container) {
    std::string text = container.getClassName() + " " + container.name() + "{";
    for (std::uint64_t i = 1; i < container.getNumAttributes(); ++i) {
        auto const attribute = container.getAttr(i).lock();
        std::string const value = attribute->getValueAsText();
        if (i < container.getNumHardCodedAttributes() &&
            (value.empty() || value == "0" || attribute->getName() == "UUID"))
            continue;
        text += (text.ends_with('{') ? "" : " ") + attribute->getName() + "=" + value;
    }
    text += "}";
    for (std::uint64_t i = 0; i < container.getNumFields(); ++i)
        if (auto const field = container.getField(i).lock())
            text += "[" + container.getFieldName(i).value_or("") + ":" + outline(*field) + "]";
    if (auto* object = dynamic_cast<Object*>(&container))
        for (std::uint64_t i = 0; i < object->children().getNumChildren(); ++i)
            text += "(" + outline(*object->children().getChild(i)) + ")";
    return text;
}

/// A text that is read into an object or container, what reading answers, and
/// the outline of what is there then: empty where it does not matter.
struct DocumentRow {
    std::string text, verdict, tree;
};

/// Reads each text in both renderings, each with a context of its own.
template <class Root, class MakeContext = decltype(&readContext)>
void expectRead(std::vector<DocumentRow> const& rows, MakeContext const& makeContext = readContext) {
    for (DocumentRow const& row : rows)
        for (auto const format : {TEXT, XML}) {
            std::string const document = format == TEXT ? row.text : xmlOf(row.text);
            SCOPED_TRACE(document);
            auto const root = Root::create();
            EXPECT_EQ(verdict(read(*root, document, makeContext(format))), row.verdict);
            if (!row.tree.empty()) {
                EXPECT_EQ(outline(*root), row.tree);
            }
        }
}

/// Read from either rendering, what `root` holds is written alike in both.
template <class Root>
void expectStable(Root& root, std::string const& expectedVerdict) {
    std::string const text = write(root);
    std::string const xml = write(root, XML);
    for (auto const format : {TEXT, XML}) {
        auto const again = Root::create();
        std::string const found = verdict(read(*again, format == TEXT ? text : xml, format));
        EXPECT_EQ(found.substr(0, expectedVerdict.size()), expectedVerdict);
        EXPECT_EQ(write(*again), text);
        EXPECT_EQ(write(*again, XML), xml);
    }
}

} // namespace Zorvan::AttributeContainer::Testing
