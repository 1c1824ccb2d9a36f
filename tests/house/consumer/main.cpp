// SPDX-License-Identifier: MIT

// An application of its own: a class with attribute and field tables, registered, written, read, and
// observed.

#include "containers/ApplicationClass.h"

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

class Scanner final : public Testing::ApplicationClass<Scanner, Object> {
public:
    static constexpr char classNameText[] = "Scanner";

    using ApplicationClass::ApplicationClass;
    static std::vector<AttrDefinition> const& attributes() {
        static std::vector<AttrDefinition> const table{{6, "Resolution", AttrTypeDouble, 0},
                                                       {7, "Channels", AttrTypeIntVector, 0}};
        return table;
    }
    static std::vector<FieldDefinition> const& fields() {
        static std::vector<FieldDefinition> const table{{0, "Optics", "ArrayContainer"}};
        return table;
    }
    Attr<double>& resolution() { return attrAt<double>(6); }
    Attr<std::vector<int>>& channels() { return attrAt<std::vector<int>>(7); }
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
    expect(scanner->resolution().getValue() == 0.25, "a declared number comes back");
    expect(scanner->channels().getValue() == std::vector<int>({1, 2, 3}), "a declared vector comes back");
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
    scanner->resolution().setValue(0.25);
    scanner->channels().setValue({1, 2, 3});
    auto const optics = std::dynamic_pointer_cast<ArrayContainer>(scanner->getField("Optics").lock());
    expect(optics != nullptr, "the declared field is made");
    if (optics)
        optics->contentType("lenses");
    expect(plant->addChild(scanner, 0), "it becomes a child");

    readsWhatItWrites(*plant, ModelFormat::Text);
    readsWhatItWrites(*plant, ModelFormat::XmlV2);

    threadTakesItsNotesAlong(*scanner->getAttr("Resolution").lock());

    auto const copy = std::dynamic_pointer_cast<Scanner>(scanner->duplicate(CreateType::Deep));
    expect(copy && copy->channels().getValue() == scanner->channels().getValue(), "a copy has the values");
    expect(copy && copy->getField("Optics").lock() != scanner->getField("Optics").lock(),
           "and fields of its own");
    return numFailures == 0 ? 0 : 1;
}
