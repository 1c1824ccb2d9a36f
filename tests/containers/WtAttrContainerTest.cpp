// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "observation/RecordingObserver.h"

#include "containers/ApplicationClasses.h"

#include <AttributeContainer/ArrayContainer.h>
#include <AttributeContainer/BlockObserver.h>

#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

std::shared_ptr<Attribute> number(int value = 0) { return std::make_shared<CustAttr<int>>(value); }

TEST(ContainerNames, AreCheckedRepairedAndCountedUp) {
    for (auto const& row : dataRows("containers/names.txt")) {
        SCOPED_TRACE(row.place);
        auto const container = AttrContainer::create();
        std::string name = row[0];
        if (row.section == "valid") {
            EXPECT_EQ(row[1] == "valid", AttrContainer::isNameValid(name));
            EXPECT_EQ(row[3], container->toCirroName(name));
            EXPECT_EQ(!name.empty(), AttrContainer::makeNameValid(name));
            EXPECT_EQ(row[2], name);
        } else if (row.section == "unique") {
            std::istringstream taken(row[1]);
            for (std::string field; taken >> field;)
                EXPECT_TRUE(container->addField(AttrContainer::create(), field, 0));
            EXPECT_EQ(row[2], container->generateUniqueName(name));
            EXPECT_EQ(row[2], container->generateUniqueName(name)) << "asking takes no name";
        } else if (row.section == "field") {
            EXPECT_TRUE(container->addField(AttrContainer::create(), "x", 0));
            auto const field = named("own");
            EXPECT_EQ(!row[2].empty(), container->addField(field, name, static_cast<int>(row.number(1))));
            EXPECT_EQ(row[2], container->getFieldName(1).value_or(""));
            EXPECT_EQ(row[2].empty() ? noToken : 1U, container->getFieldToken(*field));
            EXPECT_EQ("own", field->getName()) << "the field's own name stays";
        }
    }
}

TEST(NameGuard, RefusesInvalidNamesWithAReason) {
    using Row = std::tuple<char const*, char const*, bool>;
    for (auto const& [current, proposed, isStored] :
         {Row{"Pump", "Tank", true}, Row{"Pump", "a b", false}, Row{"Pump", "", false},
          Row{"bad name", "BAD NAME", true}}) {
        Log log;
        auto const container = AttrContainer::create();
        {
            BlockObserver const blocked;
            container->name(current);
        }
        auto const witness = RecordingObserver::make("witness", log);
        std::string reason;
        witness->toChange = [&](Observable& observable, Cause const&) {
            if (auto const info = observable.lookupNotifyInfo(typeid(InfoFailed)))
                for (char const* name : {"CheckedName", "CurrentName", "NewName"})
                    reason += *static_cast<InfoFailed const&>(*info).error->findInfo(name) + ";";
            return Action::ExecOk;
        };
        container->Attr_name().addPreObserver(*witness, 1, PRE_NOTIFY, true);
        container->name(proposed);
        EXPECT_EQ(isStored ? proposed : current, container->getName());
        auto const refused = std::string(proposed) + ";";
        EXPECT_EQ(isStored ? "" : refused + current + ";" + refused, reason);
    }
}

TEST(NameGuard, SetNameReportsWhoRefused) {
    auto const container = named("Pump");
    EXPECT_EQ("a b", *container->setName("a b", 0)->findInfo("CheckedName"));
    Log log;
    auto const refuser = RecordingObserver::make("refuser", log);
    refuser->toChange = [](Observable& observable, Cause const&) {
        observable.addNotifyInfo(
            std::make_shared<InfoFailed>(std::make_unique<Result::element_type>("test", 1, WriteProtected)));
        return Action::ExecFailed;
    };
    container->Attr_name().addPreObserver(*refuser, 1, PRE_NOTIFY, true);
    EXPECT_EQ(WriteProtected, container->setDisplayName("Tank")->getCode());
    EXPECT_EQ("Pump", container->getDisplayName());
}

