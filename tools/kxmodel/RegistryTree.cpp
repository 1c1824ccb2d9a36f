// SPDX-License-Identifier: MIT
#include "RegistryTree.h"

#include "Placeholder.h"
#include "Report.h"
#include "Sharing.h"
#include "TreePath.h"

#include <AttributeContainer/AttrRegistryVisitor.h>

#include <set>
#include <stdexcept>
#include <unordered_set>
#include <utility>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

constexpr std::size_t maxNameLength = 255;
constexpr std::size_t maxTextLength = 511;

/// Lets anybody ask for the rule of the registry's visitors.
struct LeftOutRule : AttrRegistryVisitor {
    using AttrRegistryVisitor::isLeftOut;
};

/// A text as the registry keeps it: its number of UTF-16 units, and whether nothing of it is lost.
struct StoredText {
    std::size_t length = 0;
    bool isWhole = true;
};

StoredText storedTextOf(std::string const& text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    // No text has more units than bytes; two null characters follow.
    std::vector<unsigned char> data(2 * text.size() + 4);
    int const size = RegKeys::stringToMultiSZ(data.data(), data.size(), text);
    StoredText stored{size == 0 ? 0 : static_cast<std::size_t>(size) / 2 - 2};
    std::size_t numReplacements = 0;
    for (std::size_t i = 0; i < stored.length; ++i)
        numReplacements += data[2 * i] == 0xFD && data[2 * i + 1] == 0xFF;
    for (std::size_t i = text.find(replacement); i != text.npos; i = text.find(replacement, i + 1))
        --numReplacements;
    stored.isWhole = numReplacements == 0;
    return stored;
}

/// What is wrong with a name that a key or a value is to have; empty when nothing is.
std::string whyNoName(std::string const& name, bool isKey) {
    if (name.find('\0') != name.npos)
        return "has a null character";
    StoredText const stored = storedTextOf(name);
    if (stored.length > maxNameLength)
        return "has more than 255 characters";
    if (!stored.isWhole)
        return "is not UTF-8";
    if (isKey && name.empty())
        return "is empty";
    if (isKey && name.find_first_of("\\\r\n") != name.npos)
        return "has a backslash or a line end";
    return {};
}

class KeyPlan {
public:
    void add(std::shared_ptr<AttrContainer> const& container, ContainerKey const& place) {
        if (!onPath_.insert(container.get()).second)
            fail(place.path, "is in itself");
        std::size_t const index = keys_.size();
        keys_.push_back(place);
        keys_[index].container = container;
        keys_[index].attributes = valuesOf(*container, place.path);

        Members const members = membersOf(*container);
        std::set<std::string> names;
        for (auto const& field : members.fields)
            addBelow(index, field, container->getFieldRegistryPrefix(*field.item).value_or(""), names);
        if (!members.children.empty()) {
            checkName(place.path, "~", true, names);
            std::size_t const home = keys_.size();
            keys_.push_back({nullptr, {}, joined(place.key, "~"), place.path, index});
            std::set<std::string> childNames;
            for (auto const& child : members.children) {
                std::string name = child.name;
                if (!name.empty() && child.ordinal > 1)
                    name.append("[").append(std::to_string(child.ordinal)) += ']';
                addBelow(home, child, name, childNames);
            }
        }
        onPath_.erase(container.get());
    }
    std::vector<ContainerKey> take() { return std::move(keys_); }

private:
    [[noreturn]] static void fail(std::string const& path, std::string const& why) {
        throw std::runtime_error((path.empty() ? "the root" : onOneLine(path)) + " " + why);
    }

    static std::string joined(std::string const& key, std::string const& name) {
        return key.empty() ? name : key + '\\' + name;
    }

    static void checkName(std::string const& path, std::string const& name, bool isKey,
                          std::set<std::string>& names) {
        std::string const what = isKey ? "key" : "value";
        std::string const quoted = "\"" + onOneLine(name) + "\"";
        if (std::string const why = whyNoName(name, isKey); !why.empty())
            fail(path, "cannot be saved: as the name of a " + what + ", " + quoted + " " + why);
        if (!names.insert(RegKeys::foldName(name)).second)
            fail(path, "cannot be saved: another " + what + " beside it has the name " + quoted +
                           ", or one that differs only in case");
    }

    static Attributes valuesOf(AttrContainer& container, std::string const& path) {
        Attributes values;
        if (isKeptAsText(container))
            return values;
        std::set<std::string> names;
        for (auto& attribute : attributesOf(container)) {
            if (LeftOutRule::isLeftOut(*attribute.item))
                continue;
            std::string attributePath = path;
            appendStep(attributePath, attribute.name, attribute.ordinal);
            checkName(attributePath, attribute.name, false, names);
            values.push_back(std::move(attribute));
        }
        return values;
    }

    void addBelow(std::size_t parent, Named<AttrContainer> const& member, std::string const& keyName,
                  std::set<std::string>& names) {
        ContainerKey place{nullptr, {}, joined(keys_[parent].key, keyName), keys_[parent].path, parent};
        appendStep(place.path, member.name, member.ordinal);
        checkName(place.path, keyName, true, names);
        add(member.item, place);
    }

    std::vector<ContainerKey> keys_;
    std::unordered_set<AttrContainer const*> onPath_;
};

/// A new attribute of the same type that was assigned a text.
std::shared_ptr<Attribute> assignedFrom(Attribute& attribute, std::string const& text) {
    auto scratch = attribute.duplicate(CreateType::Blank, std::nullopt);
    scratch->assignFrom(text, nullptr, nullptr, nullptr);
    return scratch;
}

} // namespace

std::vector<ContainerKey> keysOf(std::shared_ptr<AttrContainer> const& root) {
    if (!canBeUnshared(*root))
        throw std::runtime_error("its shared instances stand in too many places for the registry");
    KeyPlan plan;
    plan.add(root, {});
    return plan.take();
}

std::string whyTextFails(Attribute& attribute, std::string const& text) {
    std::string const again = assignedFrom(attribute, text)->getValueAsText();
    constexpr std::size_t maxShown = 40;
    // Lists end with a blank, which nobody misses.
    auto const trimmed = [](std::string_view whole) {
        return whole.substr(0, whole.find_last_not_of(' ') + 1);
    };
    if (trimmed(again) == trimmed(text))
        return {};
    return again.size() > maxShown ? "its text is read as another one"
                                   : "its text is read as \"" + onOneLine(again) + "\"";
}

std::string whyValueFails(Attribute& attribute) {
    std::string const text = attribute.getValueAsText();
    if (text.empty())
        return "its text is empty";
    StoredText const stored = storedTextOf(text);
    if (stored.length > maxTextLength)
        return "its text has more than 511 characters";
    if (!stored.isWhole)
        return "its text is not UTF-8";
    if (assignedFrom(attribute, text)->isDifferent(attribute))
        return "its text does not hold the whole value";
    return whyTextFails(attribute, text);
}

} // namespace kxmodel
