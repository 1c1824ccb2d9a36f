// SPDX-License-Identifier: MIT
#include "TreeText.h"

#include "Placeholder.h"
#include "Report.h"
#include "TreePath.h"

#include <AttributeContainer/Attr.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/WriteContextBase.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

/// The lines of a text that a writer made; each of them begins with a line break.
std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        std::size_t const end = text.find('\n');
        if (end != 0)
            lines.push_back(text.substr(0, end));
        text = end == text.npos ? std::string_view() : text.substr(end + 1);
    }
    return lines;
}

/// What follows a key at the start of a line.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view key) {
    if (!line.starts_with(key) || line.size() <= key.size() || line[key.size()] != ' ')
        return std::nullopt;
    return line.substr(key.size() + 1);
}

std::shared_ptr<WriteContextBase> textContext() {
    auto context = std::make_shared<WriteContextBase>();
    context->setWriteDefaultValues(true);
    return context;
}

/// Takes the next brace or word off a text; empty at its end.
std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
    std::size_t length = std::min(text.find_first_of(" \t\n\v\f\r{}"), text.size());
    if (length == 0 && !text.empty())
        length = 1;
    std::string_view const word = text.substr(0, length);
    text.remove_prefix(length);
    return word;
}

bool isSameNumber(std::string_view given, std::string_view stored) {
    // A little more than what writing with the digits of a `float` loses.
    constexpr double tolerance = 1e-6;
    auto const number = [](std::string_view word) -> std::optional<double> {
        if (word.starts_with('+'))
            word.remove_prefix(1);
        double value = 0;
        auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        if (error != std::errc() || end != word.data() + word.size())
            return std::nullopt;
        return value;
    };
    auto const a = number(given), b = number(stored);
    return a && b && (*a == *b || std::abs(*a - *b) <= tolerance * std::max(std::abs(*a), std::abs(*b)));
}

/// Whether a text of numbers and braces is what was stored. Readers are lenient: they take anything for an
/// opening brace, wrap negative numbers of unsigned types, and bring floating-point numbers into range.
bool isSameText(std::string_view given, std::string_view stored) {
    for (;;) {
        std::string_view const a = takeWord(given), b = takeWord(stored);
        if (a != b && !isSimilar(a, b) && !isSameNumber(a, b))
            return false;
        if (a.empty())
            return true;
    }
}

} // namespace

std::string classTextOf(AttrContainer const& container) {
    return onOneLine(documentClassOf(container)) + (isPlaceholder(container) ? " (unknown class)" : "");
}

std::string_view shortTypeOf(Attribute const& attribute) {
    std::string_view const type = attribute.getClassName();
    return type.starts_with("Attr<") && type.ends_with('>') ? type.substr(5, type.size() - 6) : type;
}

std::string valueTextOf(Attribute& attribute) {
    static auto const context = textContext();
    std::ostringstream text;
    if (auto const failure = attribute.writeTo(text, context); failure && !failure->isWarning())
        return errorCodeName(failure->getCode());
    for (std::string_view const entry : linesOf(text.view()))
        if (auto const value = valueOf(entry, "Value"))
            return std::string(value->substr(0, value->find_last_not_of(' ') + 1));
    return {};
}

std::string bareTextOf(Attribute& attribute) {
    auto const* string = dynamic_cast<Attr<std::string> const*>(&attribute);
    return string ? string->getValue() : valueTextOf(attribute);
}

std::shared_ptr<Attribute> parseValue(Attribute& attribute, std::string const& text) {
    auto parsed = attribute.duplicate(CreateType::Blank, std::nullopt);
    if (auto* string = dynamic_cast<Attr<std::string>*>(parsed.get())) {
        string->setValue(text);
        return parsed;
    }
    std::istringstream in(text);
    parsed->readValueFrom(in, std::make_shared<ReadContextBase>());
    if (in.fail() || !(in >> std::ws).eof())
        return nullptr;
    std::string_view const type = shortTypeOf(attribute);
    // Texts of strings are counted or quoted, which leaves no doubt; a set is sorted.
    if (type.starts_with("String"))
        return parsed;
    std::string_view rest = text;
    if (type == "UuidSet")
        return takeWord(rest) == "{" ? parsed : nullptr;
    return isSameText(text, valueTextOf(*parsed)) ? parsed : nullptr;
}

std::vector<LinkText> linksOf(Observable& observable) {
    static auto const context = textContext();
    std::ostringstream text;
    if (observable.Observable::writeTo(text, context))
        return {};
    std::vector<LinkText> links;
    LinkText link;
    for (std::string_view const entry : linesOf(text.view())) {
        if (entry.starts_with("PreObserver"))
            link.kind = "pre-observer";
        else if (entry.starts_with("PostObserver"))
            link.kind = "post-observer";
        else if (auto const path = valueOf(entry, "Path"))
            link.path = *path;
        else if (auto const priority = valueOf(entry, "Priority"))
            link.priority = *priority;
        else if (auto const action = valueOf(entry, "Action")) {
            link.action = *action;
            links.push_back(link);
        }
    }
    return links;
}

} // namespace kxmodel
