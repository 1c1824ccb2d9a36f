// SPDX-License-Identifier: MIT
#include "TreeComparer.h"

#include "Pairing.h"
#include "Placeholder.h"
#include "TreePath.h"
#include "TreeText.h"

#include <AttributeContainer/AttrContComparer.h>

#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

using Kind = Difference::Kind;

/// Asks the library's comparer about single pairs of attributes.
class Tolerance : public AttrContComparer {
public:
    Tolerance() : AttrContComparer(-1, WithTolerances) {}
    bool isSame(Attribute const& first, Attribute const& second) const {
        return handleAttributes(&first, &second) == 0;
    }
};

/// The path of the container in which the comparison is.
class CurrentPath {
public:
    template <class T>
    std::string to(Named<T> const& member) const {
        std::string path = text_;
        appendStep(path, member.name, member.ordinal);
        return path;
    }
    std::string toContainer() const { return text_.empty() ? "/" : text_; }

    /// Steps into a member as long as the object lives.
    class Step {
    public:
        template <class T>
        Step(CurrentPath& path, Named<T> const& member) : path_(path), length_(path.text_.size()) {
            appendStep(path.text_, member.name, member.ordinal);
        }
        ~Step() { path_.text_.resize(length_); }
        Step(Step const&) = delete;
        Step& operator=(Step const&) = delete;

    private:
        CurrentPath& path_;
        std::size_t length_;
    };

private:
    std::string text_;
};

std::string bothOrOne(std::string_view first, std::string_view second) {
    std::string text(first);
    return first == second ? text : text.append(" -> ").append(second);
}

std::string linksTextOf(Observable& observable) {
    std::string text;
    for (LinkText const& link : linksOf(observable)) {
        text += text.empty() ? "" : "; ";
        text += link.kind + " " + link.path + ", action " + link.action + ", priority " + link.priority;
    }
    return text;
}

std::string withoutFirstLineBreak(std::string text) {
    return text.starts_with('\n') ? text.substr(1) : std::move(text);
}

/// What one side has and the other has not.
struct Side {
    Kind kind;
    std::optional<std::string> Difference::*value;
};
constexpr Side onlyFirst{Kind::OnlyFirst, &Difference::first};
constexpr Side onlySecond{Kind::OnlySecond, &Difference::second};

class TreeComparer {
public:
    explicit TreeComparer(CompareOptions const& options)
        : options_(options), ignored_(options.ignored.begin(), options.ignored.end()) {}

    void compare(AttrContainer& first, AttrContainer& second) {
        if (!compared_.emplace(&first, &second).second)
            return;
        std::string const& firstClass = documentClassOf(first);
        std::string const& secondClass = documentClassOf(second);
        if (firstClass != secondClass)
            add(firstPath_.toContainer(), Kind::ClassChanged, bothOrOne(firstClass, secondClass), firstClass,
                secondClass);
        if (isPlaceholder(first) || isPlaceholder(second)) {
            if (isPlaceholder(first) && isPlaceholder(second))
                comparePlaceholders(first, second);
            return;
        }
        if (options_.comparesLinks)
            compareLinks(firstPath_.toContainer(), firstClass, *first.observable(), *second.observable());
        compareAttributes(first, second);
        Members const firstMembers = membersOf(first), secondMembers = membersOf(second);
        compareMembers(firstMembers.fields, secondMembers.fields,
                       pairFields(firstMembers.fields, secondMembers.fields));
        compareMembers(firstMembers.children, secondMembers.children,
                       pairChildren(firstMembers.children, secondMembers.children));
    }

    std::vector<Difference> take() { return std::move(differences_); }

private:
    bool isIgnored(std::string const& name) const { return ignored_.contains(name); }
    bool takesPart(AttrContainer const& container, Attribute const& attribute) const {
        return (container.getAttrCategory(attribute) & options_.categories) != 0;
    }
    bool isCounted(Side const& side) const {
        return side.kind == Kind::OnlyFirst ? options_.countsOnlyFirst : options_.countsOnlySecond;
    }

    void add(std::string path, Kind kind, std::string type, std::optional<std::string> first,
             std::optional<std::string> second) {
        differences_.push_back({std::move(path), kind, std::move(type), std::move(first), std::move(second)});
    }
    void addOneSided(Side const& side, std::string path, std::string_view type, std::string value) {
        Difference difference{std::move(path), side.kind, std::string(type), {}, {}};
        difference.*side.value = std::move(value);
        differences_.push_back(std::move(difference));
    }

    void comparePlaceholders(AttrContainer& first, AttrContainer& second) {
        std::string firstText = textOfPlaceholder(first), secondText = textOfPlaceholder(second);
        if (firstText != secondText)
            add(firstPath_.toContainer(), Kind::Content,
                bothOrOne(documentClassOf(first), documentClassOf(second)),
                withoutFirstLineBreak(std::move(firstText)), withoutFirstLineBreak(std::move(secondText)));
    }

