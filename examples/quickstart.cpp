// SPDX-License-Identifier: MIT

// A class with an attribute of its own, an observer that refuses a value, and a document in memory.

#include <AttributeContainer/AttributeContainer.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

using namespace Zorvan::AttributeContainer;

namespace {

class Tank : public Object {
public:
    using OptionalSource = std::optional<std::reference_wrapper<Tank const>>;

    Tank(ConstructorProtector const& protector, CreateType type, OptionalSource source)
        : Object(protector, type, source) {}
    static std::shared_ptr<Tank> create(CreateType type = CreateType::Deep, OptionalSource source = {}) {
        auto tank = std::make_shared<Tank>(ConstructorProtector(), type, source);
        tank->init(type, source);
        return tank;
    }
    std::shared_ptr<AttrContainer> duplicate(CreateType type) override {
        return type == CreateType::Blank ? create(type) : create(type, *this);
    }
    static std::string const& getStaticClassName() {
        static std::string const name = "Tank";
        return name;
    }
    std::string const& getClassName() const override { return getStaticClassName(); }

    // The attribute "Level": its object, its value, a change of its value.
    Attr<double>& Attr_Level() { return attrAt<double>(levelToken); }
    double const& Level() const { return attrAt<double>(levelToken).getValue(); }
    void Level(double const& value) { Attr_Level().setValue(value); }

    // Look-ups ask this class's tables first, then those of the base class.
    using Object::getAttrDefinition;
    using Object::getAttrName;
    using Object::getAttrToken;
    std::uint64_t getAttrToken(std::string const& name) const override {
        return name == definitions()[0].name ? levelToken : Object::getAttrToken(name);
    }
    std::optional<std::string> getAttrName(std::uint64_t token) override {
        return token == levelToken ? definitions()[0].name : Object::getAttrName(token);
    }
    AttrDefinition const* getAttrDefinition(std::uint64_t token) const override {
        return token == levelToken ? &definitions()[0] : Object::getAttrDefinition(token);
    }
    std::uint64_t lastAttrToken() const override { return levelToken; }

protected:
    void init(CreateType type, OptionalSource source) {
        // Links among the attributes of a source are redirected to the copy when this scope ends.
        auto const self = std::static_pointer_cast<AttrContainer>(shared_from_this());
        BlockUpdateObservers const scope(source ? self : nullptr);
        Object::init(type, source);
        createAttributes(definitions(), type, source);
    }

private:
    static constexpr std::uint64_t levelToken = 6; // the one behind those of Object
    static std::vector<AttrDefinition> const& definitions() {
        static std::vector<AttrDefinition> const table{{levelToken, "Level", AttrTypeDouble, 0}};
        return table;
    }
};

// Documents name classes; the factory makes them as long as the registration lives.
auto const registration = FieldFactory::registerField<Tank>(Tank::getStaticClassName());

using Cause = std::optional<std::reference_wrapper<ObservingObject>>;

class Limit : public Observer {
public:
    std::string getName() override { return "limit"; }

    // Asked before a change: the proposed value is attached to the attribute, and a refusal is attached in
    // return.
    Action::ExecReturn toChangeNotify(Observable& level, Cause&) override {
        auto proposed = std::dynamic_pointer_cast<NewValueInfo<double>>(
            level.lookupNotifyInfo(typeid(NewValueInfo<double>)));
        if (!proposed || proposed->getNewValue() <= 10)
            return Action::ExecOk;
        level.addNotifyInfo(
            std::make_shared<InfoFailed>(std::make_unique<Zorvan::ErrorHandling::ErrorWithCode<ErrorCode>>(
                "limit", __LINE__, WriteProtected)));
        return Action::ExecFailed;
    }

    // Told after a change.
    Action::ExecReturn changedNotify(Observable& level, Cause&) override {
        std::cout << "told: " << dynamic_cast<Attribute&>(level).getValueAsText() << '\n';
        return Action::ExecOk;
    }
};

constexpr std::uint64_t notify = 0;
constexpr std::uint64_t preNotify = 1;

int use() {
    auto tank = Tank::create();
    auto limit = std::make_shared<Limit>();
    tank->Attr_Level().addPreObserver(*limit, 10, preNotify, true);
    tank->Attr_Level().addObserver(*limit, 10, notify, true);
    tank->Level(4.5); // prints "told: 4.5"
    tank->Level(99);  // refused: nothing is stored, nobody is told
    if (auto refusal = tank->setName("my tank", 0))
        std::cout << errorCodeName(refusal->getCode()) << '\n'; // prints "InvalidName"

    std::stringstream document;
    if (tank->writeTo(document, std::make_shared<WriteContextBase>()))
        return 1;
    auto copy = Tank::create();
    if (copy->readFrom(document, std::make_shared<ReadContextBase>()))
        return 1;
    std::cout << copy->getName() << ": " << copy->Level() << '\n'; // prints "Tank: 4.5"
    return copy->Level() == 4.5 ? 0 : 1;
}

// A whole file: a header, the tree, in text or XML.
Result save(std::ostream& out, AttrContainer& root, ModelFormat::Format rendering) {
    auto context = std::make_shared<WriteContextBase>(rendering);
    WriteToScope scope(out, context);
    scope.getMof().writeHeader("Tanks", version, true);
    if (auto failure = root.writeTo(out, context))
        return failure;
    scope.getMof().writeFooter();
    return {};
}

Result load(std::istream& in, AttrContainer& root) {
    auto context = std::make_shared<ReadContextBase>();
    ReadFromScope scope(in, context);
    context->setFormat(scope.getImf().determineFormat());
    ModelInFormat& reader = scope.getImf();
    std::string title;
    VersionNum formatVersion, rootModelVersion;
    reader.readHeader(title);
    reader.readVersion(formatVersion);
    reader.readRootModelVersion(rootModelVersion);
    reader.readVoxaStart();
    return root.readFrom(in, context);
}

/// A tank in a tree comes back as a tank from both renderings.
bool isKeptIn(ModelFormat::Format rendering) {
    auto plant = Object::create();
    auto tank = Tank::create();
    tank->Level(2.5);
    plant->addChild(tank, 0);

    std::stringstream file;
    auto loaded = Object::create();
    if (save(file, *plant, rendering) || load(file, *loaded))
        return false;
    auto found = std::dynamic_pointer_cast<Tank>(loaded->inqObject("/tank"));
    return found && found->Level() == 2.5;
}

} // namespace

int main() {
    if (use() != 0 || !isKeptIn(ModelFormat::Text) || !isKeptIn(ModelFormat::XmlV2)) {
        std::cerr << "quickstart: something does not hold\n";
        return 1;
    }
    return 0;
}
