// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "DocumentFile.h"
#include "Files.h"
#include "Placeholder.h"
#include "Progress.h"
#include "RegistryPlace.h"
#include "RegistryTree.h"
#include "TreePath.h"

#include <AttributeContainer/AttrRegistryVisitor.h>

#include <limits>
#include <set>
#include <stdexcept>
#include <unordered_set>
#include <utility>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

using AttributeSet = std::unordered_set<Attribute const*>;

std::string counted(std::size_t number, char const* what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

/// What is left out is listed.
class LeftOut {
public:
    explicit LeftOut(std::string const& fileName) : fileName_(fileName) {}

    void add(std::string const& path, Named<Attribute> const& attribute, std::string const& why) {
        std::string text = path;
        appendStep(text, attribute.name, attribute.ordinal);
        add(text, why);
    }
    void add(std::string const& path, std::string const& why) {
        lines_.push_back((path.empty() ? "the root" : onOneLine(path)) + ": left out: " + why);
    }
    void addKeptText(ContainerKey const& key) {
        if (key.container && numBytesKept(*key.container) != 0)
            add(key.path, "what is kept as text of an unknown class");
    }
    /// Prints the list; false when there may be none.
    bool accept(bool isStrict) const {
        for (std::string const& line : lines_)
            printMessage(fileName_, line);
        if (!isStrict || lines_.empty())
            return true;
        printMessage(fileName_, counted(lines_.size(), "value") + " left out, nothing was written");
        return false;
    }
    std::size_t size() const { return lines_.size(); }

private:
    std::string const& fileName_;
    std::vector<std::string> lines_;
};

[[noreturn]] void refuseType(RegistryPlace const& place, ContainerKey const& key, std::string const& name,
                             StoredValue const& value) {
    throw FileError(place.nameOf(key.key), "the value \"" + onOneLine(name) + "\" is no text, but of type " +
                                               std::to_string(value.type));
}

// --- save

/// Writes some of the attributes of one container.
class SomeWriter : public AttrWriteRegistry {
public:
    SomeWriter(std::shared_ptr<RegKeys const> key, AttributeSet const& some)
        : AttrWriteRegistry(std::move(key), 0, std::numeric_limits<unsigned>::max()), some_(some) {}

    using AttrWriteRegistry::visit;
    VisitResult visit(Attribute& attribute) override {
        if (!some_.contains(&attribute))
            return Continue;
        VisitResult const result = AttrWriteRegistry::visit(attribute);
        // The registry may refuse what it is given; the writer does not tell.
        if (result != Continue || keys().front()->queryKey(attribute.getName()) != attribute.getValueAsText())
            failed_ = attribute.getName();
        return Continue;
    }
    std::optional<std::string> const& failed() const { return failed_; }

private:
    AttributeSet const& some_;
    std::optional<std::string> failed_;
};

/// The attributes whose values can be saved; throws FileError when the key cannot be written to, or has
/// values of another kind.
AttributeSet chooseForSaving(RegistryPlace& place, std::vector<ContainerKey> const& keys, LeftOut& leftOut) {
    AttributeSet chosen;
    Progress progress("checking", keys.size());
    for (ContainerKey const& key : keys) {
        auto const there = place.open(key.key, false);
        if ((there != nullptr) != place.at(key.key).checkKey("", true))
            throw FileError(place.nameOf(key.key), "the key cannot be opened for reading and writing");
        leftOut.addKeptText(key);
        for (auto const& attribute : key.attributes) {
            std::string const why = whyValueFails(*attribute.item);
            if (!why.empty())
                leftOut.add(key.path, attribute, why);
            else if (auto const old = there ? storedValue(*there, attribute.name) : std::nullopt;
                     old && !old->isString())
                refuseType(place, key, attribute.name, *old);
            else
                chosen.insert(attribute.item.get());
        }
        progress.step();
    }
    return chosen;
}

void write(RegistryPlace& place, std::vector<ContainerKey> const& keys, AttributeSet const& chosen) {
    Progress progress("saving", keys.size());
    for (ContainerKey const& key : keys) {
        progress.step();
        if (!key.container)
            continue;
        auto const there = place.open(key.key, true);
        if (!there)
            throw FileError(place.nameOf(key.key), "the key cannot be opened for writing");
        SomeWriter writer(there, chosen);
        key.container->attributeVisitor(writer, false);
        if (writer.failed())
            throw FileError(place.nameOf(key.key),
                            "the value \"" + onOneLine(*writer.failed()) + "\" cannot be written");
    }
}

// --- load

/// Reads some of the attributes of one container. Observers are not told, as they are not when a document is
/// read: all values come from one state.
class SomeReader : public AttrReadRegistry {
public:
    SomeReader(std::shared_ptr<RegKeys const> key, AttributeSet const& some)
        : AttrReadRegistry(std::move(key), false, 0, std::numeric_limits<unsigned>::max()), some_(some) {}

    using AttrReadRegistry::visit;
    VisitResult visit(Attribute& attribute) override {
        return some_.contains(&attribute) ? AttrReadRegistry::visit(attribute) : Continue;
    }

private:
    AttributeSet const& some_;
};

/// Tells keys that are missing from those that cannot be opened.
class KnownKeys {
public:
    bool isThere(RegistryPlace& place, ContainerKey const& parent, ContainerKey const& key) {
        if (key.key.empty())
            return false;
        if (!isListed_ || parent_ != parent.key) {
            isListed_ = true;
            parent_ = parent.key;
            names_.clear();
            for (std::string const& name : place.at(parent_).enumerateKeys())
                names_.insert(RegKeys::foldName(name));
        }
        return names_.contains(RegKeys::foldName(key.key.substr(key.key.rfind('\\') + 1)));
    }

private:
    bool isListed_ = false;
    std::string parent_;
    std::set<std::string> names_;
};

/// Whether a text is a new name that the container would not accept. What a document is called already may
/// come back.
bool isRefusedName(ContainerKey const& key, Attribute const& attribute, std::string const& text) {
    constexpr int usualMode = 0;
    return &attribute == &key.container->Attr_name() && text != key.container->name() &&
           key.container->checkName(text, usualMode);
}

struct Loaded {
    AttributeSet attributes;
    std::size_t numMissing = 0;
};

Loaded chooseForLoading(RegistryPlace& place, std::vector<ContainerKey> const& keys, LeftOut& leftOut) {
    Loaded chosen;
    KnownKeys known;
    Progress progress("checking", keys.size());
    std::vector<bool> isThere(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        ContainerKey const& key = keys[i];
        bool const hasParent = i == 0 || isThere[key.parent];
        auto const there = hasParent ? place.open(key.key, false) : nullptr;
        isThere[i] = there != nullptr;
        if (!there && (i == 0 || (hasParent && known.isThere(place, keys[key.parent], key))))
            throw FileError(place.nameOf(key.key), "the key cannot be opened");
        leftOut.addKeptText(key);
        for (auto const& attribute : key.attributes) {
            auto const value = there ? storedValue(*there, attribute.name) : std::nullopt;
            if (value && !value->isString())
                refuseType(place, key, attribute.name, *value);
            std::string why = value ? value->whyUnreadable() : "";
            if (value && why.empty())
                why = whyTextFails(*attribute.item, there->queryKey(attribute.name));
            if (value && why.empty() && isRefusedName(key, *attribute.item, there->queryKey(attribute.name)))
                why = "it is no valid name";
            if (!value)
                ++chosen.numMissing;
            else if (!why.empty())
                leftOut.add(key.path, attribute, why);
            else
                chosen.attributes.insert(attribute.item.get());
        }
        progress.step();
    }
    return chosen;
}

// --- list

/// Writes a line for every value of a key and those below it.
class KeyLister {
public:
    explicit KeyLister(RegistryPlace& place) : place_(place) {}

    void list(std::string const& below) {
        ++numKeys_;
        auto const key = place_.open(below, false);
        if (!key)
            throw FileError(place_.nameOf(below), "the key cannot be opened");
        for (std::string const& name : valueNames(*key))
            addValue(*key, below, name);
        std::string const front = below.empty() ? "" : below + '\\';
        for (std::string const& name : key->enumerateKeys())
            list(front + name);
    }
    std::string const& text() const { return text_; }
    std::string count() const { return counted(numValues_, "value") + " in " + counted(numKeys_, "key"); }

private:
    static std::vector<std::string> valueNames(RegKeys const& key) {
        // A value without a name has no name to be listed by, like the end of the list; one whose name is too
        // long to be listed has none either.
        constexpr int maxNameless = 8;
        std::vector<std::string> names;
        if (storedValue(key, ""))
            names.emplace_back();
        for (int i = 0, nameless = 0; nameless < maxNameless; ++i) {
            std::string name = key.getSubValue(i);
            nameless = name.empty() ? nameless + 1 : 0;
            if (!name.empty())
                names.push_back(std::move(name));
        }
        return names;
    }

    void addValue(RegKeys const& key, std::string const& below, std::string const& name) {
        auto const value = storedValue(key, name);
        if (!value)
            return;
        ++numValues_;
        std::string const shown = name.empty() ? "@" : name;
        text_ += onOneLine(below.empty() ? shown : below + '\\' + shown);
        if (!value->isString())
            text_ += " (type " + std::to_string(value->type) + ", " + counted(value->size, "byte") + ")\n";
        else if (std::string const why = value->whyUnreadable(); !why.empty())
            text_ += " (" + why + ")\n";
        else
            text_ += " = " + onOneLine(key.queryKey(name)) + '\n';
    }

    RegistryPlace& place_;
    std::string text_;
    std::size_t numKeys_ = 0;
    std::size_t numValues_ = 0;
};

std::vector<ContainerKey> planOf(DocumentFile& file) {
    try {
        return keysOf(file.document().root);
    } catch (std::runtime_error const& error) {
        throw FileError(file.name(), error.what());
    }
}

} // namespace

