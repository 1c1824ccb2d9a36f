// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/ModelFormat.h>
#include <AttributeContainer/Version.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kxmodel {

class Progress;

using Rendering = Zorvan::AttributeContainer::ModelFormat::Format;

/// What stands before the root of a document.
struct Header {
    std::string title;
    std::optional<Zorvan::AttributeContainer::VersionNum> format;
    /// XML documents do not carry it.
    std::optional<Zorvan::AttributeContainer::VersionNum> rootModel;
};

/// What became of a document that was read. The order is from good to bad.
enum class Outcome {
    Good,       ///< nothing to report
    Warnings,   ///< read to its end, with something to report
    Incomplete, ///< a part of it was read
    Unreadable  ///< damaged, or no document at all
};

/// Something to report beside what the library returns.
struct Remark {
    bool isError = false;
    std::string text;
    std::optional<std::size_t> offset; ///< In bytes.
};

/// The containers that a document refers to again. A reference may lead to what is around it; such a ring
/// would keep itself in memory, so they are emptied when the document goes.
class ReferencedContainers {
public:
    ReferencedContainers() = default;
    ReferencedContainers(ReferencedContainers&&) = default;
    ReferencedContainers& operator=(ReferencedContainers&&) = default;
    ~ReferencedContainers();

    void add(std::shared_ptr<Zorvan::AttributeContainer::AttrContainer> const& container) {
        containers_.push_back(container);
    }

private:
    std::vector<std::weak_ptr<Zorvan::AttributeContainer::AttrContainer>> containers_;
};

/// A document in memory, and what there is to say about how it was read.
struct Document {
    Rendering rendering = Zorvan::AttributeContainer::ModelFormat::Text;
    std::size_t size = 0; ///< Of what it was read from, in bytes.
    std::optional<Header> header;
    /// Empty when nothing could be read.
    std::shared_ptr<Zorvan::AttributeContainer::AttrContainer> root;
    bool hasInstanceIds = false;
    ReferencedContainers referenced;

    Outcome outcome = Outcome::Good;
    /// Content of the text has no place in `root`, so that writing it would lose something.
    bool isLossy = false;
    Zorvan::AttributeContainer::Result result;
    std::vector<Remark> remarks;
};

/// Reads a document of either rendering. It never fails as a whole: see `outcome`. The progress is told of
/// the bytes that were read.
Document readDocument(std::string const& text, Progress* progress = nullptr);

/// About how many bytes a document takes in a rendering.
std::size_t expectedSize(Document const& document, Rendering rendering);

/// Writes a document that has a root in a rendering. Nothing when it cannot be written; `why` says the reason
/// then. The progress is told of the bytes that were written.
std::optional<std::string> writeDocument(Document const& document, Rendering rendering,
                                         Zorvan::AttributeContainer::Result& why,
                                         Progress* progress = nullptr);

} // namespace kxmodel
