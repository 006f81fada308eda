#include <corvane/soa/common/IPropertyPolicyChangeListener.hpp>
#include <corvane/soa/common/ObjectPropertyPolicy.hpp>

#include <gtest/gtest.h>

#include "PolicyText.hpp"

#include <string>
#include <utility>
#include <vector>

using Corvane::Soa::Common::IPropertyPolicyChangeListener;
using Corvane::Soa::Common::ObjectPropertyPolicy;
using Corvane::Soa::Common::PolicyProperty;
using Corvane::Soa::Common::PolicyType;

TEST(PolicyModel, TypesAreBuiltFromTexts) {
    const std::pair<PolicyType, std::string> cases[] = {
        {PolicyType("Item{a,b}"), "Item{a, b}"},
        {PolicyType("Item"), "Item{}"},
        {PolicyType("Item{}"), "Item{}"},
        {PolicyType("Item{ b,,a}x,c}"), "Item{ b, a}"},  // untrimmed, up to the first "}"
        {PolicyType("Item{a,b"), "Item{a, b}"},
        {PolicyType("Item", " a , b "), "Item{a, b}"},
        {PolicyType("Item", "b,a,b"), "Item{a, b}"},
        {PolicyType("Item", " a , b ", "withProperties, asAttribute"),
         "Item{a(asAttribute=1,withProperties=1), b(asAttribute=1,withProperties=1)}"},
    };
    for (const auto& [type, expected] : cases) {
        EXPECT_EQ(PolicyText::of(type), expected);
    }
    EXPECT_EQ(PolicyType("Item{a,b}").toString(), "Item{a, b}");
    EXPECT_EQ(PolicyProperty("p", " x ,,y").getModifierNames(),
              (std::vector<std::string>{"x", "y"}));

    PolicyType type("Item{a}");
    type.addProperties("{b,c}");
    EXPECT_EQ(type.toString(), "Item{a, b, c}");
    type.setProperties("Other{d}");
    EXPECT_EQ(type.toString(), "Item{d}");
}

TEST(PolicyModel, ModifiersAreStoredAsOneOrZeroAndReadTrueOnlyForThose) {
    PolicyProperty property("p");
    property.setModifier("on", true);
    property.setModifier("off", false);
    EXPECT_EQ(PolicyText::modifiers(property), "(off=0,on=1)");
    EXPECT_TRUE(property.getBooleanModifier("on"));
    EXPECT_FALSE(property.getBooleanModifier("off"));
    EXPECT_FALSE(property.getBooleanModifier("unknown"));
    EXPECT_FALSE(property.getBooleanModifier("On"));
    property.setModifier("on", false);
    EXPECT_EQ(property.getModifierNames(), (std::vector<std::string>{"off", "on"}));
    EXPECT_FALSE(property.getBooleanModifier("on"));
}

TEST(PolicyModel, TypeModifiersFillInWhatAPropertyLacks) {
    PolicyType type("Item");
    type.setModifier("withProperties", true);
    type.setModifier("asAttribute", true);
    PolicyProperty own("a");
    own.setModifier("asAttribute", false);
    type.addProperty(own);
    EXPECT_EQ(PolicyText::of(own), "a(asAttribute=0,withProperties=1)");  // the caller's object

    type.addProperty("b");
    type.setModifier("uIValueOnly", false);  // reaches the properties already added
    type.setModifier("asAttribute", false);  // ... but never overrides what they have
    EXPECT_EQ(PolicyText::of(type),
              "Item(asAttribute=0,uIValueOnly=0,withProperties=1){"
              "a(asAttribute=0,uIValueOnly=0,withProperties=1), "
              "b(asAttribute=1,uIValueOnly=0,withProperties=1)}");

    // A property added again replaces the first, modifiers and all.
    PolicyProperty again("a", "excludeUiValues");
    type.addProperty(again);
    EXPECT_EQ(PolicyText::of(*type.getProperty("a")),
              "a(asAttribute=0,excludeUiValues=1,uIValueOnly=0,withProperties=1)");
    type.addProperties(type);
    EXPECT_EQ(type.getPropertyNames(), (std::vector<std::string>{"a", "b"}));
    type.eraseProperty("a");
    type.eraseProperty(PolicyProperty("missing"));
    EXPECT_FALSE(type.hasProperty("a"));
    EXPECT_EQ(type.getProperty("a"), nullptr);
}

