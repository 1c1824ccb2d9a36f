// SPDX-License-Identifier: MIT

// A tour of the library on a real document: the countries of the world. Each function below is one chapter;
// main() runs them in order. The argument is the path of the document.

#include <AttributeContainer/AttributeContainer.h>

#include <fstream>
#include <future>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>

using namespace Zorvan::AttributeContainer;
using Zorvan::ErrorHandling::ErrorBase;
using Zorvan::ErrorHandling::ErrorWithCode;

namespace {

// The tokens of the actions that every program has: they say what an observation link does.
constexpr std::uint64_t notify = 0;    // tells after a change
constexpr std::uint64_t preNotify = 1; // asks before a change
constexpr std::uint64_t propagate = 2; // copies the value on

void heading(std::string const& text) { std::cout << "\n== " << text << '\n'; }

/// The demonstration ends with an error when something does not hold.
void expect(bool holds, std::string const& what) {
    if (!holds)
        throw std::runtime_error("this should hold, but does not: " + what);
}

/// What an error says: its code, then the infos that it carries.
std::string textOf(ErrorWithCode<ErrorCode> const& error) {
    std::string text = errorCodeName(error.getCode());
    for (char const* name : {"Description", "CheckedName", "CurrentName", "NewName"})
        if (std::string const* value = error.findInfo(name))
            text += std::string(", ") + name + " \"" + *value + '"';
    return text;
}

/// Attributes are looked up by name and used by their type.
template <class T>
std::shared_ptr<Attr<T>> attributeOf(AttrContainer& container, std::string const& name) {
    auto typed = std::dynamic_pointer_cast<Attr<T>>(container.getAttr(name).lock());
    expect(typed != nullptr, container.getName() + " has an attribute " + name + " of that type");
    return typed;
}

// --- Reading and writing
// -----------------------------------------------------------------------------------------

/// A document: what its header says, and the tree.
struct Document {
    std::string title;
    std::shared_ptr<Object> root;
};

/// Reads a document in either rendering.
Document read(std::string const& bytes) {
    std::istringstream in(bytes);
    auto context = std::make_shared<ReadContextBase>();
    ReadFromScope scope(in, context);
    context->setFormat(scope.getImf().determineFormat());

    ModelInFormat& reader = scope.getImf();
    Document document{{}, Object::create()};
    VersionNum formatVersion, rootModelVersion;
    reader.readHeader(document.title);
    reader.readVersion(formatVersion);
    reader.readRootModelVersion(rootModelVersion); // only the text rendering has one
    reader.readVoxaStart();                        // only XML has one

    if (Result const failure = document.root->readFrom(in, context))
        throw std::runtime_error("cannot read the document: " + textOf(*failure));
    return document;
}

std::string write(Document const& document, ModelFormat::Format rendering) {
    std::ostringstream out;
    auto const context = std::make_shared<WriteContextBase>(rendering);
    WriteToScope scope(out, context);
    scope.getMof().writeHeader(document.title, version, true);
    if (Result const failure = document.root->writeTo(out, context))
        throw std::runtime_error("cannot write the document: " + textOf(*failure));
    scope.getMof().writeFooter();
    return out.str();
}

std::string bytesOf(char const* path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    if (!file || bytes.str().empty())
        throw std::runtime_error(std::string("cannot read ") + path);
    return bytes.str();
}

// --- The tree
// ------------------------------------------------------------------------------------------------------

/// A visitor is handed every attribute of a container and, when asked to, of its fields.
class ValuePrinter : public AttributeVisitor {
public:
    ValuePrinter() : AttributeVisitor(0, 8) {}

    using AttributeVisitor::visit;
    VisitResult visit(Attribute& attribute) override {
        std::string value = attribute.getValueAsText();
        if (value.size() > 50)
            value = value.substr(0, 47) + "...";
        if (!value.empty())
            std::cout << std::string(4 + 2 * std::size_t{getHierLevel()}, ' ') << attribute.getName() << " ("
                      << attribute.getClassName() << "): " << value << '\n';
        return Continue;
    }
};

/// Counts the objects of a tree.
class ObjectCounter : public GeneralVisitor<Object&> {
public:
    ObjectCounter() : GeneralVisitor(0, 100) {}
    VisitResult visit(Object&) override {
        ++count;
        return Continue;
    }
    int count = 0;
};

void tour(Document const& document, Object& country) {
    heading("The document");
    Object& world = *document.root;
    ObjectCounter counter;
    world.structureVisitor(counter, 1);
    std::cout << "\"" << document.title << "\", its root is \"" << world.getName() << "\", in all "
              << counter.count << " objects:";
    ChildList const& children = world.children();
    for (std::uint64_t i = 0; i < 5; ++i)
        std::cout << (i == 0 ? " " : ", ") << children.getChild(i)->getName();
    std::cout << ", ...\n" << *country.inqObjPath() << " holds:\n";
    ValuePrinter printer;
    country.attributeVisitor(printer, true);
}

// --- Observers
// -------------------------------------------------------------------------------------------------------

using Cause = std::optional<std::reference_wrapper<ObservingObject>>;

/// An observer that says when it is asked or told.
class Watcher : public Observer {
public:
    explicit Watcher(std::string name) : name_(std::move(name)) {}
    std::string getName() override { return name_; }

