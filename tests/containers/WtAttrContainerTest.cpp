// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "observation/RecordingObserver.h"

#include "containers/ApplicationClasses.h"

#include <AttributeContainer/ArrayContainer.h>
#include <AttributeContainer/BlockObserver.h>

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

/// The containers and attributes of a script, by its names for them.
struct Members {
    std::map<std::string, std::shared_ptr<AttrContainer>> containers;
    std::map<std::string, std::shared_ptr<Attribute>> attributes;
    Names told; ///< what pumps hear

    static std::string text(bool answer) { return answer ? "yes" : "no"; }
    static std::string text(std::uint64_t token) { return token == noToken ? "none" : std::to_string(token); }

    std::shared_ptr<AttrContainer> make(std::string const& className, std::string const& name) {
        if (className == "Object")
            return named<Object>(name);
        if (className == "ArrayContainer")
            return named<ArrayContainer>(name);
        if (className != "Pump")
            return named(name);
        auto const pump = named<Pump>(name);
        pump->added = [=, this](auto const& parent) { told.push_back("+" + name + nameOf(parent.get())); };
        pump->removed = [=, this](auto const& parent) { told.push_back("-" + name + nameOf(parent.get())); };
        return pump;
    }
    /// In parentheses.
    std::string nameOf(AttrContainer const* sought) const {
        for (auto const& [name, container] : containers)
            if (sought && container.get() == sought)
                return "(" + name + ")";
        return "()";
    }
    /// Where an attribute is found by name: its token and category.
    std::string find(AttrContainer& container, std::string const& name) const {
        auto const token = container.getAttrToken(name);
        auto const attribute = container.getAttr(name).lock();
        if (!attribute)
            return text(token);
        EXPECT_EQ(token, container.getAttrToken(*attribute));
        EXPECT_EQ(token, attribute->getToken());
        EXPECT_EQ(name, container.getAttrName(token));
        EXPECT_EQ(name, attribute->getName());
        EXPECT_EQ(attribute, container.getAttr(token).lock());
        auto const category = container.getAttrCategory(*attribute);
        EXPECT_EQ(category == 64, container.getAttrDefinition(*attribute) == nullptr);
        return text(token) + ", " + std::to_string(category);
    }
    std::string placeOf(Attribute& attribute) const {
        auto const location = attribute.getLocation();
        return attribute.getName() + nameOf(location ? &location->get() : nullptr) + ", " +
               text(attribute.getToken());
    }

    std::string answer(DataRow const& row) {
        std::string const name = row[1], first = row[3], second = row[4];
        auto& self = containers[name];
        auto const number = [](std::string const& digits) { return std::uint64_t{std::stoull(digits)}; };
        auto const object = [&](std::string const& one) {
            return std::dynamic_pointer_cast<Object>(containers[one]);
        };
        auto const attribute = [&]() -> std::shared_ptr<Attribute>& {
            auto& one = attributes[first];
            return one ? one : one = std::make_shared<CustAttr<int>>();
        };
        std::map<std::string, std::function<std::string()>> const operations{
            {"new", [&] { return self = make(first, name), text(true); }},
            {"goes", [&] { return self = nullptr, text(true); }},
            {"copy", [&] { return text(self->duplicate(CreateType::Deep) != nullptr); }},
            {"told", [&] { return joined(std::exchange(told, {})); }},
            {"addField", [&] { return text(self->addField(containers[first], second, 0)); }},
            {"setField", [&] { return text(self->setField(number(first), containers[second])); }},
            {"replaceField", [&] { return text(self->replaceField(containers[first], containers[second])); }},
            {"rmField", [&] { return text(self->rmField(first)); }},
            {"rmField at", [&] { return text(self->rmField(number(first))); }},
            {"rmField that", [&] { return text(self->rmField(containers[first])); }},
            {"rmAllCustomFields", [&] { return text(self->rmAllCustomFields()); }},
            {"fields", [&] { return joined(fieldNames(*self)); }},
            {"field", [&] { return self->getField(first).lock()->getName(); }},
            {"token of field", [&] { return text(self->getFieldToken(*containers[first])); }},
            {"isNameUnique", [&] { return text(self->isNameUnique(first)); }},
            {"addChild",
             [&] { return text(object(name)->addChild(object(first), static_cast<int>(row.number(4)))); }},
            {"rmChild at", [&] { return text(object(name)->rmChild(number(first), 0)); }},
            {"path", [&] { return object(name)->inqObjPath().value_or("none"); }},
            {"addAttribute", [&] { return text(!self->addAttribute(attribute(), second).expired()); }},
            {"rmAttribute", [&] { return text(self->rmAttribute(first)); }},
            {"rmAllCustomAttributes", [&] { return text(self->rmAllCustomAttributes()); }},
            {"attribute", [&] { return find(*self, first); }},
            {"attributes", [&] { return text(self->getNumAttributes()); }},
            {"declared attributes", [&] { return text(self->getNumHardCodedAttributes()); }},
            {"token of attribute", [&] { return text(self->getAttrToken(*attribute())); }},
            {"hold", [&] { return text((attributes[second] = self->getAttr(first).lock()) != nullptr); }},
            {"is at", [&] { return placeOf(*attributes.at(name)); }},
        };
        return operations.at(row[2])();
    }
};

TEST(ContainerMembers, AnswerAsTheirFileSays) {
    Members members;
    std::string section;
    for (auto const& row : dataRows("containers/members.txt")) {
        if (std::exchange(section, row.section) != row.section)
            members.containers.clear();
        EXPECT_EQ(row[0], members.answer(row)) << row.place << " (" << section << ")";
    }
    auto const pump = Pump::create();
    EXPECT_EQ(3U, pump->nameless().getToken());
    EXPECT_EQ("", pump->nameless().getName());
    EXPECT_EQ(std::nullopt, pump->getAttrName(5));
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

} // namespace