TEST(PolicyModel, PolicyModifiersReachTypesOnlyWhenTheyAreAdded) {
    ObjectPropertyPolicy policy;
    policy.setModifier("withProperties", true);
    PolicyType item("Item{a}");
    item.setModifier("asAttribute", false);
    policy.addType(item);
    EXPECT_EQ(PolicyText::of(item),  // the caller's object, properties included
              "Item(asAttribute=0,withProperties=1){a(asAttribute=0,withProperties=1)}");

    policy.setModifier("excludeUiValues", true);  // leaves Item as it is
    policy.addType("Other");
    PolicyType more("Item{b}");
    more.setModifier("asAttribute", true);
    policy.addType(more);  // the stored Item keeps its modifiers and gains b, which keeps its own
    EXPECT_EQ(PolicyText::of(policy),
              "(excludeUiValues=1,withProperties=1) Item(asAttribute=0,withProperties=1){"
              "a(asAttribute=0,withProperties=1), b(asAttribute=1,excludeUiValues=1,"
              "withProperties=1)} "
              "Other(excludeUiValues=1,withProperties=1){}");
    EXPECT_EQ(policy.getTypeNames(), (std::vector<std::string>{"Item", "Other"}));
}

TEST(PolicyModel, RemovePropertiesTakesListedPropertiesOrTheWholeType) {
    const std::pair<std::string, std::string> cases[] = {
        {"Item{a,missing}", "Item{b} Other{x}"},
        {"Item{a,b}", "Item{} Other{x}"},
        {"Item", "Other{x}"},
        {"Nothing{a}", "Item{a, b} Other{x}"},
    };
    for (const auto& [removed, expected] : cases) {
        ObjectPropertyPolicy policy;
        policy.addType("Item{a,b}");
        policy.addType("Other{x}");
        EXPECT_EQ(policy.removeProperties(PolicyType(removed)), removed != "Nothing{a}");
        EXPECT_EQ(PolicyText::of(policy), expected) << removed;
    }
    ObjectPropertyPolicy policy;
    EXPECT_FALSE(policy.removeType("Item"));
}

TEST(PolicyModel, EqualityIgnoresTheOrderOfAdditionButNotModifiers) {
    ObjectPropertyPolicy first;
    first.addType("A{x,y}");
    first.addType("B{z}");
    ObjectPropertyPolicy second;
    second.addType("B{z}");
    second.addType("A{y}");
    second.addType("A{x}");
    EXPECT_EQ(first, second);

    second.getType("A")->getProperty("x")->setModifier("asAttribute", false);
    EXPECT_NE(first, second);
    EXPECT_NE(*first.getType("A"), *second.getType("A"));
    EXPECT_NE(PolicyProperty("x"), *second.getType("A")->getProperty("x"));
    first.getType("A")->getProperty("x")->setModifier("asAttribute", false);
    EXPECT_EQ(first, second);
    first.setModifier("withProperties", false);
    EXPECT_NE(first, second);
    EXPECT_NE(PolicyType("A{x}"), PolicyType("A{x,y}"));
    EXPECT_NE(PolicyType("A{x}"), PolicyType("B{x}"));
}

namespace {

struct Recorder : IPropertyPolicyChangeListener {
    explicit Recorder(std::vector<std::string>& log) : log(log) {}
    void propertyAdded(PolicyType& type, const std::string& name,
                       PolicyProperty& property) override {
        log.push_back(std::to_string(this == first) + ":" + type.getName() + "." + name +
                      (&property == added ? " (the caller's)" : ""));
        if (removeSelf) {
            PolicyType::removePropertyPolicyChangeListener(this);
        }
    }
    std::vector<std::string>& log;
    const Recorder* first = nullptr;
    const PolicyProperty* added = nullptr;
    bool removeSelf = false;
};

}  // namespace

TEST(PolicyModel, ListenersAreToldOfEveryAddedPropertyInAddressOrder) {
    PolicyType known("T{q}");  // built before anyone listens
    std::vector<std::string> log;
    Recorder pair[2] = {Recorder(log), Recorder(log)};
    for (Recorder& each : pair) {
        each.first = &pair[0];
        PolicyType::addPropertyPolicyChangeListener(&each);
    }
    PolicyType::addPropertyPolicyChangeListener(&pair[1]);  // once only
    PolicyProperty property("p");
    pair[0].added = &property;
    PolicyType type("T");
    type.addProperty(property);
    pair[0].removeSelf = true;
    ObjectPropertyPolicy policy;
    policy.addType(type);   // a new type: a copy, nobody is told
    policy.addType(known);  // a known one: its properties are added
    type.addProperty("r");
    PolicyType::removePropertyPolicyChangeListener(&pair[1]);
    type.addProperty("s");
    EXPECT_EQ(log, (std::vector<std::string>{"1:T.p (the caller's)", "0:T.p", "1:T.q", "0:T.q",
                                             "0:T.r"}));
}