    void compareLinks(std::string const& path, std::string_view type, Observable& first, Observable& second) {
        std::string firstText = linksTextOf(first), secondText = linksTextOf(second);
        if (firstText != secondText)
            add(path, Kind::Links, std::string(type), std::move(firstText), std::move(secondText));
    }

    void compareAttributes(AttrContainer& first, AttrContainer& second) {
        Attributes const firstOnes = attributesOf(first), secondOnes = attributesOf(second);
        Pairing const pairing = pairAttributes(firstOnes, secondOnes);
        for (std::size_t i = 0; i < firstOnes.size(); ++i) {
            auto const& attribute = firstOnes[i];
            if (isIgnored(attribute.name))
                continue;
            if (pairing.partners[i] == noPartner) {
                listAttribute(onlyFirst, first, attribute, firstPath_);
                continue;
            }
            Attribute& partner = *secondOnes[pairing.partners[i]].item;
            if (takesPart(first, *attribute.item) || takesPart(second, partner))
                compareAttribute(attribute, partner);
        }
        for (std::size_t const i : pairing.unpaired)
            if (!isIgnored(secondOnes[i].name))
                listAttribute(onlySecond, second, secondOnes[i], secondPath_);
    }

    void compareAttribute(Named<Attribute> const& attribute, Attribute& second) {
        Attribute& first = *attribute.item;
        std::string_view const firstType = shortTypeOf(first), secondType = shortTypeOf(second);
        bool const isSameType = firstType == secondType;
        if (first.isDifferent(second) && !(options_.isApproximate && tolerance_.isSame(first, second)))
            add(firstPath_.to(attribute), isSameType ? Kind::Changed : Kind::TypeChanged,
                bothOrOne(firstType, secondType), valueTextOf(first), valueTextOf(second));
        if (options_.comparesLinks)
            compareLinks(firstPath_.to(attribute), firstType, first, second);
    }

    bool listAttribute(Side const& side, AttrContainer const& container, Named<Attribute> const& attribute,
                       CurrentPath const& path) {
        if (!isCounted(side) || !takesPart(container, *attribute.item))
            return false;
        addOneSided(side, path.to(attribute), shortTypeOf(*attribute.item), valueTextOf(*attribute.item));
        return true;
    }

    void compareMembers(Containers const& first, Containers const& second, Pairing const& pairing) {
        for (std::size_t i = 0; i < first.size(); ++i) {
            std::size_t const partner = pairing.partners[i];
            if (partner == noPartner) {
                listMember(onlyFirst, first[i], firstPath_);
            } else if (!isIgnored(first[i].name) && !isIgnored(second[partner].name)) {
                CurrentPath::Step const firstStep(firstPath_, first[i]);
                CurrentPath::Step const secondStep(secondPath_, second[partner]);
                compare(*first[i].item, *second[partner].item);
            }
        }
        for (std::size_t const i : pairing.unpaired)
            listMember(onlySecond, second[i], secondPath_);
    }

    void listMember(Side const& side, Named<AttrContainer> const& member, CurrentPath& path) {
        if (!isCounted(side) || isIgnored(member.name))
            return;
        CurrentPath::Step const step(path, member);
        AttrContainer& container = *member.item;
        bool const isFirst = side.kind == Kind::OnlyFirst;
        bool const isNew =
            compared_.emplace(isFirst ? &container : nullptr, isFirst ? nullptr : &container).second;
        if (!isNew || isPlaceholder(container)) {
            addOneSided(side, path.toContainer(), documentClassOf(container),
                        isNew ? withoutFirstLineBreak(textOfPlaceholder(container)) : std::string());
            return;
        }
        bool isListed = false;
        for (auto const& attribute : attributesOf(container))
            isListed |= !isIgnored(attribute.name) && listAttribute(side, container, attribute, path);
        if (!isListed)
            addOneSided(side, path.toContainer(), documentClassOf(container), {});
        Members const members = membersOf(container);
        for (auto const* list : {&members.fields, &members.children})
            for (auto const& below : *list)
                listMember(side, below, path);
    }

    CompareOptions const& options_;
    std::unordered_set<std::string> ignored_;
    Tolerance tolerance_;
    CurrentPath firstPath_;
    CurrentPath secondPath_;
    std::set<std::pair<AttrContainer const*, AttrContainer const*>> compared_;
    std::vector<Difference> differences_;
};

} // namespace

char const* nameOf(Difference::Kind kind) {
    switch (kind) {
    case Kind::Changed:
        return "changed";
    case Kind::TypeChanged:
        return "type-changed";
    case Kind::ClassChanged:
        return "class-changed";
    case Kind::OnlyFirst:
        return "only-first";
    case Kind::OnlySecond:
        return "only-second";
    case Kind::Content:
        return "content";
    case Kind::Links:
        return "links";
    }
    return "";
}

std::vector<Difference> compareTrees(AttrContainer& first, AttrContainer& second,
                                     CompareOptions const& options) {
    TreeComparer comparer(options);
    comparer.compare(first, second);
    return comparer.take();
}

} // namespace kxmodel
