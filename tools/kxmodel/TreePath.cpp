// SPDX-License-Identifier: MIT
#include "TreePath.h"

#include "Pairing.h"
#include "Placeholder.h"
#include "Report.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

constexpr std::string_view escaped = "/[=\\";

struct Step {
    std::string_view text; ///< As the path has it.
    std::string name;
    std::size_t ordinal = 1;
};

/// The position of the first of some characters that no backslash escapes; the size without one.
std::size_t findPlain(std::string_view text, std::string_view characters, std::size_t begin = 0) {
    for (std::size_t i = begin; i < text.size(); ++i) {
        if (text[i] == '\\')
            ++i;
        else if (characters.find(text[i]) != characters.npos)
            return i;
    }
    return text.size();
}

std::optional<Step> parseStep(std::string_view text) {
    Step step{text, {}};
    std::size_t const end = findPlain(text, "[");
    for (std::size_t i = 0; i < end; ++i) {
        if (text[i] == '\\' && ++i == end)
            return std::nullopt;
        step.name += text[i];
    }
    if (end == text.size())
        return step;
    char const* const last = text.data() + text.size() - 1;
    auto const [stop, error] = std::from_chars(text.data() + end + 1, last, step.ordinal);
    if (*last != ']' || stop != last || error != std::errc() || step.ordinal == 0)
        return std::nullopt;
    return step;
}

/// Takes members as they come and keeps the one that a step means.
template <class Member>
class Match {
public:
    explicit Match(Step const& step) : step_(step) {}

    void offer(std::vector<Named<Member>> const& members) {
        for (auto const& [item, name, ordinal] : members) {
            if (name == step_.name) {
                isExact_ = true;
                if (ordinal == step_.ordinal)
                    exact_ = item;
            } else if (isSimilar(name, step_.name) && ++numSimilar_ == step_.ordinal) {
                similar_ = item;
            }
        }
    }
    std::shared_ptr<Member> take() const { return isExact_ ? exact_ : similar_; }

private:
    Step const& step_;
    bool isExact_ = false;
    std::size_t numSimilar_ = 0;
    std::shared_ptr<Member> exact_;
    std::shared_ptr<Member> similar_;
};

std::shared_ptr<AttrContainer> findMember(AttrContainer& container, Step const& step) {
    Match<AttrContainer> match(step);
    Members const members = membersOf(container);
    match.offer(members.children);
    match.offer(members.fields);
    return match.take();
}

std::shared_ptr<Attribute> findAttribute(AttrContainer& container, Step const& step) {
    Match<Attribute> match(step);
    match.offer(attributesOf(container));
    return match.take();
}

std::string quoted(std::string_view text) { return "\"" + onOneLine(text) + "\""; }

std::string nameOf(std::string_view path) { return path.empty() ? "the root" : quoted(path); }

} // namespace

bool isSimilar(std::string_view a, std::string_view b) {
    auto const lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [lower](char x, char y) { return lower(x) == lower(y); });
}

void appendStep(std::string& path, std::string_view name, std::size_t ordinal) {
    path += '/';
    for (char const c : name) {
        if (escaped.find(c) != escaped.npos)
            path += '\\';
        path += c;
    }
    if (ordinal > 1)
        path.append("[").append(std::to_string(ordinal)) += ']';
}

PathTarget resolvePath(std::shared_ptr<AttrContainer> const& root, std::string_view path) {
    PathTarget target{root, {}, {}};
    std::size_t begin = path.starts_with('/') ? 1 : 0;
    for (;;) {
        std::size_t const end = findPlain(path, "/", begin);
        bool const isLast = end == path.size();
        std::optional<Step> const step = parseStep(path.substr(begin, end - begin));
        if (!step) {
            target.why = quoted(path.substr(begin, end - begin)) + " is no step of a path";
            return target;
        }
        std::string_view const parent = path.substr(0, begin == 0 ? 0 : begin - 1);
        if (isKeptAsText(*target.container)) {
            target.why = nameOf(parent) + " of the unknown class " +
                         quoted(documentClassOf(*target.container)) +
                         " is kept as text, nothing of it can be reached";
            return target;
        }
        auto const member = isLast ? nullptr : findMember(*target.container, *step);
        if (isLast)
            target.attribute = findAttribute(*target.container, *step);
        if (target.attribute)
            return target;
        if (!member) {
            target.why = nameOf(parent) + " has no " + (isLast ? "attribute " : "child or field ") +
                         quoted(step->text);
            if (isLast && findMember(*target.container, *step))
                target.why += ", which names a child or field";
            return target;
        }
        target.container = member;
        begin = end + 1;
    }
}

std::size_t findAssignment(std::string_view text) {
    std::size_t const found = findPlain(text, "=");
    return found == text.size() ? text.npos : found;
}

} // namespace kxmodel