TEST(ContainerAttributes, OfAllLevelsAreFoundByTokenAndName) {
    auto const pump = Pump::create();
    auto const object = Object::create();
    auto const array = ArrayContainer::create();
    using Row = std::tuple<std::shared_ptr<AttrContainer>, std::uint64_t, char const*, int>;
    EXPECT_FALSE(pump->addAttribute(number(), "extra").expired());
    EXPECT_FALSE(object->addAttribute(number(), "extra").expired());
    array->selectedElement("p1");
    EXPECT_EQ("p1", array->getAttr(2).lock()->getValueAsText());
    for (auto const& [container, token, name, category] :
         {Row{array, 2, "selectedElement", 18}, Row{pump, 0, "Name", 4}, Row{pump, 1, "Power", 0},
          Row{pump, 2, "Stages", 2}, Row{pump, 4, "extra", 64}, Row{object, 0, "Name", 4},
          Row{object, 3, "MajorVersion", 18}, Row{object, 5, "UUID", 18}, Row{object, 6, "extra", 64}}) {
        auto const attribute = container->getAttr(name).lock();
        ASSERT_TRUE(attribute) << name;
        EXPECT_EQ(token, container->getAttrToken(name));
        EXPECT_EQ(token, container->getAttrToken(*attribute));
        EXPECT_EQ(token, attribute->getToken());
        EXPECT_EQ(name, container->getAttrName(token));
        EXPECT_EQ(name, attribute->getName());
        EXPECT_EQ(attribute, container->getAttr(token).lock());
        EXPECT_EQ(category, container->getAttrCategory(*attribute));
        EXPECT_EQ(category == 64, container->getAttrDefinition(*attribute) == nullptr);
    }
    EXPECT_EQ(4U, pump->getNumHardCodedAttributes());
    EXPECT_EQ(3U, pump->nameless().getToken());
    EXPECT_EQ("", pump->nameless().getName());
    EXPECT_EQ(noToken, pump->getAttrToken(*object->getAttr("extra").lock()));
    EXPECT_EQ(std::nullopt, pump->getAttrName(5));
}

TEST(ContainerAttributes, BelongToOneContainerUntilTheyAreRemoved) {
    auto container = AttrContainer::create(), other = AttrContainer::create();
    EXPECT_TRUE(container->addField(AttrContainer::create(), "field", 0));
    auto const attribute = number(7);
    for (char const* refused : {"", "a b", "field"})
        EXPECT_TRUE(container->addAttribute(attribute, refused).expired()) << refused;
    EXPECT_EQ(std::nullopt, attribute->getLocation());
    EXPECT_EQ(attribute, container->addAttribute(attribute, "x").lock());
    EXPECT_TRUE(container->isNameUnique("x") && !container->isNameUnique("field"))
        << "only fields take names";
    for (auto const& one : {container, other})
        EXPECT_TRUE(one->addAttribute(attribute, "y").expired());
    EXPECT_FALSE(container->addAttribute(number(), "x").expired()) << "an older attribute keeps the name";
    EXPECT_EQ(1U, container->getAttrToken("x"));
    EXPECT_FALSE(container->rmAttribute("Name"));
    EXPECT_TRUE(container->rmAttribute("x"));
    EXPECT_EQ(noToken, attribute->getToken());
    EXPECT_EQ("", attribute->getName());
    EXPECT_EQ(1U, container->getAttrToken("x")) << "the other one has the name, and the token, now";
    EXPECT_EQ(attribute, other->addAttribute(attribute, "x").lock());
    EXPECT_TRUE(other->rmAllCustomAttributes());
    EXPECT_EQ(1U, other->getNumAttributes());
    EXPECT_EQ(std::nullopt, attribute->getLocation());
    EXPECT_FALSE(container->addAttribute(attribute, "z").expired());
    auto const declared = container->getAttr(0).lock();
    container.reset();
    for (auto const& survivor : {attribute, declared}) {
        EXPECT_EQ("", survivor->getName());
        EXPECT_EQ(noToken, survivor->getToken());
        EXPECT_EQ(std::nullopt, survivor->getLocation());
    }
}

