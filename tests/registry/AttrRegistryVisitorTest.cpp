// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "containers/ApplicationClasses.h"
#include "observation/RecordingObserver.h"
#include "registry/RegistryFixture.h"

#include <AttributeContainer/AttrRegistryVisitor.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// Has an attribute that is left out, and may name its fields' keys itself.
class Plant final : public ApplicationClass<Plant, AttrContainer> {
public:
    static constexpr char classNameText[] = "Plant";
    using ApplicationClass::ApplicationClass;
    static std::vector<AttrDefinition> const& attributes() {
        static std::vector<AttrDefinition> const table{{1, "Height", AttrTypeDouble, 0},
                                                       {2, "Label", AttrTypeString, 1},
                                                       {3, "Secret", AttrTypeInt, 0x21}};
        return table;
    }
    static std::vector<FieldDefinition> const& fields() {
        static std::vector<FieldDefinition> const table{{0, "Motor", ""}};
        return table;
    }
    std::optional<std::string> getFieldRegistryPrefix(AttrContainer const& field) override {
        return keyName ? keyName(field) : ApplicationClass::getFieldRegistryPrefix(field);
    }
    std::function<std::optional<std::string>(AttrContainer const&)> keyName;
};

struct AttrRegistryVisitorTest : ScratchKey {
    std::shared_ptr<Plant> plant = Plant::create();
    std::shared_ptr<AttrContainer> leaf = named("leaf");

    AttrRegistryVisitorTest() {
        leaf->addAttribute(std::make_shared<CustAttr<int>>(3), "size");
        plant->addField(leaf, "", 0);
        plant->addField(named<Pump>("Pump"), "", 0);
    }

    VisitorCore::VisitResult write(RegKeysArray const& keys, unsigned int first = 0, unsigned int last = 9) {
        AttrWriteRegistry writer(keys, first, last);
        return plant->attributeVisitor(writer, true);
    }
    int read(RegKeysArray const& keys, bool notify = true, unsigned int first = 0, unsigned int last = 9) {
        AttrReadRegistry reader(keys, notify, first, last);
        plant->attributeVisitor(reader, true);
        return reader.getNumRead();
    }
};

TEST_F(AttrRegistryVisitorTest, LastBaseKeyThatHasAValueDecides) {
    auto const first = place("first"), second = place("second");
    auto missing = std::make_shared<RegKeys>("", currentUser(), false);
    missing->setPrefix(std::string(path) + "\\missing");
    first->setKey("Height", "1");
    first->setKey("Label", "one");
    second->setKey("Height", "2");
    EXPECT_EQ(2, read({first, nullptr, missing, second}));
    EXPECT_EQ("2", plant->getAttr("Height").lock()->getValueAsText());
    EXPECT_EQ("one", plant->getAttr("Label").lock()->getValueAsText());

    EXPECT_EQ(VisitorCore::Continue, write({first, missing, second}));
    EXPECT_EQ("one", second->queryKey("Label"));
    EXPECT_EQ("3", place("second\\leaf")->queryKey("size"));
    EXPECT_FALSE(missing->checkKey("", false));
    EXPECT_EQ(VisitorCore::Ignored, write({missing}));
    EXPECT_EQ(0, read({missing}));
    EXPECT_EQ(VisitorCore::SkipChildren, write({}));
}

TEST_F(AttrRegistryVisitorTest, ObserversAreToldWhenTheyAreToBe) {
    Log log;
    auto const witness = RecordingObserver::make("witness", log);
    auto const size = leaf->getAttr("size").lock();
    size->addObserver(*witness, 1, NOTIFY, false);
    place("base\\leaf")->setKey("size", "7");
    EXPECT_EQ(1, read({place("base")}, false));
    EXPECT_EQ("7", size->getValueAsText());
    EXPECT_EQ(Log{}, log);
    EXPECT_TRUE(size->isNotificationEnabled());
    place("base\\leaf")->setKey("size", "8");
    EXPECT_EQ(1, read({place("base")}, true));
    EXPECT_EQ(Log{"witness"}, log);
    witness->changed = [](Observable&, Cause const&) -> Action::ExecReturn {
        throw std::runtime_error("no");
    };
    AttrReadRegistry reader(place("base"), true, 0, 9);
    EXPECT_THROW(plant->attributeVisitor(reader, true), std::runtime_error);
    EXPECT_TRUE(size->isNotificationEnabled());
    EXPECT_EQ(0, reader.getNumRead());
    witness->changed = nullptr;
    plant->attributeVisitor(reader, true);
    EXPECT_EQ(1, reader.getNumRead()) << "it stands at its beginning";
    size->setNotificationEnabled(false);
    EXPECT_EQ(1, read({place("base")}, true));
    EXPECT_FALSE(size->isNotificationEnabled());
}

TEST_F(AttrRegistryVisitorTest, FieldsWhoseKeyNameIsTakenAreIgnored) {
    auto const other = named("other");
    auto const size = std::make_shared<CustAttr<int>>(5);
    other->addAttribute(size, "size");
    plant->addField(other, "", 0);
    for (auto const& row : dataRows("registry/field-keys.txt")) {
        SCOPED_TRACE(row.place);
        std::string const first = row[0], second = row[1];
        bool const isSame = row[2] == "same";
        plant->keyName = [&](AttrContainer const& field) -> std::optional<std::string> {
            return &field == leaf.get() ? first : &field == other.get() ? second : "Pump";
        };
        auto const base = place("base");
        EXPECT_EQ(isSame ? VisitorCore::Ignored : VisitorCore::Continue, write({base}));
        EXPECT_EQ("3", place("base\\" + first)->queryKey("size"));
        if (!isSame) {
            EXPECT_EQ("5", place("base\\" + second)->queryKey("size"));
        }
        size->setValue(6);
        read({base});
        EXPECT_EQ(isSame ? 6 : 5, size->getValue());
        size->setValue(5);
        base->deleteTree("");
    }
    plant->keyName = [&](AttrContainer const& field) {
        return &field == leaf.get() ? std::nullopt : std::optional<std::string>("x");
    };
    write({place("base")});
    EXPECT_EQ("3", place("base")->queryKey("size")) << "without a name: the parent's key";
}

TEST_F(AttrRegistryVisitorTest, WhatFailsWithinAWalkLeavesTheVisitorAtItsBeginning) {
    auto const base = place("base");
    AttrWriteRegistry writer(base, 0, 9);
    plant->keyName = [&](AttrContainer const& field) {
        return &field == leaf.get() ? std::string(300, 'k') : std::string("sub"); // too long
    };
    EXPECT_EQ(VisitorCore::SkipChildren, plant->attributeVisitor(writer, true));
    EXPECT_EQ(Names{"sub"}, base->enumerateKeys());

    plant->keyName = [](AttrContainer const&) -> std::string { throw std::runtime_error("hook"); };
    EXPECT_THROW(plant->attributeVisitor(writer, true), std::runtime_error);
    plant->keyName = nullptr;
    EXPECT_EQ(VisitorCore::Continue, leaf->attributeVisitor(writer, true));
    EXPECT_EQ("3", base->queryKey("size")) << "the root's key is the base key again";
}

} // namespace
