// SPDX-License-Identifier: MIT
#include "serialization/ReadOutcome.h"

#include "foundation/MakeError.h"

#include "serialization/ModelInFormatAccess.h"
#include <AttributeContainer/ModelInFormat.h>

#include <algorithm>
#include <istream>
#include <streambuf>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

/// A document may repeat one mistake in every line; what is kept of it must not outgrow the document.
constexpr std::size_t maxKeptPerKind = 100;
/// The file that errors of a single link's block name.
constexpr char linkSourceName[] = "ObserverPath";

/// What placeholders raise when they have taken content.
constexpr char placeholderSourceName[] = "FallbackObject";

/// Whether a result, or a cause of it, tells of more than content that a placeholder keeps and links that are
/// kept as text.
bool tellsOfLoss(ErrorHandling::ErrorBase const& error) {
    auto const* coded = dynamic_cast<Result::element_type const*>(&error);
    if (!coded)
        return true;
    if (coded->getCode() == ContentSkipped)
        return error.getFile() != placeholderSourceName;
    if (coded->getCode() != UnknownClass && coded->getCode() != ObserverUnresolved)
        return true;
    auto const& nested = error.getNested();
    return std::any_of(nested.begin(), nested.end(), [](auto const& cause) { return tellsOfLoss(*cause); });
}

} // namespace

Result atOffset(Result error, std::istream& in) {
    if (!in.rdbuf() || error->getInfos().contains("Offset"))
        return error;
    auto const position = in.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    if (position == std::streampos(std::streamoff(-1)))
        return error;
    return addInfo(std::move(error), "Offset",
                   std::to_string(static_cast<long long>(std::streamoff(position))));
}

Result readFailure(char const* file, int line, std::istream& in, std::string_view problem) {
    ModelInFormat::cleanPropagateKeyword();
    std::string_view const description = in.bad()   ? "The stream has failed"
                                         : in.eof() ? "The input ends inside a block"
                                                    : problem;
    return atOffset(addInfo(makeError(file, line, StreamFailure), "Description", std::string(description)),
                    in);
}

bool ReadOutcome::endsRead(Result const& result) {
    if (!result || result->isWarning())
        return false;
    return result->getCode() != ObserverUnresolved && result->getCode() != TargetMissing;
}

void ReadOutcome::note(Result result) {
    if (!result || result->getCode() == NotMarked)
        return;
    switch (result->getCode()) {
    case UnknownContent:
    case UnknownKeyword:
    case ObjectContentUnknown:
        keep(Unknown, std::move(result));
        break;
    case ObserverUnresolved:
    case TargetMissing:
        keep(Link, std::move(result));
        break;
    default:
        keep(Warning, std::move(result));
        break;
    }
}

void ReadOutcome::noteUnknownKeyword(std::istream& in, char const* file, int line, std::string_view key,
                                     std::string_view typeName) {
    if (ofKind_[Unknown].size() >= maxKeptPerKind) {
        ++numOmitted_[Unknown];
        return;
    }
    std::string description = "Unknown Key: ";
    description.append(key).append(" Unknown type: ").append(typeName);
    note(atOffset(addInfo(makeError(file, line, UnknownKeyword), "Description", std::move(description)), in));
}

bool ReadOutcome::noteLinks(Result& links, ModelInFormat& imf, bool isXml) {
    ModelInFormat::cleanPropagateKeyword();
    if (!links || links->getCode() != UnknownKeyword) {
        if (endsRead(links))
            return false;
        note(std::move(links));
        return true;
    }
    if (links->getFile() == linkSourceName) {
        // The keyword stands inside a link's block. The rest of that is passed over, or its end would be
        // taken for the end of the block around it.
        note(std::move(links));
        std::string_view keyword;
        while (ModelInFormatAccess::current(imf, keyword) && !ModelInFormatAccess::isBlockEnd(imf))
            ModelInFormatAccess::skipEntry(imf);
        imf.nextKeyword();
        if (isXml && ModelInFormatAccess::isBlockEnd(imf))
            imf.nextKeyword(); // The element around the link.
        return true;
    }
    // What went wrong with the links themselves is nested.
    for (auto const& nested : links->getNested())
        if (auto const* error = dynamic_cast<Result::element_type const*>(nested.get()))
            note(std::make_unique<Result::element_type>(*error));
    return true;
}

void ReadOutcome::keep(Kind kind, Result result) {
    std::size_t& numKept = tellsOfLoss(*result) ? numLosses_[kind] : numHarmless_[kind];
    if (numKept >= maxKeptPerKind) {
        ++numOmitted_[kind];
        return;
    }
    ++numKept;
    ofKind_[kind].push_back(std::move(result));
}

Result ReadOutcome::finish(char const* file, int line, ErrorCode unknownCode) {
    Result primary;
    std::size_t numOmitted = 0;
    if (hasUnknownContent()) {
        primary = makeError(file, line, unknownCode);
        if (std::string const* const offset = ofKind_[Unknown].front()->findInfo("Offset"))
            primary = addInfo(std::move(primary), "Offset", *offset);
    }
    for (std::size_t kind = 0; kind < NumKinds; ++kind) {
        for (auto& result : ofKind_[kind]) {
            if (!primary)
                primary = std::move(result);
            else
                primary->addNested(std::shared_ptr<ErrorHandling::ErrorBase>(std::move(result)));
        }
        numOmitted += numOmitted_[kind];
    }
    if (numOmitted != 0)
        primary = addInfo(std::move(primary), "Omitted", std::to_string(numOmitted));
    return primary;
}

} // namespace Zorvan::AttributeContainer
