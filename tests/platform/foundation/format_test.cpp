#include "platform/foundation/format.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <tuple>
#include <vector>

namespace plat {
namespace {

const auto n = [](std::int64_t i) { return Value::integer(i); };

TEST(StringWithFormat, ConvertsEachArgumentAsItsCTypeWould) {
    const Value big = Value::unsignedInteger(std::numeric_limits<std::uint64_t>::max());
    const std::tuple<const char*, std::vector<Value>, const char*> cases[] = {
        // Objects print their description, nil and missing ones "(null)"; widths count UTF-16.
        {"%@ %@ %@", {"/var/a.png", Value::real(0.5), Value::boolean(true)}, "/var/a.png 0.5 1"},
        {"[%@|%@]", {Value()}, "[(null)|(null)]"},
        {"[%-6@][%6@]", {"ab", "\u00e9\U0001F600"}, "[ab    ][   \u00e9\U0001F600]"},
        // Integers are read at the width of their C type; flags and widths as printf's.
        {"%d %ld %lu %ld",
         {n(-42), n(std::numeric_limits<std::int64_t>::max()), big, big},
         "-42 9223372036854775807 18446744073709551615 -1"},
        {"%d %x %u %llX",
         {n((std::int64_t{1} << 32) + 5), n(-1), n(-1), n(-1)},
         "5 ffffffff 4294967295 FFFFFFFFFFFFFFFF"},
        {"[%5d][%-5d][%05d][%+d][%*d]",
         {n(42), n(42), n(42), n(42), n(4), n(7)},
         "[   42][42   ][00042][+42][   7]"},
        {"%d %ld|%d", {"12", Value::real(-3.9)}, "12 -3|0"},
        {"%.2f|%8.3f|%g|%e",
         {Value::real(3.14159), n(2), Value::real(1e-4), Value::real(12345.678)},
         "3.14|   2.000|0.0001|1.234568e+04"},
        {"%s|%.3s|%c%C|100%%",
         {"h\u00e9llo", "abcdef", "Zed", n(0x20AC)},
         "h\u00e9llo|abc|Z\u20ac|100%"},
        {"%2$@ %1$@ %1$@ %3$@", {"a", "b"}, "b a a (null)"},
        // Text, UTF-8 (even malformed) and unknown or unfinished conversions pass through.
        {"\u00a9 %ld Norvale, %k %n%@", {n(2024), "x"}, "\u00a9 2024 Norvale, %k %nx"},
        {"\xff%@\xfe ends %5", {"\xc3"}, "\xff\xc3\xfe ends %5"},
        {"100%", {}, "100%"},
    };
    for (const auto& [format, args, expected] : cases)
        EXPECT_EQ(stringWithFormat(format, args), expected) << format;
}

}  // namespace
}  // namespace plat