Status saveToRegistry(RegistryOptions const& options) {
    DocumentFile file(options.file);
    if (!file.isWhole(false))
        return Status::Failed;
    auto const keys = planOf(file);
    RegistryPlace place(options.key, options.hive);
    LeftOut leftOut(file.name());
    AttributeSet const chosen = chooseForSaving(place, keys, leftOut);
    if (!leftOut.accept(options.isStrict))
        return Status::Failed;

    std::vector<std::string> names;
    for (ContainerKey const& key : keys)
        if (!key.key.empty())
            names.push_back(key.key);
    place.make(names);
    write(place, keys, chosen);
    place.commit();
    printMessage(file.name(), counted(chosen.size(), "value") + " saved in " + counted(keys.size(), "key") +
                                  ", " + std::to_string(leftOut.size()) + " left out");
    return Status::Good;
}

Status loadFromRegistry(RegistryOptions const& options) {
    DocumentFile file(options.file);
    if (!file.isWhole(false))
        return Status::Failed;
    auto const keys = planOf(file);
    RegistryPlace place(options.key, options.hive);
    LeftOut leftOut(file.name());
    Loaded const chosen = chooseForLoading(place, keys, leftOut);
    if (!leftOut.accept(options.isStrict))
        return Status::Failed;

    {
        Progress progress("loading", keys.size());
        for (ContainerKey const& key : keys) {
            if (auto const there = key.container ? place.open(key.key, false) : nullptr) {
                SomeReader reader(there, chosen.attributes);
                key.container->attributeVisitor(reader, false);
            }
            progress.step();
        }
    }
    Status const status = file.write(options.out, file.document().rendering);
    if (status == Status::Good)
        printMessage(file.name(), counted(chosen.attributes.size(), "value") + " loaded, " +
                                      std::to_string(leftOut.size()) + " left out, " +
                                      std::to_string(chosen.numMissing) + " not in the registry");
    return status;
}

Status listRegistry(RegistryOptions const& options) {
    RegistryPlace place(options.key, options.hive);
    KeyLister lister(place);
    lister.list("");
    writeAll("-", lister.text());
    printMessage(place.nameOf(""), lister.count());
    return Status::Good;
}

} // namespace kxmodel
