// SPDX-License-Identifier: MIT
#pragma once

#include "StreamFixture.h"

#include <AttributeContainer/ReadFromScope.h>

#include <gtest/gtest.h>

#include <sstream>

namespace Zorvan::AttributeContainer {

constexpr auto TEXT = ModelFormat::Text;
constexpr auto XML = ModelFormat::XmlV2;

/// "text", "xml" for the older XML or "xml2".
inline ModelFormat::Format formatOf(std::string const& rendering) {
    return rendering == "text" ? TEXT : rendering == "xml" ? ModelFormat::Xml : XML;
}

inline std::shared_ptr<ReadContextBase> readContext(ModelFormat::Format format) {
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
    std::string current() { return imf.getKeyword().value_or("<end>"); }

    std::string next() {
        imf.nextKeyword();
        return current();
    }

    std::istringstream in;
    ReadFromScope scope;
    ModelInFormat& imf;
};

} // namespace Zorvan::AttributeContainer