    Action::ExecReturn toChangeNotify(Observable&, Cause&) override {
        std::cout << "    " << name_ << " is asked\n";
        return Action::ExecOk;
    }
    Action::ExecReturn changedNotify(Observable& changed, Cause&) override {
        auto& attribute = dynamic_cast<Attribute&>(changed);
        std::cout << "    " << name_ << " is told: " << attribute.getName() << " is now "
                  << attribute.getValueAsText() << '\n';
        return Action::ExecOk;
    }

private:
    std::string name_;
};

/// Refuses numbers above a limit. The proposed value is found on the attribute; the refusal is left there.
class Limit : public Watcher {
public:
    Limit(std::string name, int limit) : Watcher(std::move(name)), limit_(limit) {}

    Action::ExecReturn toChangeNotify(Observable& changing, Cause& cause) override {
        Watcher::toChangeNotify(changing, cause);
        auto const proposed = std::dynamic_pointer_cast<NewValueInfo<int>>(
            changing.lookupNotifyInfo(typeid(NewValueInfo<int>)));
        if (!proposed || proposed->getNewValue() <= limit_)
            return Action::ExecOk;
        auto reason = std::make_unique<ErrorWithCode<ErrorCode>>("demo", __LINE__, WriteProtected);
        reason = addInfo(std::move(reason), "Description",
                         std::to_string(proposed->getNewValue()) + " is above " + std::to_string(limit_));
        changing.addNotifyInfo(std::make_shared<InfoFailed>(std::move(reason)));
        return Action::ExecFailed;
    }

private:
    int limit_;
};

/// Those that are asked later find the refusal of those that were asked before them.
class RefusalReader : public Watcher {
public:
    using Watcher::Watcher;

