// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "DocumentFile.h"
#include "Files.h"
#include "JsonText.h"
#include "Report.h"
#include "TreeComparer.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace kxmodel {

namespace {

using Kind = Difference::Kind;

struct Summary {
    std::size_t numChanged = 0;
    std::size_t numOnlyFirst = 0;
    std::size_t numOnlySecond = 0;
};

Summary summaryOf(std::vector<Difference> const& differences) {
    Summary summary;
    for (Difference const& difference : differences)
        ++(difference.kind == Kind::OnlyFirst    ? summary.numOnlyFirst
           : difference.kind == Kind::OnlySecond ? summary.numOnlySecond
                                                 : summary.numChanged);
    return summary;
}

/// A part of a text; characters of several bytes stay whole.
std::string_view part(std::string_view text, std::size_t begin, std::size_t length) {
    auto const isInside = [text](std::size_t i) {
        return i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80;
    };
    std::size_t end = std::min(begin + length, text.size());
    while (begin > 0 && isInside(begin))
        --begin;
    while (end > begin && isInside(end))
        --end;
    return text.substr(begin, end - begin);
}

class TextOutput {
public:
    explicit TextOutput(DiffOptions const& options) : options_(options) {}

    std::string all(std::vector<Difference> const& differences) const {
        std::string out;
        for (Difference const& difference : differences)
            writeLine(out, difference);
        Summary const summary = summaryOf(differences);
        if (differences.empty())
            out += "no differences";
        else
            out += std::to_string(differences.size()) +
                   (differences.size() == 1 ? " difference: " : " differences: ") +
                   std::to_string(summary.numChanged) + " changed, " + std::to_string(summary.numOnlyFirst) +
                   " only in the first, " + std::to_string(summary.numOnlySecond) + " only in the second";
        return out + (options_.compare.comparesLinks ? "\n" : "; observer links were not compared\n");
    }

private:
    /// Longer values are cut.
    static constexpr std::size_t maxValueLength = 72;
    /// What is shown of a cut value before the first character that differs.
    static constexpr std::size_t contextLength = 24;

    void writeLine(std::string& out, Difference const& difference) const {
        out +=
            onOneLine(difference.path) + ": " + nameOf(difference.kind) + ", " + onOneLine(difference.type);
        std::string const first = onOneLine(difference.first.value_or(""));
        std::string const second = onOneLine(difference.second.value_or(""));
        auto const same = std::mismatch(first.begin(), first.end(), second.begin(), second.end()).first;
        std::size_t const numSame = static_cast<std::size_t>(same - first.begin());
        bool const isOneSided = !difference.first || !difference.second;
        // A class is told by the type already.
        if (isOneSided && !(first + second).empty())
            out += ": " + shortened(first + second, 0);
        else if (!isOneSided && difference.kind != Kind::ClassChanged)
            out += ": " + shortened(first, numSame) + " -> " + shortened(second, numSame);
        out += '\n';
    }

    std::string shortened(std::string const& text, std::size_t numSame) const {
        if (text.empty())
            return "(none)";
        if (options_.isFull || text.size() <= maxValueLength)
            return text;
        std::size_t const begin = numSame + contextLength <= maxValueLength ? 0 : numSame - contextLength;
        std::string_view const shown = part(text, begin, maxValueLength);
        std::string result = begin == 0 ? "" : "...";
        result += shown;
        if (shown.data() + shown.size() != text.data() + text.size())
            result += "...";
        return result + " (" + std::to_string(text.size()) + " characters)";
    }

    DiffOptions const& options_;
};

void appendMember(std::string& out, char const* key, std::optional<std::string> const& text) {
    out += out.ends_with('{') ? "\"" : ",\"";
    out.append(key) += "\":";
    if (text)
        appendJsonString(out, *text);
    else
        out += "null";
}

/// One object, with a difference a line; null is the value of the side that has none.
std::string jsonOf(std::string const& first, std::string const& second,
                   std::vector<Difference> const& differences) {
    Summary const summary = summaryOf(differences);
    std::string out = "{\"format\":1";
    appendMember(out, "first", first);
    appendMember(out, "second", second);
    out.append(",\"equal\":").append(differences.empty() ? "true" : "false");
    out += ",\"summary\":{\"changed\":" + std::to_string(summary.numChanged) +
           ",\"only_first\":" + std::to_string(summary.numOnlyFirst) +
           ",\"only_second\":" + std::to_string(summary.numOnlySecond) + "},\"differences\":[";
    for (Difference const& difference : differences) {
        out += out.ends_with('[') ? "\n{" : ",\n{";
        appendMember(out, "path", difference.path);
        appendMember(out, "kind", nameOf(difference.kind));
        appendMember(out, "type", difference.type);
        appendMember(out, "first", difference.first);
        appendMember(out, "second", difference.second);
        out += '}';
    }
    return out + "]}\n";
}

} // namespace

Status diff(DiffOptions const& options) {
    if (options.first == "-" && options.second == "-") {
        printMessage(inputName("-"), "only one of the two documents can be read from it");
        return Status::Failed;
    }
    DocumentFile first(options.first), second(options.second);
    for (DocumentFile* const file : {&first, &second})
        file->report().print(file->document());
    for (DocumentFile* const file : {&first, &second})
        if (file->document().outcome >= Outcome::Incomplete)
            return Status::Failed;

    std::vector<Difference> differences;
    try {
        differences = compareTrees(*first.document().root, *second.document().root, options.compare);
    } catch (std::runtime_error const& error) {
        printMessage(first.name() + " and " + second.name(), error.what());
        return Status::Failed;
    }
    if (!options.isQuiet)
        writeAll("-", options.isJson ? jsonOf(first.name(), second.name(), differences)
                                     : TextOutput(options).all(differences));
    return differences.empty() ? Status::Good : Status::Different;
}

} // namespace kxmodel
