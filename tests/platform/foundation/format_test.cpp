#include "platform/foundation/format.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace plat {
namespace {

Value n(std::int64_t i) {
    return Value::integer(i);
}

TEST(StringWithFormat, ObjectsPrintTheirDescription) {
    EXPECT_EQ(stringWithFormat("Saved contact image at: %@", {"/var/mobile/a.png"}),
              "Saved contact image at: /var/mobile/a.png");
    EXPECT_EQ(stringWithFormat("[%@]", {Value()}), "[(null)]");
    EXPECT_EQ(stringWithFormat("[%@|%@]", {"only"}), "[only|(null)]");
    EXPECT_EQ(stringWithFormat("%@ %@ %@", {n(42), Value::real(0.5), Value::boolean(true)}),
              "42 0.5 1");
    EXPECT_EQ(stringWithFormat("%@", {Value::array({"a", n(1)})}),
              Value::array({"a", n(1)}).description());
    EXPECT_EQ(stringWithFormat("[%-6@][%6@]", {"ab", "\u00e9t\u00e9"}),
              "[ab    ][   \u00e9t\u00e9]");
}

TEST(StringWithFormat, IntegersAreReadAtTheWidthOfTheirCType) {
    EXPECT_EQ(stringWithFormat("%d %i %ld", {n(-42), n(7), n(-42)}), "-42 7 -42");
    EXPECT_EQ(stringWithFormat("%ld", {n(std::numeric_limits<std::int64_t>::max())}),
              "9223372036854775807");
    EXPECT_EQ(stringWithFormat("%hhd %hd %ld %llX", {n(1), n(2), n(3), n(-1)}),
              "1 2 3 FFFFFFFFFFFFFFFF");
    EXPECT_EQ(stringWithFormat("%x %u", {n(-1), n(-1)}), "ffffffff 4294967295");
    EXPECT_EQ(stringWithFormat("%d", {n((std::int64_t{1} << 32) + 5)}), "5");
    const Value big = Value::unsignedInteger(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(stringWithFormat("%lu %llu %zu %ld", {big, big, big, big}),
              "18446744073709551615 18446744073709551615 18446744073709551615 -1");
    EXPECT_EQ(stringWithFormat("%lx %X %o", {n(255), n(255), n(8)}), "ff FF 10");
    EXPECT_EQ(stringWithFormat("[%5d][%-5d][%05d][%+d][%zd]", {n(42), n(42), n(42), n(42), n(-3)}),
              "[   42][42   ][00042][+42][-3]");
    EXPECT_EQ(stringWithFormat("[%*d][%-*d]", {n(4), n(7), n(3), n(7)}), "[   7][7  ]");
    EXPECT_EQ(stringWithFormat("%d %ld", {"12", Value::real(-3.9)}), "12 -3");
    EXPECT_EQ(stringWithFormat("%d|%lu", {}), "0|0");
}

TEST(StringWithFormat, RealsHonourFlagsWidthAndPrecision) {
    EXPECT_EQ(stringWithFormat("%f", {Value::real(3.14159)}), "3.141590");
    EXPECT_EQ(stringWithFormat("%.2f|%8.3f|%-8.1f|",
                               {Value::real(3.14159), Value::real(3.14159), Value::real(2.0)}),
              "3.14|   3.142|2.0     |");
    EXPECT_EQ(stringWithFormat("%g %e %.1E",
                               {Value::real(0.0001), Value::real(12345.678), Value::real(-2.5e-3)}),
              "0.0001 1.234568e+04 -2.5E-03");
    EXPECT_EQ(stringWithFormat("%.1f %f", {n(2), "2.5"}), "2.0 2.500000");
    EXPECT_EQ(stringWithFormat("%.*f", {n(1), Value::real(2.26)}), "2.3");
    EXPECT_EQ(stringWithFormat("%f", {}), "0.000000");
}

TEST(StringWithFormat, CharactersStringsAndPercent) {
    EXPECT_EQ(stringWithFormat("%s|%.3s|%-4s|", {"h\u00e9llo", "abcdef", "x"}),
              "h\u00e9llo|abc|x   |");
    EXPECT_EQ(stringWithFormat("%s", {Value()}), "(null)");
    EXPECT_EQ(stringWithFormat("%c%c%C%C", {n('A'), "Zed", n(0xE9), n(0x20AC)}), "AZ\u00e9\u20ac");
    EXPECT_EQ(stringWithFormat("100%% of %d%%", {n(5)}), "100% of 5%");
    EXPECT_EQ(stringWithFormat("%p", {Value()}), "0x0");
}

TEST(StringWithFormat, PositionalArguments) {
    EXPECT_EQ(stringWithFormat("%2$@ %1$@", {"a", "b"}), "b a");
    EXPECT_EQ(stringWithFormat("%1$@-%1$@", {"a"}), "a-a");
    EXPECT_EQ(stringWithFormat("%2$ld/%1$ld", {n(1), n(2)}), "2/1");
    EXPECT_EQ(stringWithFormat("%3$@", {"a", "b"}), "(null)");
}

TEST(StringWithFormat, TextAndUnknownConversionsPassThrough) {
    EXPECT_EQ(stringWithFormat("Version %@, \u00a9 %ld Norvale, Inc. All rights reserved,",
                               {"2.1.0", n(2024)}),
              "Version 2.1.0, \u00a9 2024 Norvale, Inc. All rights reserved,");
    EXPECT_EQ(stringWithFormat("%k %@", {"x"}), "%k x");
    EXPECT_EQ(stringWithFormat("%n%@", {"x"}), "%nx");
    EXPECT_EQ(stringWithFormat("100%", {}), "100%");
    EXPECT_EQ(stringWithFormat("ends %5", {}), "ends %5");
    EXPECT_EQ(stringWithFormat("\xff%@\xfe", {"\xc3"}), "\xff\xc3\xfe");
    std::vector<Value> args = {"v", n(3)};
    EXPECT_EQ(stringWithFormat("%@%ld", args), "v3");
}

}  // namespace
}  // namespace plat
