#include "platform/foundation/value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "platform/foundation/errors.h"

namespace plat {
namespace {

namespace t = ::testing;
constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kAbove = std::uint64_t(kMax) + 1;
constexpr auto kTop = std::numeric_limits<std::uint64_t>::max();

struct Thing : Object {
    std::string className() const override { return "Thing"; }
};

TEST(Value, ContainersAreSharedByReferenceUntilDeepCopied) {
    const Value array = Value::array({"a"});
    Value alias = array;
    alias.addObject("b");
    EXPECT_TRUE(array.identical(alias));
    const Value inner = Value::dictionary({{"k", "v"}, {"nil", Value()}});
    const Value outer = Value::dictionary({{"inner", inner}, {"list", array}});
    outer.objectForKey("inner").setValueForKey("k2", "v2");
    EXPECT_EQ(inner, Value::dictionary({{"k", "v"}, {"k2", "v2"}}));  // nil is no entry

    const Value copy = outer.deepCopy();
    copy.objectForKey("inner").setValueForKey("k", Value());  // removes the key
    copy.objectForKey("list").removeAllObjects();
    EXPECT_EQ(copy, Value::dictionary(
                        {{"inner", Value::dictionary({{"k2", "v2"}})}, {"list", Value::array()}}));
    EXPECT_EQ(outer, Value::dictionary({{"inner", Value::dictionary({{"k", "v"}, {"k2", "v2"}})},
                                        {"list", Value::array({"a", "b"})}}));
    array.setValueForKey("a", "x");  // not a dictionary: nothing happens
    EXPECT_EQ(array.count(), 2u);
}

TEST(Value, NumbersCompareByValueButBooleansAndBigUnsignedStandApart) {
    EXPECT_EQ(Value::array({Value::integer(2)}), Value::array({Value::real(2)}));
    EXPECT_EQ(Value::unsignedInteger(kMax), Value::integer(kMax));  // not big: it fits signed
    EXPECT_FALSE(Value::unsignedInteger(kMax).isUnsignedBig());
    EXPECT_TRUE(Value::unsignedInteger(kAbove).isUnsignedBig());
    const std::pair<Value, Value> unequal[] = {
        {Value::integer(1), Value::boolean(true)},
        {Value::boolean(false), Value::integer(0)},
        {Value("1"), Value::integer(1)},
        {Value(), Value::null()},
        {Value::unsignedInteger(kTop), Value::integer(-1)},
        {Value::unsignedInteger(kAbove), Value::integer(std::numeric_limits<std::int64_t>::min())},
        {Value::unsignedInteger(kTop), Value::unsignedInteger(kAbove)},
    };
    for (const auto& [a, b] : unequal)
        EXPECT_FALSE(a == b || b == a) << a.description() << " vs " << b.description();
    EXPECT_EQ(Value::unsignedInteger(kTop).description(), "18446744073709551615");
}

TEST(Value, BoolValueIsNonZeroForNumbersNSStringRulesForStringsAndNoOtherwise) {
    for (const Value& yes : {Value::boolean(true), Value::integer(-1), Value::unsignedInteger(kTop),
                             Value::real(2.5), Value(" +01")})
        EXPECT_TRUE(yes.boolValue()) << yes.description();
    for (const Value& no :
         {Value(), Value::null(), Value::boolean(false), Value::integer(0), Value::real(-0.0),
          Value("NO"), Value::data({1}), Value::date(1), Value::array({Value::boolean(true)}),
          Value::dictionary({{"a", Value::boolean(true)}}), Value::uid(1),
          Value(std::make_shared<Thing>())})
        EXPECT_FALSE(no.boolValue()) << no.description();
}

TEST(Value, ArrayIndexesPastTheEndRaiseRangeError) {
    const Value array = Value::array({"a", "b"});
    EXPECT_THROW(array.objectAtIndex(2), RangeError);
    EXPECT_THROW(array.removeObjectAtIndex(2), RangeError);
    // An unsigned index counted down below zero wraps to a huge index.
    EXPECT_THROW(array.removeObjectAtIndex(static_cast<std::size_t>(0) - 1), RangeError);
    EXPECT_THROW(array.insertObjectAtIndex("z", 3), RangeError);
    array.insertObjectAtIndex("c", 2);
    array.insertObjectAtIndex("0", 0);
    array.removeObjectAtIndex(1);
    EXPECT_EQ(array, Value::array({"0", "b", "c"}));
    // Messages to nil or to a non-array do nothing, whatever the index.
    EXPECT_NO_THROW(Value().removeObjectAtIndex(5));
    EXPECT_TRUE(Value("s").objectAtIndex(9).isNil());
}

TEST(Value, DescriptionIsOpenStepStyleAndSurvivesCycles) {
    EXPECT_EQ(Value::null().description(), "<null>");
    EXPECT_EQ(Value::real(0.1).description(), "0.1");
    EXPECT_EQ(
        Value::array({Value::integer(1), "two words", Value::data({0xde, 0xad, 0xbe, 0xef, 1})})
            .description(),
        "(\n    1,\n    \"two words\",\n    <deadbeef 01>\n)");
    EXPECT_THAT(
        Value::dictionary(
            {{"name", "Mail"}, {"list", Value::array({Value::null(), Value::boolean(false)})}})
            .description(),
        t::AllOf(t::StartsWith("{\n"), t::HasSubstr("    name = Mail;\n"),
                 t::HasSubstr("        \"<null>\",\n        0\n    );\n"), t::EndsWith("}")));
    // A container that holds itself is described without recursing forever.
    const Value loop = Value::array();
    loop.addObject(loop);
    EXPECT_THAT(loop.description(), t::HasSubstr("(...)"));
    loop.removeAllObjects();
}

}  // namespace
}  // namespace plat
