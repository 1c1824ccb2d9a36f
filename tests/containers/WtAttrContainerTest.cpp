// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "attributes/AttributeFixture.h"
#include "containers/ApplicationClasses.h"
#include "containers/DocumentFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

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
    Names told; ///< what pumps hear
    std::map<std::string, std::shared_ptr<AttrContainer>> containers;
    std::map<std::string, std::shared_ptr<Attribute>> attributes;

    ~Members() { clear(); }
    /// What pumps hear then, they hear of containers that are not there any more.
    void clear() { auto const old = std::exchange(containers, {}); }

    static std::string text(bool answer) { return answer ? "yes" : "no"; }
    static std::string text(std::uint64_t token) { return token == noToken ? "none" : std::to_string(token); }

    std::shared_ptr<AttrContainer> make(std::string const& className, std::string const& name) {
        auto const made = className == "FallbackObject" ? FallbackObject::create()
                                                        : FieldFactory::the()->createField(className);
        EXPECT_FALSE(made->setName(name, 0));
        if (auto const pump = std::dynamic_pointer_cast<Pump>(made)) {
            pump->added = [=, this](auto const& to) { told.push_back("+" + name + nameOf(to.get())); };
            pump->removed = [=, this](auto const& from) { told.push_back("-" + name + nameOf(from.get())); };
        }
        return made;
    }
    std::shared_ptr<AttrContainer> copy(AttrContainer& source, std::string const& what) {
        static std::map<std::string, CreateType> const types{{"Deep", CreateType::Deep},
                                                             {"ShareFields", CreateType::ShareFields},
                                                             {"ShareFieldsAlt", CreateType::ShareFieldsAlt},
                                                             {"Blank", CreateType::Blank}};
        return what.starts_with("all ") ? source.duplicateAll(types.at(what.substr(4)))
               : what == "declared"     ? Pump::create(CreateType::Blank, static_cast<Pump&>(source))
                                        : source.duplicate(types.at(what));
    }
    /// A hook that does once what the rest of the row says, and answers that.
    auto once(DataRow rest) {
        rest.columns.erase(rest.columns.begin(), rest.columns.begin() + 2);
        return [=, this, isFirst = true](auto const&) mutable {
            return !std::exchange(isFirst, false) || answer(rest) == text(true);
        };
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
    /// Whether they are equal, and the tokens of the attributes that are not; "but" and "only" select tokens.
    static std::string difference(AttrContainer& a, AttrContainer& b, std::string const& selection) {
        struct Select : AttrContainer::CompareSelectTokens {
            bool isAllSelected() const override { return selected == noToken; }
            bool isSelected(std::uint64_t token) const override { return token == selected; }
            bool isExcluded(std::uint64_t token) const override { return token == excluded; }
            std::uint64_t selected = noToken, excluded = noToken;
        } select;
        if (!selection.empty())
            (selection.starts_with("but ") ? select.excluded : select.selected) = selection.back() - '0';
        auto const* const selected = selection.empty() ? nullptr : &select;
        std::vector<std::uint64_t> tokens;
        std::string answer = text(a.isEqualTo(b, nullptr, selected));
        bool const isEqual = a.isEqualTo(b, &tokens, selected);
        EXPECT_EQ(isEqual, tokens.empty());
        for (auto const token : tokens)
            answer += " " + text(token);
        return answer;
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
        auto const pump = [&]() -> Pump& { return static_cast<Pump&>(*self); };
        auto const station = [&]() -> Station& { return static_cast<Station&>(*self); };
        auto const refuse = [this](Object&, int flags) {
            return told.push_back(std::to_string(flags)), false;
        };
        auto const assign = [](Attribute& to, std::string const& value) {
            to.assignFrom(value, nullptr, nullptr, nullptr);
            return to.getValueAsText();
        };
        std::map<std::string, std::function<std::string()>> const operations{
            {"new", [&] { return self = make(first, name), text(true); }},
            {"goes", [&] { return self = nullptr, text(true); }},
            {"copy", [&] { return self = copy(*containers[first], second), text(true); }},
            {"outline", [&] { return outline(*self); }},
            {"when added", [&] { return pump().added = once(row), text(true); }},
            {"when removed", [&] { return pump().removed = once(row), text(true); }},
            {"when asked for a parent", [&] { return station().acceptsParent = once(row), text(true); }},
            {"refuses children", [&] { return station().acceptsChild = refuse, text(true); }},
            {"accepts children", [&] { return station().acceptsChild = nullptr, text(true); }},
            {"told", [&] { return joined(std::exchange(told, {})); }},
            {"addField", [&] { return text(self->addField(containers[first], second, 0)); }},
            {"setField", [&] { return text(self->setField(number(first), containers[second])); }},
            {"replaceField", [&] { return text(self->replaceField(containers[first], containers[second])); }},
            {"rmField", [&] { return text(self->rmField(first)); }},
            {"rmField at", [&] { return text(self->rmField(number(first))); }},
            {"rmField that", [&] { return text(self->rmField(containers[first])); }},
            {"rmAllCustomFields", [&] { return text(self->rmAllCustomFields()); }},
            {"initRead", [&] { return self->initRead(), text(true); }},
            {"calls of initRead", [&] { return std::to_string(pump().numInitReads); }},
            {"equals", [&] { return difference(*self, *containers[first], second); }},
            {"fields", [&] { return joined(fieldNames(*self)); }},
            {"is field", [&] { return text(self == containers[first]->getField(second).lock()); }},
            {"take field",
             [&] { return text((self = containers[first]->getField(second).lock()) != nullptr); }},
            {"token of field", [&] { return text(self->getFieldToken(*containers[first])); }},
            {"isNameUnique", [&] { return text(self->isNameUnique(first)); }},
            {"addChild",
             [&] { return text(object(name)->addChild(object(first), static_cast<int>(row.number(4)))); }},
            {"rmChild at", [&] { return text(object(name)->rmChild(number(first), 0)); }},
            {"rmChild that", [&] { return text(object(name)->rmChild(*object(first), 0)); }},
            {"parent", [&] { return nameOf(object(name)->getParent().get()); }},
            {"root", [&] { return nameOf(object(name)->findRoot().get()); }},
            {"path", [&] { return object(name)->inqObjPath().value_or("none"); }},
            {"addAttribute", [&] { return text(!self->addAttribute(attribute(), second).expired()); }},
            {"rmAttribute", [&] { return text(self->rmAttribute(first)); }},
            {"rmAllCustomAttributes", [&] { return text(self->rmAllCustomAttributes()); }},
            {"attribute", [&] { return find(*self, first); }},
            {"attributes", [&] { return text(self->getNumAttributes()); }},
            {"declared attributes", [&] { return text(self->getNumHardCodedAttributes()); }},
            {"token of attribute", [&] { return text(self->getAttrToken(*attribute())); }},
            {"set", [&] { return assign(*self->getAttr(first).lock(), second); }},
            {"hold", [&] { return text((attributes[second] = self->getAttr(first).lock()) != nullptr); }},
            {"is at", [&] { return placeOf(*attributes.at(name)); }},
        };
        return operations.at(row[2])();
    }
};

TEST(ContainerMembers, AnswerAsTheirFileSays) {
    auto const registration = FieldFactory::registerField<Pump>("Pump");
    Members members;
    std::string section;
    for (auto const& row : dataRows("containers/members.txt")) {
        if (std::exchange(section, row.section) != row.section)
            members.clear();
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
    refuser->toChange = [](Observable& observable, Cause const&) { return refuse(observable); };
    container->Attr_name().addPreObserver(*refuser, 1, PRE_NOTIFY, true);
    EXPECT_EQ(NotSupported, container->setDisplayName("Tank")->getCode());
    EXPECT_EQ("Pump", container->getDisplayName());
}

} // namespace
