#include "platform/foundation/strings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "platform/foundation/format.h"

namespace plat {
namespace {

using R = ComparisonResult;

// A row of each outcome among the published data points; then space separators and tab (skipped)
// against line breaks (not), and malformed UTF-8 (an ordinary non-digit).
TEST(NSStringBoolValue, AgreesWithEachKindOfDataPoint) {
    const std::vector<std::string> yes = {
        " 1 ",  "t", "Y", "ya", "1a", "+000009", "-01", " +111", "\t1", "\u00A0y", "\u3000\u2003 7",
        "1\xff"};
    const std::vector<std::string> no = {"",        " ",      "a1",     "false",  "-00000", "+y",
                                         "0t",      "++",     "+",      " + 111", "000-1",  "\n1",
                                         "\r\nYES", "\u00A0", "\xff+1", " \xc3"};
    for (const auto& [strings, expected] : {std::pair{yes, true}, {no, false}})
        for (const auto& s : strings)
            EXPECT_EQ(nsStringBoolValue(s), expected) << '"' << s << '"';
}

TEST(Utf16Length, CountsSurrogatePairsAsTwoAndEachMalformedByteAsOne) {
    EXPECT_EQ(utf16Length("\U0001F600\xe2\x82"), 4u);    // a truncated sequence
    EXPECT_EQ(utf16Length("\xed\xa0\x80\xc0\xaf"), 5u);  // an encoded surrogate, an overlong "/"
}

TEST(AppendingPathComponent, JoinsAndStandardisesSlashes) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"/tmp", "scratch.tiff", "/tmp/scratch.tiff"},
        {"/", "scratch.tiff", "/scratch.tiff"},
        {"/tmp/", "", "/tmp"},
        {"hello/", "/world", "hello/world"},
        {"a//b", "x//y", "a/b/x/y"},
        {"", "world/", "world"},
        {"//", "/", "/"},
        {"", "", ""}};
    for (const auto& [path, component, joined] : cases)
        EXPECT_EQ(stringByAppendingPathComponent(path, component), joined) << path << component;
}

TEST(Compare, OrdersByUtf16UnitsUpToCanonicalEquivalenceFoldingCaseOnRequest) {
    constexpr unsigned lit = NSLiteralSearch, ci = NSCaseInsensitiveSearch;
    const std::tuple<const char*, const char*, unsigned, R> cases[] = {
        {"B", "a", 0, R::Ascending},
        {"Z", "_", 0, R::Ascending},
        {"ab", "a", 0, R::Descending},
        // U+1F600 is a surrogate pair (D83D...): below U+FF21 in UTF-16, above it by code point.
        {"\U0001F600", "\uFF21", 0, R::Ascending},
        {"\U0001F600", "\uFF21", lit, R::Ascending},
        // Precomposed letters equal their decomposed spellings (marks put in canonical order)
        // in both blocks we cover; the base letter decides against other letters. Not literally.
        {"\u00c5ngstr\u00f6m", "A\u030Angstro\u0308m", 0, R::Same},
        {"\u0151\u0130\u017e", "o\u030BI\u0307z\u030C", 0, R::Same},
        {"\u00e9\u0323", "e\u0323\u0301", 0, R::Same},
        {"\u00e9", "f", 0, R::Ascending},
        {"\u00e9", "e", 0, R::Descending},
        {"\u00e9", "e\u0301", lit, R::Descending},
        // Case-insensitive folds toward lower case, beyond ASCII too; with the
        // literal option too, case folds but composition is left alone.
        {"_", "A", ci, R::Ascending},
        {"\u00c9COLE", "e\u0301cole", ci, R::Same},
        {"\u00c6\u00d8\u0141\u0178", "\u00e6\u00f8\u0142\u00ff", ci, R::Same},
        {"stra\u00dfe", "STRASSE", ci, R::Descending},
        {"\u00c9", "\u00e9", ci | lit, R::Same},
        {"\u00c9", "e\u0301", ci | lit, R::Descending},
        // Malformed UTF-8 is ordered without crashing.
        {"\xff", "\xfe", 0, R::Descending},
        {"x\xe2\x82", "x", 0, R::Descending},
    };
    for (const auto& [a, b, options, expected] : cases)
        EXPECT_EQ(compare(a, b, options), expected) << a << " vs " << b << " options " << options;
}

TEST(ReplaceOccurrences, LiteralOrByRegularExpressionWithBackslashEscapes) {
    constexpr unsigned re = NSRegularExpressionSearch, ci = NSCaseInsensitiveSearch;
    const std::tuple<const char*, const char*, const char*, unsigned, const char*> cases[] = {
        // Literal: left to right without overlap, no template meaning.
        {"aaaaa", "aa", "b", 0, "bba"},
        {"$1 \\", "$1 \\", "ok", 0, "ok"},
        {"Hi HI hi", "hi", "yo", ci, "yo yo yo"},
        // A backslash takes the next character as it is ("\'" a bare quote, "\\" one
        // backslash); a trailing one goes, and "$" is plain text.
        {"it's", "'", "\\'", re, "it's"},
        {"it's", "'", "\\\\'", re, "it\\'s"},
        {"x", "(x)", "$1\\$y\\", re, "$1$y"},
        // Empty matches are replaced at every position; "." takes a whole character.
        {"abc", "x*", "-", re, "-a-b-c-"},
        {"\u00e9\U0001F600", ".", "-", re, "--"},
        {"a\xffz", "z", "+", re, "a\xff+"},
    };
    for (const auto& [subject, target, replacement, options, expected] : cases)
        EXPECT_EQ(stringByReplacingOccurrences(subject, target, replacement, options), expected)
            << subject << " / " << target << " / " << replacement;
    // An unusable pattern leaves the subject alone.
    for (const char* pattern : {"(", "[a-", "a{2,1}", "(?<=a+)b", "\\", "*"})
        EXPECT_EQ(stringByReplacingOccurrences("aab\xff", pattern, "x", re), "aab\xff") << pattern;
}

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