TEST(ContainerAttributes, AreComparedTokenByToken) {
    struct Select : AttrContainer::CompareSelectTokens {
        bool isAllSelected() const override { return selected == noToken; }
        bool isSelected(std::uint64_t token) const override { return token == selected; }
        bool isExcluded(std::uint64_t token) const override { return token == excluded; }
        std::uint64_t selected = noToken, excluded = noToken;
    };
    auto const a = named<Object>("a"), b = named<Object>("a");
    EXPECT_TRUE(a->isEqualTo(*b, nullptr, nullptr));
    b->Event("changed");
    b->setUuid(b->getUuid());
    std::vector<std::uint64_t> tokens;
    EXPECT_FALSE(a->isEqualTo(*b, &tokens, nullptr));
    EXPECT_EQ((std::vector<std::uint64_t>{2, 5}), tokens);
    Select select;
    select.excluded = 2;
    tokens.clear();
    EXPECT_FALSE(a->isEqualTo(*b, &tokens, &select));
    EXPECT_EQ((std::vector<std::uint64_t>{5}), tokens);
    select.selected = 1;
    EXPECT_TRUE(a->isEqualTo(*b, nullptr, &select));
    a->addAttribute(number(), "more");
    EXPECT_TRUE(a->isEqualTo(*b, nullptr, &select)) << "numbers count only when nothing is selected";
    EXPECT_FALSE(b->isEqualTo(*a, nullptr, nullptr));
}

TEST(ContainerFields, AreRefusedWhereThereIsNone) {
    auto const container = AttrContainer::create();
    EXPECT_FALSE(container->addField(nullptr, "x", 0));
    EXPECT_FALSE(container->addField(container, "x", 0)) << "no container is its own field";
    EXPECT_FALSE(container->setField(0, AttrContainer::create()));
    EXPECT_FALSE(container->rmField("x"));
}

TEST(ContainerFields, AreReplacedAndRemovedWithTheirNamesAndTokens) {
    auto const container = AttrContainer::create();
    std::vector<std::shared_ptr<AttrContainer>> fields;
    for (char const* name : {"a", "b", "c", "d"}) {
        fields.push_back(named(name));
        EXPECT_TRUE(container->addField(fields.back(), "", 0));
    }
    auto const incoming = named("incoming");
    EXPECT_TRUE(container->replaceField(fields[1], incoming));
    EXPECT_FALSE(container->replaceField(fields[1], incoming));
    EXPECT_FALSE(container->replaceField(incoming, container));
    EXPECT_FALSE(container->setField(0, container));
    EXPECT_FALSE(container->setField(4, incoming));
    EXPECT_TRUE(container->setField(0, fields[1]));
    EXPECT_EQ((Names{"a", "b", "c", "d"}), fieldNames(*container));
    EXPECT_EQ(1U, container->getFieldToken(*incoming));
    EXPECT_TRUE(container->rmField(std::uint64_t{0}));
    EXPECT_EQ((Names{"d", "b", "c"}), fieldNames(*container));
    EXPECT_EQ(fields[3], container->getField("d").lock());
    EXPECT_TRUE(container->rmField(incoming));
    EXPECT_FALSE(container->rmField(incoming));
    EXPECT_TRUE(container->rmAllCustomFields());
    EXPECT_EQ((Names{"d", "c"}), fieldNames(*container)) << "the plain class counts all fields as its own";

    auto const pump = Pump::create();
    for (char const* name : {"x", "y"})
        EXPECT_TRUE(pump->addField(AttrContainer::create(), name, 0));
    EXPECT_EQ((Names{"Motor", "-", "x", "y"}), fieldNames(*pump));
    EXPECT_TRUE(pump->rmField("Motor"));
    EXPECT_TRUE(pump->rmAllCustomFields());
    EXPECT_TRUE(pump->setField(1, AttrContainer::create()));
    EXPECT_EQ((Names{"-", "Spare"}), fieldNames(*pump));
}

