// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>

#include <array>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Zorvan::AttributeContainer {

class ModelInFormat;

/// Adds where the stream stands: the info "Offset", in bytes from its start. Streams that do not know are
/// left out.
Result atOffset(Result error, std::istream& in);

/// A read that cannot go on: `StreamFailure` with "Offset" and "Description", which is `problem` unless the
/// input has ended. Clears the propagated keyword, of which nothing may reach another document.
Result readFailure(char const* file, int line, std::istream& in, std::string_view problem);

/// Collects what the readers of a block's entries report, and decides what the block's reader returns:
/// unknown content first, then links that could not be made, then the first warning; the others are nested in
/// it.
class ReadOutcome {
public:
    ReadOutcome() = default;

    /// Whether a result ends the read and is to be returned at once.
    [[nodiscard]] static bool endsRead(Result const& result);
    /// Records a result that does not end the read; none and `NotMarked` are dropped.
    void note(Result result);
    /// Records a keyword that the block does not know, with the info "Description".
    void noteUnknownKeyword(std::istream& in, char const* file, int line, std::string_view key,
                            std::string_view typeName);

    /// Records what a reader of observer links returned and drops the keyword that it propagated. False, with
    /// `links` left alone: it ends the read. True: the caller goes on with the current keyword, which the
    /// link reader may have stopped at because it is no link's.
    [[nodiscard]] bool noteLinks(Result& links, ModelInFormat& imf, bool isXml);

    bool hasUnknownContent() const { return !ofKind_[Unknown].empty(); }

    /// The result of the block. Unknown content is wrapped in a new error of `unknownCode`, raised at `file`,
    /// `line`, with the place of the first.
    [[nodiscard]] Result finish(char const* file, int line, ErrorCode unknownCode);

private:
    enum Kind : std::size_t { Unknown, Link, Warning, NumKinds };

    void keep(Kind kind, Result result);

    std::array<std::vector<Result>, NumKinds> ofKind_;
    std::array<std::size_t, NumKinds> numOmitted_{};
    /// Counted apart, so that many placeholders and links do not crowd out the one result that tells of a
    /// loss.
    std::array<std::size_t, NumKinds> numHarmless_{};
    std::array<std::size_t, NumKinds> numLosses_{};
};

} // namespace Zorvan::AttributeContainer
