// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/RawText.h"
#include "serialization/ReaderFixture.h"

#include <AttributeContainer/AttributeContainer.h>

#include <fstream>

namespace Zorvan::AttributeContainer::Testing {

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

/// Reads the blocks of a document, which in XML has its header too, into
/// `root`.
inline Result read(AttrContainer& root, std::istream& in, std::shared_ptr<ReadContextBase> const& context) {
    ReadFromScope scope(in, context);
    if (context->getFormat() == XML) {
        std::string title;
        scope.getImf().determineFormat();
        scope.getImf().readHeader(title);
    }
    return root.readFrom(in, context);
}
inline Result read(AttrContainer& root, std::string const& document,
                   std::shared_ptr<ReadContextBase> const& context) {
    std::istringstream in(document);
    return read(root, in, context);
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

class SharingWriter : public WriteContextBase {
public:
    using WriteContextBase::WriteContextBase;
    SharedInstanceCollection* getSharedInstances() const override { return &instances; }
    mutable SharedInstanceCollection instances;
};

class SharingReader : public ReadContextBase {
public:
    SharingReader(ModelFormat::Format format, std::vector<std::uint64_t> ids) {
        setFormat(format);
        dictionary.initializeFromVector(ids);
    }
    ReferenceDictionary* getReferenceDictionary() const override { return &dictionary; }
    mutable ReferenceDictionary dictionary;
};

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

/// A case of a file below tests/data/containers: "== " and its title, "verdict: " and what reading answers,
/// "tree: " and the outline of what is there then (none where it does not matter), and the lines of a text,
/// whose parts have "--" between them. What stands before the first case is a comment.
struct DocumentCase {
    std::string place, verdict, tree;
    std::vector<std::string> texts{""};
};

inline std::vector<DocumentCase> documentCases(std::string const& file) {
    std::ifstream in(std::string(KX_TEST_DATA_DIR "/containers/") + file, std::ios::binary);
    std::vector<DocumentCase> cases;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number)
        if (line.starts_with("== "))
            cases.push_back({file + ":" + std::to_string(number) + ": " + line, "", ""});
        else if (cases.empty() || line.empty())
            continue;
        else if (line.starts_with("verdict: "))
            cases.back().verdict = line.substr(9);
        else if (line.starts_with("tree: "))
            cases.back().tree = line.substr(6);
        else if (line == "--")
            cases.back().texts.emplace_back();
        else
            cases.back().texts.back() += line + "\n";
    EXPECT_FALSE(cases.empty()) << file;
    return cases;
}

/// Reads each text in both renderings, each with a context of its own.
template <class Root, class MakeContext = decltype(&readContext)>
void expectRead(std::vector<DocumentCase> const& cases, MakeContext const& makeContext = readContext) {
    for (DocumentCase const& one : cases)
        for (auto const format : {TEXT, XML}) {
            std::string const document = format == TEXT ? one.texts[0] : xmlOf(one.texts[0]);
            SCOPED_TRACE(one.place + "\n" + document);
            auto const root = Root::create();
            EXPECT_EQ(verdict(read(*root, document, makeContext(format))), one.verdict);
            EXPECT_EQ(one.tree.empty() ? "" : outline(*root), one.tree);
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
