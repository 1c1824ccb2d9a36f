// SPDX-License-Identifier: MIT
#include "Report.h"

#include <ErrorHandling/ErrorWithCode.h>

#include <algorithm>
#include <charconv>
#include <iostream>
#include <map>
#include <utility>

namespace kxmodel {

using Zorvan::AttributeContainer::ErrorCode;
using Zorvan::AttributeContainer::errorCodeName;
using Zorvan::ErrorHandling::ErrorBase;
using Zorvan::ErrorHandling::ErrorWithCode;

namespace {

constexpr char offsetInfo[] = "Offset";

std::optional<std::size_t> offsetOf(ErrorBase const& error) {
    std::string const* const text = error.findInfo(offsetInfo);
    std::size_t offset = 0;
    if (!text || std::from_chars(text->data(), text->data() + text->size(), offset).ec != std::errc())
        return std::nullopt;
    return offset;
}

/// Links that could not be made do not keep a document from being read.
bool isWarningHere(ErrorBase const& error) {
    auto const* coded = dynamic_cast<ErrorWithCode<ErrorCode> const*>(&error);
    return error.isWarning() ||
           (coded && (coded->getCode() == Zorvan::AttributeContainer::ObserverUnresolved ||
                      coded->getCode() == Zorvan::AttributeContainer::TargetMissing));
}

void printLine(std::string line) {
    line += '\n';
    std::cerr << line << std::flush;
}

} // namespace

std::string onOneLine(std::string_view text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string result;
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (c == '\n')
            result += "\\n";
        else if (c == '\r')
            result += "\\r";
        else if (c == '\t')
            result += "\\t";
        else if (byte < 0x20 || byte == 0x7f)
            (result += "\\x").append({digits[byte >> 4], digits[byte & 15]});
        else
            result += c;
    }
    return result;
}

std::string describe(ErrorBase const& error) {
    auto const* coded = dynamic_cast<ErrorWithCode<ErrorCode> const*>(&error);
    std::string text = coded ? errorCodeName(coded->getCode()) : "error";
    text += " (" + error.getFile() + ":" + std::to_string(error.getLine()) + ")";
    std::map<std::string, std::string> infos;
    for (auto const& info : error.getInfos())
        if (auto const* value = error.findInfo(info.first); value && info.first != offsetInfo)
            infos.emplace(info.first, *value);
    for (auto const& [name, value] : infos)
        text += "; " + onOneLine(name) + ": " + onOneLine(value);
    return text;
}

void printMessage(std::string const& fileName, std::string const& message) {
    printLine(onOneLine(fileName) + ": " + message);
}

void Report::print(Document const& document) {
    for (Remark const& remark : document.remarks)
        printLine(place(remark.offset) + (remark.isError ? " error: " : " warning: ") +
                  onOneLine(remark.text));
    if (document.result)
        print(*document.result);
}

void Report::print(ErrorBase const& error) {
    // A chain of causes may be long: no recursion, and no indentation without end.
    constexpr std::size_t maxIndentation = 16;
    std::vector<std::pair<ErrorBase const*, std::size_t>> pending{{&error, 0}};
    while (!pending.empty()) {
        auto const [current, depth] = pending.back();
        pending.pop_back();
        std::string line = place(offsetOf(*current)).append(1 + std::min(2 * depth, maxIndentation), ' ');
        line += depth != 0 ? "cause: " : isWarningHere(*current) ? "warning: " : "error: ";
        printLine(line + describe(*current));
        auto const& nested = current->getNested();
        for (auto cause = nested.rbegin(); cause != nested.rend(); ++cause)
            if (*cause)
                pending.emplace_back(cause->get(), depth + 1);
    }
}

std::string Report::place(std::optional<std::size_t> offset) {
    std::string place = onOneLine(fileName_) + ":";
    if (!offset)
        return place;
    if (lineStarts_.empty()) {
        lineStarts_.push_back(0);
        for (std::size_t end = 0; (end = text_.find('\n', end)) != text_.npos;)
            lineStarts_.push_back(++end);
    }
    auto const next =
        std::upper_bound(lineStarts_.begin(), lineStarts_.end(), std::min(*offset, text_.size()));
    std::size_t const column = std::min(*offset, text_.size()) - *(next - 1) + 1;
    return place + std::to_string(next - lineStarts_.begin()) + ":" + std::to_string(column) + ":";
}

} // namespace kxmodel