TEST(ContainerFields, AreToldOfTheirParent) {
    auto container = AttrContainer::create();
    Log log;
    std::vector<std::shared_ptr<Pump>> pumps;
    for (std::string const name : {"a", "b", "c"}) {
        pumps.push_back(named<Pump>(name));
        auto const note = [&log, &container, name](char const* what) {
            return [&log, &container, text = what + name](std::shared_ptr<AttrContainer> const& parent) {
                log.push_back(text + (parent == container ? "" : " of another"));
            };
        };
        pumps.back()->added = note("+");
        pumps.back()->removed = note("-");
    }
    container->addField(pumps[0], "", 0);
    container->setField(0, pumps[1]);
    container->replaceField(pumps[1], pumps[2]);
    container->addField(pumps[0], "back", 0);
    container->rmField(pumps[2]);
    EXPECT_EQ((Log{"+a", "-a", "+b", "-b", "+c", "+a", "-c"}), log);
    log.clear();
    static_cast<AttrContainer&>(*pumps[0]).duplicate(CreateType::Deep);
    EXPECT_TRUE(log.empty());
    container.reset(); // The parent that is told is none, then.
    EXPECT_EQ((Log{"-a"}), log);
}

TEST(ContainerFields, HooksMayChangeTheContainerThatWorks) {
    auto container = AttrContainer::create();
    std::vector<std::shared_ptr<Pump>> pumps;
    auto const removeA = [&](auto const&) { container->rmField("a"); }; // gives "d" the token 0
    auto const incoming = named("incoming");
    struct Row {
        std::size_t hooked;
        std::function<void(std::shared_ptr<AttrContainer> const&)> hook;
        std::function<bool()> work;
        Names left;
    };
    for (Row const& row : std::initializer_list<Row>{
             {3, removeA, [&] { return container->rmField("d"); }, {"c", "b"}},
             {1,
              [&](auto const&) { container->rmField(std::exchange(pumps[1], nullptr)); },
              [&] { return container->rmField("b"); },
              {"a", "d", "c"}},
             {3, removeA, [&] { return container->setField(3, incoming); }, {"d", "b", "c"}},
             {2,
              [&](auto const&) { container = AttrContainer::create(); },
              [&] { return container->rmField(std::uint64_t{2}); },
              {}}}) {
        container = AttrContainer::create();
        pumps.clear();
        for (char const* name : {"a", "b", "c", "d"}) {
            pumps.push_back(named<Pump>(name));
            container->addField(pumps.back(), "", 0);
        }
        pumps[row.hooked]->removed = row.hook;
        EXPECT_TRUE(row.work());
        EXPECT_EQ(row.left, fieldNames(*container));
    }
    auto const pump = named<Pump>("pump");
    pump->added = [&](auto const&) { container->rmField("x"); };
    EXPECT_TRUE(container->addField(pump, "x", 0));
    EXPECT_TRUE(container->getField("x").expired());
}

TEST(ContainerFields, ACycleThroughThemIsEnteredOnce) {
    auto const pump = named<Pump>("pump"), inner = named<Pump>("inner");
    pump->addField(inner, "down", 0);
    inner->addField(pump, "up", 0);
    inner->addField(named("last"), "last", 0);
    pump->initRead();
    EXPECT_EQ(2, pump->numInitReads + inner->numInitReads);
    auto const innerCopy = pump->duplicate(CreateType::Deep)->getField("down").lock();
    ASSERT_TRUE(innerCopy);
    EXPECT_EQ((Names{"Motor", "-", "-", "last"}), fieldNames(*innerCopy)) << "tokens stay";
    EXPECT_TRUE(innerCopy->isNameUnique("up"));
    inner->rmField("up");
}

TEST(InfoContainer, IsKeptPerThreadAndWeakly) {
    auto const container = AttrContainer::create();
    auto info = AttrContainer::create();
    container->addAttrContInfo(info);
    EXPECT_EQ(info, container->lookupAttrContInfo().lock());
    std::thread([&] { EXPECT_TRUE(container->lookupAttrContInfo().expired()); }).join();
    info.reset();
    EXPECT_TRUE(container->lookupAttrContInfo().expired());
}

} // namespace
