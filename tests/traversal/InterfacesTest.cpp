// SPDX-License-Identifier: MIT
// What all layers have in common: the names of classes, the need of a context, and what functions do that a
// derived class has not overridden.
#include <AttributeContainer/AttributeContainer.h>

#include <gtest/gtest.h>

#include <sstream>

using namespace Zorvan::AttributeContainer;

namespace {

using Cause = std::optional<std::reference_wrapper<ObservingObject>>;

/// Has nothing but what it must have.
class BareAttribute : public Attribute {
public:
    BareAttribute() : Attribute(std::nullopt) {}
    using Attribute::getAttributeTempFlags;
    using Attribute::isAnyTempFlagSet;
    using Attribute::setAttributeTempFlags;
    std::string getName() override { return "bare"; }
    std::optional<std::reference_wrapper<AttrContainer const>> getLocation() override { return {}; }
    AttrDefinition const* getDefinition() const override { return nullptr; }
    std::uint64_t getToken() override { return 7; }
    Attribute& operator=(Attribute const&) override { return *this; }
    std::shared_ptr<Attribute>
    duplicate(CreateType, std::optional<std::reference_wrapper<AttrContainer const>>) override {
        return nullptr;
    }
    bool isEqual(Attribute const&) const override { return true; }
};

class BareObserver : public Observer {
public:
    using Observer::changedNotify;
    using Observer::currentPathRoot;
    using Observer::inqDisplayPath;
    using Observer::toChangeNotify;
    std::string getName() override { return "bare"; }
};

/// Opens what derived classes may call.
struct Open : Object {
    using AttrContainer::readField;
    using AttrContainer::writeField;
    using Object::readChild;
};

template <class T>
void expectClassName(std::string const& name, T const& object) {
    EXPECT_EQ(name, T::getStaticClassName());
    EXPECT_EQ(name, object.getClassName());
}

TEST(Interfaces, NameTheirClasses) {
    auto const attribute = std::make_shared<CustAttr<int>>();
    EXPECT_EQ("Action", Action::getStaticClassName());
    EXPECT_EQ("Action", ActionNotify(0).Action::getClassName()) << "unless it is overridden";
    expectClassName("ActionNotify", ActionNotify(0));
    expectClassName("ActionPreNotify", ActionPreNotify(1));
    expectClassName("ActionPropagate", ActionPropagate(2));
    expectClassName("ActionDefinition", *ActionDefinition::the());
    expectClassName("ActionDefinitionBase", ActionDefinitionBase());
    expectClassName<Attribute>("Attribute", BareAttribute());
    expectClassName("AttributePropagationObserver", AttributePropagationObserver(attribute));
    expectClassName("AttributeWriteProtection", *AttributeWriteProtection::create(attribute, [](Attribute&) {
                        return std::optional<std::string>();
                    }));
    expectClassName("CachedAttributeInfo", CachedAttributeInfo(attribute));
    expectClassName("InfoFailed", InfoFailed(nullptr));
    expectClassName("InfoStringMap", InfoStringMap());
    EXPECT_EQ(AttributePropagationObserver::getStaticClassName(), attribute->getObserver().lock()->getName());
    EXPECT_EQ("NewValueInfo<T>", NewValueInfo<int>(1).getClassName());
    expectClassName<Observer>("Observer", BareObserver());
    expectClassName("ObserverInfo", ObserverInfo());
    expectClassName("ReadContextBase", ReadContextBase());
    expectClassName("ReferenceDictionary", ReferenceDictionary());
    expectClassName("SharedInstanceCollection", SharedInstanceCollection());
    expectClassName("WriteContextBase", WriteContextBase());
}

TEST(Interfaces, OfReadingAndWritingNeedAContext) {
    auto const container = AttrContainer::create();
    auto const object = Object::create();
    std::istringstream in("Unread");
    std::ostringstream out;
    auto const expectCode = [](ErrorCode code, Result const& result) {
        ASSERT_TRUE(result);
        EXPECT_EQ(code, result->getCode());
    };
    auto const expectNoContext = [&](auto&&... all) {
        (expectCode(NoContext, all.readFrom(in, nullptr)), ...);
        (expectCode(NoContext, all.writeTo(out, nullptr)), ...);
    };
    expectNoContext(*container, *object, *UnknownAttrContainer::create(), *FallbackObject::create(),
                    ObserverPath(std::nullopt, "/nobody", 1, 0), CustAttr<int>(), SharedInstanceCollection());
    expectCode(NoContext, (*container.*&Open::readField)(in, nullptr));
    expectCode(NoContext, (*container.*&Open::writeField)(out, 0, nullptr));
    expectCode(NoContext, (*object.*&Open::readChild)(in, nullptr));
    expectCode(TargetMissing, (*container.*&Open::writeField)(out, 0, std::make_shared<WriteContextBase>()));
    EXPECT_EQ(0, in.tellg());
    EXPECT_EQ("", out.str());
}

TEST(Interfaces, ThatAreNotOverriddenDoNothing) {
    BareObserver observer;
    BareAttribute attribute;
    Cause cause;
    EXPECT_EQ(Action::ExecNotHandled, observer.changedNotify(attribute, cause));
    EXPECT_EQ(Action::ExecNotHandled, observer.toChangeNotify(attribute, cause));
    EXPECT_TRUE(observer.checkLocking(Observer::ActionForCheckLocking::Remove));
    EXPECT_EQ(std::nullopt, std::as_const(observer).inqDisplayPath());
    EXPECT_EQ(&observer, &observer.lookupSelf()->get());
    auto const root = std::make_shared<BareObserver>();
    EXPECT_FALSE(BareObserver::currentPathRoot());
    BareObserver::currentPathRoot(root);
    EXPECT_EQ(root.get(), &BareObserver::currentPathRoot()->get());
    BareObserver::currentPathRoot(nullptr);

    EXPECT_EQ(7U, std::as_const(static_cast<Attribute&>(attribute)).getToken());
    EXPECT_EQ("(NULL)", attribute.getValueAsText());
    auto asked = std::make_unique<std::promise<Attribute::NotificationResults>>();
    auto told = std::make_unique<std::promise<Attribute::NotificationResults>>();
    auto atOnce = asked->get_future(), later = told->get_future();
    attribute.assignFrom("7", nullptr, std::move(asked), std::move(told));
    EXPECT_TRUE(atOnce.get().empty() && later.get().empty());
    std::istringstream in("7");
    attribute.readValueFrom(in, std::make_shared<ReadContextBase>());
    EXPECT_EQ(0, in.tellg());
    BareAttribute::setAttributeTempFlags(1);
    EXPECT_TRUE(BareAttribute::isAnyTempFlagSet() && BareAttribute::getAttributeTempFlags() == 1);
    BareAttribute::setAttributeTempFlags(0);
    EXPECT_FALSE(BareAttribute::isAnyTempFlagSet() || Attribute::isObservingBlocked());

    ActionDefinitionBase group;
    EXPECT_TRUE(group.getNumActions() == 0 && !group.getActionAt(0) && group.getNameAt(0).empty());
    auto const container = AttrContainer::create();
    auto const handle = container->lookupToken(container.get());
    EXPECT_TRUE(handle[0] == -1 && handle[1] == -1 && container->lookupField(handle).expired());
    EXPECT_EQ(Zorvan::DataStructures::KeyTable::noToken, container->convertToNewFieldToken(1));
    EXPECT_EQ(Action::ExecNotHandled, container->changedNotify(attribute, cause));
    EXPECT_EQ(static_cast<Observer*>(container.get()), &container->lookupSelf()->get());
}

TEST(Interfaces, OfConstantObjectsAnswerAsTheOthersDo) {
    auto const object = Object::create();
    object->Action("start");
    object->Event("begin");
    object->MinorVersion(5);
    Object const& constant = *object;
    EXPECT_TRUE(&constant.Action() == &object->Attr_Action().getValue() && constant.Action() == "start");
    EXPECT_TRUE(&constant.Attr_Event() == &object->Attr_Event() && constant.Event() == "begin");
    EXPECT_TRUE(&constant.Attr_MinorVersion() == &object->Attr_MinorVersion() &&
                constant.MinorVersion() == 5);
    EXPECT_EQ(object->getAttr("Event").lock(), constant.getAttr("Event").lock());
    EXPECT_EQ("Event", object->Attr_Event().getDefinition()->name);
    EXPECT_EQ(nullptr, CustAttr<int>().getDefinition());
    auto const& own = std::as_const(*object->observable());
    EXPECT_EQ(object->getName(), own.getName());
    EXPECT_EQ(object->inqObjPath(), own.inqObjPath());
    EXPECT_EQ(static_cast<Observer const*>(object.get()), &own.lookupObject()->get());
    EXPECT_EQ(object, own.inqObserver("").lock());
    auto const array = ArrayContainer::create();
    array->selectedElement("one");
    EXPECT_EQ("one", std::as_const(*array).selectedElement());
    Observable const& observable = object->Attr_Event();
    EXPECT_EQ("Event", observable.getName());
    EXPECT_EQ(static_cast<Observer const*>(object.get()), &observable.lookupObject()->get());
    EXPECT_EQ(nullptr, observable.lookupNotifyInfo(typeid(ObserverInfo)));
}

TEST(Interfaces, OfInfosCopyWhatTheyHold) {
    InfoStringMap texts(std::map<std::string, std::string>{{"a", "1"}}), other;
    texts.addInfo<std::string>("b", "2");
    texts.addInfo<std::string>("a", "3");
    other.setExpire(false);
    other = texts;
    EXPECT_TRUE(other.getInfoByKey("a") == "3" && other.getInfoByKey("c") == "" &&
                other.getNumberInfos() == 2);
    EXPECT_FALSE(other.willExpire()) << "that is no text";
    other.setInfos({});
    EXPECT_TRUE(other.getInfos().empty());

    auto const one = std::make_shared<CustAttr<int>>(1);
    CachedAttributeInfo first(one), second(nullptr);
    first.setExpire(true);
    CachedAttributeInfo const copy(first);
    second = copy;
    EXPECT_TRUE(second.willExpire() && second.getCachedAttribute() == one);
    first.setExpire(false);
    second = std::move(first);
    EXPECT_FALSE(second.willExpire());
    EXPECT_EQ(one, second.getCachedAttribute());
}

} // namespace
