// SPDX-License-Identifier: MIT
#include "serialization/ReadOutcome.h"

#include "foundation/MakeError.h"

#include <istream>
#include <streambuf>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

/// A document may repeat one mistake in every line; what is kept of it must not outgrow the document.
constexpr std::size_t maxKeptPerKind = 100;

bool holdsCode(ErrorHandling::ErrorBase const& error, ErrorCode code) {
    auto const* coded = dynamic_cast<ErrorHandling::ErrorWithCode<ErrorCode> const*>(&error);
    if (coded && coded->getCode() == code)
        return true;
    for (auto const& nested : error.getNested())
        if (nested && holdsCode(*nested, code))
            return true;
    return false;
}

} // namespace

Result atOffset(Result error, std::istream& in) {
    if (!in.rdbuf() || error->getInfos().count("Offset") != 0)
        return error;
    auto const position = in.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    if (position == std::streampos(std::streamoff(-1)))
        return error;
    return addInfo(std::move(error), "Offset",
                   std::to_string(static_cast<long long>(std::streamoff(position))));
}

bool ReadOutcome::endsRead(Result const& result) {
    if (!result || result->isWarning())
        return false;
    return result->getCode() != ObserverUnresolved && result->getCode() != TargetMissing;
}

void ReadOutcome::note(Result result) {
    if (!result || result->getCode() == NotMarked)
        return;
    hasSkipped_ = hasSkipped_ || holdsCode(*result, ContentSkipped);
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

void ReadOutcome::keep(Kind kind, Result result) {
    if (ofKind_[kind].size() < maxKeptPerKind)
        ofKind_[kind].push_back(std::move(result));
    else
        ++numOmitted_[kind];
}

bool ReadOutcome::isEmpty() const {
    for (auto const& results : ofKind_)
        if (!results.empty())
            return false;
    return true;
}

Result ReadOutcome::finish(char const* file, int line, ErrorCode unknownCode) {
    Result primary;
    std::size_t numOmitted = 0;
    if (hasUnknownContent())
        primary = makeError(file, line, unknownCode);
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
