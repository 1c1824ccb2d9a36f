// SPDX-License-Identifier: MIT

// An application of its own: a class with attribute and field tables, registered, written, read, and
// observed.

#include <AttributeContainer/AttributeContainer.h>

#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

using namespace Zorvan::AttributeContainer;

namespace {

class Scanner : public Object {
public:
    using OptionalSource = std::optional<std::reference_wrapper<Scanner const>>;

    Scanner(ConstructorProtector const& protector, CreateType type, OptionalSource source)
        : Object(protector, type, source) {}
    static std::shared_ptr<Scanner> create(CreateType type = CreateType::Deep, OptionalSource source = {}) {
        auto scanner = std::make_shared<Scanner>(ConstructorProtector(), type, source);
        scanner->init(type, source);
        return scanner;
    }
    std::shared_ptr<AttrContainer> duplicate(CreateType type) override {
        return type == CreateType::Blank ? create(type) : create(type, *this);
    }
    static std::string const& getStaticClassName() {
        static std::string const name = "Scanner";
        return name;
    }
    std::string const& getClassName() const override { return getStaticClassName(); }

    double const& Resolution() const { return attrAt<double>(resolutionToken).getValue(); }
    void Resolution(double const& value) { attrAt<double>(resolutionToken).setValue(value); }
    std::vector<int> const& Channels() const { return attrAt<std::vector<int>>(channelsToken).getValue(); }
    void Channels(std::vector<int> const& value) { attrAt<std::vector<int>>(channelsToken).setValue(value); }

    using Object::getAttrDefinition;
    using Object::getAttrName;
    using Object::getAttrToken;
    std::uint64_t getAttrToken(std::string const& name) const override {
        auto const token = tables().attrKeys.getToken(name);
        return token != Zorvan::DataStructures::KeyTable::noToken ? token : Object::getAttrToken(name);
    }
    std::optional<std::string> getAttrName(std::uint64_t token) override {
        auto const name = tables().attrKeys.getName(token);
        return name ? name : Object::getAttrName(token);
    }
    AttrDefinition const* getAttrDefinition(std::uint64_t token) const override {
        auto const found = tables().definitions.find(token);
        return found != tables().definitions.end() ? found->second : Object::getAttrDefinition(token);
    }
    std::uint64_t lastAttrToken() const override { return channelsToken; }

    using Object::getFieldName;
    using Object::getFieldToken;
    std::uint64_t getFieldToken(std::string const& name) const override {
        auto const token = tables().fieldKeys.getToken(name);
        return token != Zorvan::DataStructures::KeyTable::noToken ? token : Object::getFieldToken(name);
    }
    std::optional<std::string> getFieldName(std::uint64_t token) override {
        auto const name = tables().fieldKeys.getName(token);
        return name ? name : Object::getFieldName(token);
    }
    std::uint64_t lastFieldToken() const override { return opticsToken; }

protected:
    void init(CreateType type, OptionalSource source) {
        auto const self = std::static_pointer_cast<AttrContainer>(shared_from_this());
        BlockUpdateObservers const scope(source ? self : nullptr);
        Object::init(type, source);
        createAttributes(attributes(), type, source);
        createFields(fields(), type, source);
    }

private:
    enum Token : std::uint64_t { resolutionToken = 6, channelsToken = 7, opticsToken = 0 };

    static std::vector<AttrDefinition> const& attributes() {
        static std::vector<AttrDefinition> const table{{resolutionToken, "Resolution", AttrTypeDouble, 0},
                                                       {channelsToken, "Channels", AttrTypeIntVector, 0}};
        return table;
    }
    static std::vector<FieldDefinition> const& fields() {
        static std::vector<FieldDefinition> const table{{opticsToken, "Optics", "ArrayContainer"}};
        return table;
    }

    struct Tables {
        Zorvan::DataStructures::KeyTable attrKeys = createKeyTableFromAttrDefinitions(attributes());
        std::map<std::uint64_t const, AttrDefinition const*> definitions =
            createAttrDefMapFromAttrDefinitions(attributes());
        Zorvan::DataStructures::KeyTable fieldKeys = createKeyTableFromFieldDefinitions(fields());
    };
    static Tables const& tables() {
        static Tables const tables;
        return tables;
    }
};

auto const registration = FieldFactory::registerField<Scanner>(Scanner::getStaticClassName());

int numFailures = 0;

void expect(bool holds, char const* what) {
    if (!holds) {
        std::cerr << "consumer: " << what << '\n';
        ++numFailures;
    }
}

std::string written(AttrContainer& root, int rendering) {
    std::ostringstream out;
    auto const error = root.writeTo(out, std::make_shared<WriteContextBase>(rendering));
    expect(!error, "the tree is written");
    return out.str();
}

void readsWhatItWrites(Object& plant, int rendering) {
    std::string const text = written(plant, rendering);
    auto context = std::make_shared<ReadContextBase>();
    context->setFormat(rendering);
    std::istringstream in(text);
    auto const loaded = Object::create();
    expect(!loaded->readFrom(in, context), "the tree is read without a report");
    auto const scanner = std::dynamic_pointer_cast<Scanner>(loaded->inqObject("/left"));
    expect(scanner != nullptr, "the registered class is made");
    if (!scanner)
        return;
    expect(scanner->Resolution() == 0.25, "a declared number comes back");
    expect(scanner->Channels() == std::vector<int>({1, 2, 3}), "a declared vector comes back");
    auto const optics = std::dynamic_pointer_cast<ArrayContainer>(scanner->getField("Optics").lock());
    expect(optics && optics->contentType() == "lenses", "a declared field comes back in its slot");
    expect(scanner->getNumFields() == 1, "no field comes twice");
    expect(written(*loaded, rendering) == text, "it is written again as it was");
}

/// What a thread attached goes with it, from the library's memory too.
void threadTakesItsNotesAlong(Attribute& attribute) {
    std::weak_ptr<ObserverInfo> note;
    std::thread([&] {
        auto const own = std::make_shared<InfoFailed>(Result());
        note = own;
        attribute.addNotifyInfo(own);
        expect(attribute.lookupNotifyInfo(typeid(InfoFailed)) == own, "a note is found by its type");
    }).join();
    expect(note.expired(), "a note does not outlive its thread");
}

} // namespace

int main() {
    expect(registration != nullptr, "the class is registered");
    auto const plant = Object::create();
    auto const scanner = Scanner::create();
    expect(scanner->getName() == "Scanner", "an instance starts with its class name");
    expect(!scanner->setName("left", 0), "it is renamed");
    scanner->Resolution(0.25);
    scanner->Channels({1, 2, 3});
    auto const optics = std::dynamic_pointer_cast<ArrayContainer>(scanner->getField("Optics").lock());
    expect(optics != nullptr, "the declared field is made");
    if (optics)
        optics->contentType("lenses");
    expect(plant->addChild(scanner, 0), "it becomes a child");

    readsWhatItWrites(*plant, ModelFormat::Text);
    readsWhatItWrites(*plant, ModelFormat::XmlV2);

    threadTakesItsNotesAlong(*scanner->getAttr("Resolution").lock());

    auto const copy = std::dynamic_pointer_cast<Scanner>(scanner->duplicate(CreateType::Deep));
    expect(copy && copy->Channels() == scanner->Channels(), "a copy has the values");
    expect(copy && copy->getField("Optics").lock() != scanner->getField("Optics").lock(),
           "and fields of its own");
    return numFailures == 0 ? 0 : 1;
}