    Action::ExecReturn toChangeNotify(Observable& changing, Cause& cause) override {
        Watcher::toChangeNotify(changing, cause);
        if (auto const info =
                std::dynamic_pointer_cast<InfoFailed>(changing.lookupNotifyInfo(typeid(InfoFailed)))) {
            reason = textOf(*info->error);
            std::cout << "    " << getName() << " finds a refusal: " << reason << '\n';
        }
        return Action::ExecOk;
    }
    std::string reason;
};

void observe(Object& country) {
    heading("A change is asked for, made and told");
    auto const number = attributeOf<int>(country, "isoNumeric");
    auto const limit = std::make_shared<Limit>("limit", 999);
    auto const reader = std::make_shared<RefusalReader>("refusal reader");
    auto const first = std::make_shared<Watcher>("first watcher");
    auto const second = std::make_shared<Watcher>("second watcher");

    // Priority, action, and whether the link is temporary: such links are neither copied nor saved.
    number->addPreObserver(*limit, 50, preNotify, true);
    number->addPreObserver(*reader, 10, preNotify, true);
    number->addObserver(*second, 10, notify, true);
    number->addObserver(*first, 90, notify, true);

    std::cout << "  isoNumeric is " << number->getValue() << " and is set to 250:\n";
    number->setValue(250);
    expect(number->getValue() == 250, "the new number is stored");

    std::cout << "  and to 1000, by a caller who wants to know what the observers answer:\n";
    auto answers = std::make_unique<std::promise<Attribute::NotificationResults>>();
    auto answered = answers->get_future();
    number->setValue(1000, nullptr, std::move(answers), nullptr);
    for (Observable::NotificationResult const& answer : answered.get())
        std::cout << "    answer of " << answer.observer.lock()->getName() << ": "
                  << (answer.result == Action::ExecOk ? "fine" : "refused") << '\n';
    std::cout << "  isoNumeric is " << number->getValue() << " still\n";
    expect(number->getValue() == 250 && !reader->reason.empty(), "the change is refused with a reason");
}

void rename(Object& country) {
    heading("A name that is not valid");
    std::string const before = country.getName();
    Result const refusal = country.setName("Republic of Fiji", 0);
    expect(refusal && refusal->getCode() == InvalidName && country.getName() == before,
           "the name is refused");
    std::cout << "  setName says: " << textOf(*refusal) << "\n  the name is \"" << country.getName()
              << "\" still\n";
}

void stage(Object& country) {
    heading("A staged value");
    auto const label = attributeOf<std::string>(country, "label");
    auto const watcher = std::make_shared<Watcher>("watcher");
    label->addObserver(*watcher, 10, notify, true);

    label->addNotifyInfo(
        std::make_shared<CachedAttributeInfo>(std::make_shared<CustAttr<std::string>>("Republic of Fiji")));
    std::cout << "  stored: " << label->getValue();
    Attribute::setIsCachedAttributePending(true);
    std::cout << "; while the staged value is pending, readers on this thread see: " << label->getValue()
              << '\n';
    label->touch(nullptr, nullptr); // stores the staged value, and tells
    expect(!Attribute::isCachedAttributePending() && label->getValue() == "Republic of Fiji",
           "the value is stored");
}

void follow(Object& world, Object& country) {
    heading("An attribute follows another");
    auto const label = attributeOf<std::string>(country, "label");
    world.addAttribute(std::make_shared<CustAttr<std::string>>(), "selected");
    auto const selected = attributeOf<std::string>(world, "selected");
    label->addObserver(*selected->getObserver().lock(), 10, propagate, true);

    label->setValue("Viti");
    std::cout << "  " << country.getName() << ".label is set to \"" << label->getValue() << "\", "
              << world.getName() << ".selected becomes \"" << selected->getValue() << "\"\n";
    expect(selected->getValue() == "Viti", "the value is propagated");
}

// --- Copies
// ------------------------------------------------------------------------------------------------------------

/// Prints the links of an attribute and returns the observer of each.
void printLinks(Attribute& attribute, Object& owner) {
    for (std::uint64_t i = 0; i < attribute.getNumPrePaths() + attribute.getNumPostPaths(); ++i) {
        ObserverPath& link = attribute.getPath(i);
        auto const observer = link.lookupObserver();
        if (link.isTemporary() || !observer)
            continue;
        std::cout << "    priority " << link.getPriority() << ", " << *link.getActionName() << " "
                  << observer->get().inqObjPath().value_or(observer->get().getName())
                  << (&observer->get() == &owner ? " (inside)\n" : " (outside)\n");
    }
}

bool isObservedBy(Attribute& attribute, Observer& observer) {
    for (std::uint64_t i = 0; i < attribute.getNumPrePaths() + attribute.getNumPostPaths(); ++i) {
        auto const found = attribute.getPath(i).lookupObserver();
        if (found && &found->get() == &observer && attribute.getPath(i).isActive())
            return true;
    }
    return false;
}

void duplicate(Object& world, Object& country, Object& neighbour) {
    heading("A copy of an observed subtree");
    // The country watches the bounds of its own field, and so does somebody else.
    auto const low = attributeOf<Zorvan::SVec2d<double>>(*country.getField("bounds").lock(), "low");
    low->addObserver(country, 20, notify, false);
    low->addObserver(neighbour, 10, notify, false);
    std::cout << "  " << country.getName() << ".bounds.low is observed by\n";
    printLinks(*low, country);

    auto const copy = std::dynamic_pointer_cast<Object>(country.duplicate(CreateType::Deep));
    constexpr int renameWhenTaken = 16;
    expect(world.addChild(copy, renameWhenTaken), "the copy finds a place in the tree");
    auto const copiedLow = attributeOf<Zorvan::SVec2d<double>>(*copy->getField("bounds").lock(), "low");
    std::cout << "  the copy became " << *copy->inqObjPath() << ", its bounds.low is observed by\n";
    printLinks(*copiedLow, *copy);

    expect(isObservedBy(*copiedLow, *copy), "what observed from inside is copied with the subtree");
    expect(isObservedBy(*copiedLow, neighbour), "what observes from outside observes both");
    expect(!isObservedBy(*copiedLow, country), "the original does not observe the copy");
}

// --- Back to documents
// ---------------------------------------------------------------------------------------------------

void report(std::string const& what, bool isEqual) {
    std::cout << "  " << what << (isEqual ? ": equal to the byte\n" : ": DIFFERENT\n");
    expect(isEqual, what + " is equal");
}

void saveAndReload(Document const& document) {
    heading("Both renderings, written and read back");
    std::string const text = write(document, ModelFormat::Text);
    std::string const xml = write(document, ModelFormat::XmlV2);
    std::cout << "  " << text.size() << " bytes of text, " << xml.size() << " bytes of XML\n";

    Document const fromText = read(text);
    Document const fromXml = read(xml);
    report("text, read and written as text", write(fromText, ModelFormat::Text) == text);
    report("text, read and written as XML", write(fromText, ModelFormat::XmlV2) == xml);
    report("XML, read and written as XML", write(fromXml, ModelFormat::XmlV2) == xml);
    report("XML, read and written as text", write(fromXml, ModelFormat::Text) == text);
}

void run(char const* path) {
    std::string const bytes = bytesOf(path);
    Document const document = read(bytes);
    Object& world = *document.root;
    // Paths name the objects of a tree; the owner of a look-up is the tree.
    std::shared_ptr<Object> const fiji = world.inqObject("/Fiji");
    std::shared_ptr<Object> const tanzania = world.inqObject("/Tanzania");
    expect(fiji && tanzania, "the document has Fiji and Tanzania");

    tour(document, *fiji);
    heading("Written back unchanged");
    report("the tree as it was read, against the file", write(document, ModelFormat::Text) == bytes);
    observe(*fiji);
    rename(*fiji);
    stage(*fiji);
    follow(world, *fiji);
    duplicate(world, *fiji, *tanzania);
    saveAndReload(document);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: demo DOCUMENT\n";
        return 2;
    }
    try {
        run(argv[1]);
        std::cout << "\nEverything held.\n" << std::flush;
        return std::cout ? 0 : 1;
    } catch (std::exception const& error) {
        std::cout << std::flush;
        std::cerr << "demo: " << error.what() << '\n';
        return 1;
    }
}
