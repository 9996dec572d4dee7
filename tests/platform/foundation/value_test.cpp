#include "platform/foundation/value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "platform/foundation/errors.h"

namespace plat {
namespace {

using ::testing::HasSubstr;

struct Thing : Object {
    std::string className() const override { return "Thing"; }
};

TEST(Value, ContainersAreSharedByReferenceUntilDeepCopied) {
    const Value array = Value::array({"a"});
    Value alias = array;
    alias.addObject("b");
    EXPECT_EQ(array.count(), 2u);
    EXPECT_TRUE(array.identical(alias));

    const Value inner = Value::dictionary({{"k", "v"}});
    const Value outer = Value::dictionary({{"inner", inner}, {"list", array}});
    outer.objectForKey("inner").setValueForKey("k2", "v2");
    EXPECT_EQ(inner.count(), 2u);

    const Value copy = outer.deepCopy();
    EXPECT_EQ(copy, outer);
    EXPECT_FALSE(copy.identical(outer));
    copy.objectForKey("inner").setValueForKey("k", "changed");
    copy.objectForKey("list").removeAllObjects();
    EXPECT_EQ(inner.objectForKey("k"), Value("v"));
    EXPECT_EQ(array.count(), 2u);
    EXPECT_NE(copy, outer);
}

TEST(Value, BoolValueOverEveryKind) {
    EXPECT_FALSE(Value().boolValue());
    EXPECT_FALSE(Value::null().boolValue());
    EXPECT_TRUE(Value::boolean(true).boolValue());
    EXPECT_FALSE(Value::boolean(false).boolValue());
    EXPECT_TRUE(Value::integer(-1).boolValue());
    EXPECT_TRUE(Value::integer(std::numeric_limits<std::int64_t>::min()).boolValue());
    EXPECT_FALSE(Value::integer(0).boolValue());
    EXPECT_TRUE(Value::unsignedInteger(std::numeric_limits<std::uint64_t>::max()).boolValue());
    EXPECT_TRUE(Value::real(2.5).boolValue());
    EXPECT_FALSE(Value::real(-0.0).boolValue());
    EXPECT_TRUE(Value("YES").boolValue());
    EXPECT_TRUE(Value(" +01").boolValue());
    EXPECT_FALSE(Value("NO").boolValue());
    EXPECT_FALSE(Value("0").boolValue());
    // Kinds without boolValue answer NO rather than raising.
    EXPECT_FALSE(Value::data({1}).boolValue());
    EXPECT_FALSE(Value::date(1).boolValue());
    EXPECT_FALSE(Value::array({Value::boolean(true)}).boolValue());
    EXPECT_FALSE(Value::dictionary({{"a", Value::boolean(true)}}).boolValue());
    EXPECT_FALSE(Value::uid(1).boolValue());
    EXPECT_FALSE(Value(std::make_shared<Thing>()).boolValue());
}

TEST(Value, IntegersAboveInt64MaxStayUnsigned) {
    constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
    const Value atMax = Value::unsignedInteger(static_cast<std::uint64_t>(kMax));
    const Value above = Value::unsignedInteger(static_cast<std::uint64_t>(kMax) + 1);
    const Value top = Value::unsignedInteger(std::numeric_limits<std::uint64_t>::max());
    EXPECT_FALSE(atMax.isUnsignedBig());
    EXPECT_EQ(atMax, Value::integer(kMax));
    EXPECT_TRUE(above.isUnsignedBig());
    EXPECT_TRUE(top.isUnsignedBig());
    EXPECT_EQ(top.unsignedValue(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(top, Value::unsignedInteger(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_NE(top, Value::integer(-1));
    EXPECT_NE(Value::integer(-1), top);
    EXPECT_NE(above, Value::integer(std::numeric_limits<std::int64_t>::min()));
    EXPECT_NE(top, above);
    EXPECT_EQ(top.description(), "18446744073709551615");
}

TEST(Value, NumbersCompareByValueButBooleansStandApart) {
    EXPECT_EQ(Value::integer(1), Value::real(1.0));
    EXPECT_EQ(Value::real(-3.0), Value::integer(-3));
    EXPECT_NE(Value::integer(0), Value::real(0.5));
    EXPECT_NE(Value::integer(1), Value::boolean(true));
    EXPECT_NE(Value::boolean(false), Value::integer(0));
    EXPECT_EQ(Value::boolean(true), Value::boolean(true));
    EXPECT_NE(Value::boolean(true), Value::boolean(false));
    EXPECT_NE(Value("1"), Value::integer(1));
    EXPECT_EQ(Value(), Value());
    EXPECT_NE(Value(), Value::null());
    EXPECT_EQ(Value::array({Value::integer(2)}), Value::array({Value::real(2)}));
}

TEST(Value, ArrayIndexesPastTheEndRaiseRangeError) {
    const Value array = Value::array({"a", "b"});
    EXPECT_EQ(array.objectAtIndex(1), Value("b"));
    EXPECT_THROW(array.objectAtIndex(2), RangeError);
    EXPECT_THROW(array.removeObjectAtIndex(2), RangeError);
    // An unsigned index counted down below zero wraps to a huge index.
    EXPECT_THROW(array.removeObjectAtIndex(static_cast<std::size_t>(0) - 1), RangeError);
    EXPECT_THROW(array.insertObjectAtIndex("z", 3), RangeError);
    EXPECT_EQ(array, Value::array({"a", "b"}));
    array.insertObjectAtIndex("c", 2);
    array.insertObjectAtIndex("0", 0);
    array.removeObjectAtIndex(1);
    EXPECT_EQ(array, Value::array({"0", "b", "c"}));
    // Messages to nil or to a non-array do nothing, whatever the index.
    EXPECT_NO_THROW(Value().removeObjectAtIndex(5));
    EXPECT_TRUE(Value("s").objectAtIndex(9).isNil());
}

TEST(Value, SetValueForKeyWithNilRemoves) {
    const Value dict = Value::dictionary({{"a", Value::integer(1)}, {"b", Value()}});
    EXPECT_EQ(dict.count(), 1u);
    dict.setValueForKey("b", Value::integer(2));
    dict.setValueForKey("a", Value());
    EXPECT_TRUE(dict.objectForKey("a").isNil());
    EXPECT_EQ(dict, Value::dictionary({{"b", Value::integer(2)}}));
    const Value notADictionary = Value::array();
    notADictionary.setValueForKey("a", "x");
    EXPECT_EQ(notADictionary.count(), 0u);
    EXPECT_TRUE(notADictionary.objectForKey("a").isNil());
}

TEST(Value, DescriptionOfScalarsNilAndNestedContainers) {
    EXPECT_EQ(Value().description(), "(null)");
    EXPECT_EQ(Value::null().description(), "<null>");
    EXPECT_EQ(Value("two words").description(), "two words");
    EXPECT_EQ(Value::real(0.1).description(), "0.1");
    EXPECT_EQ(Value::data({0xde, 0xad, 0xbe, 0xef, 0x01}).description(), "<deadbeef 01>");
    EXPECT_EQ(Value::array({Value::integer(1), "two words"}).description(),
              "(\n    1,\n    \"two words\"\n)");
    EXPECT_EQ(Value::array({Value::data({1})}).description(), "(\n    <01>\n)");
    const Value nested = Value::dictionary(
        {{"name", "Mail"}, {"list", Value::array({Value::null(), Value::boolean(false)})}});
    const std::string text = nested.description();
    EXPECT_THAT(text, HasSubstr("    name = Mail;\n"));
    EXPECT_THAT(text, HasSubstr("        \"<null>\",\n        0\n    );\n"));
    EXPECT_EQ(text.front(), '{');
    EXPECT_EQ(text.back(), '}');
    // A container that holds itself is described without recursing forever.
    const Value loop = Value::array();
    loop.addObject(loop);
    EXPECT_THAT(loop.description(), HasSubstr("(...)"));
    loop.removeAllObjects();
}

TEST(Value, IsPropertyListRejectsNullObjectsAndCycles) {
    const Value shared = Value::dictionary({{"n", Value::integer(1)}});
    const Value plist = Value::dictionary({{"s", "x"},
                                           {"d", Value::data({1, 2})},
                                           {"t", Value::date(0)},
                                           {"a", Value::array({shared, shared, Value::real(1)})},
                                           {"b", Value::boolean(true)}});
    EXPECT_TRUE(plist.isPropertyList());  // the same dictionary twice is not a cycle
    EXPECT_FALSE(Value().isPropertyList());
    EXPECT_FALSE(Value::null().isPropertyList());
    EXPECT_FALSE(Value::array({"a", Value::null()}).isPropertyList());
    EXPECT_FALSE(Value::dictionary({{"o", Value(std::make_shared<Thing>())}}).isPropertyList());
    shared.setValueForKey("nested", Value::array({Value::null()}));
    EXPECT_FALSE(plist.isPropertyList());
    const Value loop = Value::dictionary();
    loop.setValueForKey("self", Value::array({loop}));
    EXPECT_FALSE(loop.isPropertyList());
    loop.removeAllObjects();
}

}  // namespace
}  // namespace plat
