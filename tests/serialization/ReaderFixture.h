// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/ReadFromScope.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

inline std::shared_ptr<ReadContextBase const> readContext(ModelFormat::Format format) {
    auto context = std::make_shared<ReadContextBase>();
    context->setFormat(format);
    return context;
}

/// A document in memory and a reader on it.
class Document {
public:
    Document(ModelFormat::Format format, std::string const& text)
        : in(text), scope(in, readContext(format)), imf(scope.getImf()) {}

    /// The current keyword; "<end>" when there is none.
    std::string current() {
        auto const keyword = imf.getKeyword();
        return keyword ? *keyword : "<end>";
    }

    std::string next() {
        imf.nextKeyword();
        return current();
    }

    /// What the stream still holds.
    std::string rest() {
        in.clear();
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    std::istringstream in;
    ReadFromScope scope;
    ModelInFormat& imf;
};

/// All keywords of a document up to its end, when it has less than `limit`.
inline std::vector<std::string> keywordsOf(ModelFormat::Format format, std::string const& text,
                                           std::size_t limit = 10000) {
    Document document(format, text);
    std::vector<std::string> keywords;
    while (document.imf.getKeyword() && keywords.size() < limit) {
        keywords.push_back(document.current());
        document.imf.nextKeyword();
    }
    return keywords;
}

} // namespace Zorvan::AttributeContainer
