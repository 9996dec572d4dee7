#include "platform/foundation/strings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace plat {
namespace {

using R = ComparisonResult;

TEST(NSStringBoolValue, AgreesWithEveryPublishedDataPoint) {
    const std::vector<std::string> yes = {" 1 ",  "t",    "Y",     "y+",  "ya", "1a",
                                          "true", "TRUE", "yes",   "YES", "1",  "+000009",
                                          "+3sb", "-01",  " +111", " 2 0"};
    const std::vector<std::string> no = {"",      " ",      "a",    "a1",   "ay",    "+0", "0",
                                         "0+",    "+y",     "+0y",  "0+y",  "false", "no", "<true>",
                                         "_true", "-00000", "+t",   "+",    "0t",    "++", "--1",
                                         "-+1",   " + 111", " 0 2", "000-1"};
    for (const auto& s : yes)
        EXPECT_TRUE(nsStringBoolValue(s)) << '"' << s << '"';
    for (const auto& s : no)
        EXPECT_FALSE(nsStringBoolValue(s)) << '"' << s << '"';
}

TEST(NSStringBoolValue, SkipsSpaceSeparatorsAndTabButNotLineBreaks) {
    EXPECT_TRUE(nsStringBoolValue("\t1"));
    EXPECT_TRUE(nsStringBoolValue("\u00A0y"));         // no-break space
    EXPECT_TRUE(nsStringBoolValue("\u3000\u2003 7"));  // ideographic space, em space
    EXPECT_FALSE(nsStringBoolValue("\n1"));
    EXPECT_FALSE(nsStringBoolValue("\r\nYES"));
    EXPECT_FALSE(nsStringBoolValue("\u00A0"));
    // Malformed UTF-8 is an ordinary non-digit, never a crash.
    EXPECT_FALSE(
        nsStringBoolValue("\xff"
                          "1"));
    EXPECT_FALSE(nsStringBoolValue(" \xc3"));
    EXPECT_TRUE(nsStringBoolValue("1\xff"));
}

TEST(Utf16Length, CountsCodeUnitsAndSurvivesMalformedInput) {
    EXPECT_EQ(utf16Length(""), 0u);
    EXPECT_EQ(utf16Length("abc"), 3u);
    EXPECT_EQ(utf16Length("\u00e9"), 1u);
    EXPECT_EQ(utf16Length("e\u0301"), 2u);
    EXPECT_EQ(utf16Length("\u20ac"), 1u);
    EXPECT_EQ(utf16Length("\U0001F600x"), 3u);  // a surrogate pair and one unit
    EXPECT_EQ(utf16Length("\xff\xfe"), 2u);
    EXPECT_EQ(utf16Length("\xe2\x82"), 2u);      // truncated sequence
    EXPECT_EQ(utf16Length("\xed\xa0\x80"), 3u);  // an encoded surrogate is not UTF-8
    EXPECT_EQ(utf16Length("\xc0\xaf"), 2u);      // nor is an overlong "/"
}

TEST(AppendingPathComponent, JoinsAndStandardisesSlashes) {
    EXPECT_EQ(stringByAppendingPathComponent("/tmp", "scratch.tiff"), "/tmp/scratch.tiff");
    EXPECT_EQ(stringByAppendingPathComponent("/tmp/", "scratch.tiff"), "/tmp/scratch.tiff");
    EXPECT_EQ(stringByAppendingPathComponent("/", "scratch.tiff"), "/scratch.tiff");
    EXPECT_EQ(stringByAppendingPathComponent("", "scratch.tiff"), "scratch.tiff");
    EXPECT_EQ(stringByAppendingPathComponent("/tmp/", ""), "/tmp");
    EXPECT_EQ(stringByAppendingPathComponent("hello/", "/world"), "hello/world");
    EXPECT_EQ(stringByAppendingPathComponent("a//b", "x//y"), "a/b/x/y");
    EXPECT_EQ(stringByAppendingPathComponent("", "world/"), "world");
    EXPECT_EQ(stringByAppendingPathComponent("/", ""), "/");
    EXPECT_EQ(stringByAppendingPathComponent("//", "/"), "/");
    EXPECT_EQ(stringByAppendingPathComponent("", ""), "");
    EXPECT_EQ(stringByAppendingPathComponent("/var/mobile", "Library/Preferences/a.plist"),
              "/var/mobile/Library/Preferences/a.plist");
}

TEST(Compare, DefaultOrdersByUtf16UnitsUpToCanonicalEquivalence) {
    EXPECT_EQ(compare("B", "a"), R::Ascending);
    EXPECT_EQ(compare("Z", "_"), R::Ascending);
    EXPECT_EQ(compare("_", "a"), R::Ascending);
    EXPECT_EQ(compare("ab", "a"), R::Descending);
    EXPECT_EQ(compare("Mail", "Mail"), R::Same);
    // U+1F600 is a surrogate pair (D83D...), below U+FF21 in UTF-16 though above it by code point.
    EXPECT_EQ(compare("\U0001F600", "\uFF21"), R::Ascending);
    EXPECT_EQ(compare("\uFF21", "\U0001F600"), R::Descending);
    // Precomposed letters equal their decomposed spellings, in both blocks we cover.
    EXPECT_EQ(compare("caf\u00e9", "cafe\u0301"), R::Same);
    EXPECT_EQ(compare("\u00c5ngstr\u00f6m", "A\u030Angstro\u0308m"), R::Same);
    EXPECT_EQ(compare("\u0151\u0130\u017e", "o\u030BI\u0307z\u030C"), R::Same);
    // Marks of different classes are put in canonical order before comparing.
    EXPECT_EQ(compare("\u00e9\u0323", "e\u0323\u0301"), R::Same);
    // The decomposed base letter decides against other letters: é sorts with e, before f.
    EXPECT_EQ(compare("\u00e9", "f"), R::Ascending);
    EXPECT_EQ(compare("\u00e9", "e"), R::Descending);
}

TEST(Compare, LiteralSearchIsPureCodeUnitOrder) {
    EXPECT_EQ(compare("\u00e9", "e\u0301", NSLiteralSearch), R::Descending);
    EXPECT_EQ(compare("e\u0301", "\u00e9", NSLiteralSearch), R::Ascending);
    EXPECT_EQ(compare("\u00e9", "f", NSLiteralSearch), R::Descending);
    EXPECT_EQ(compare("B", "a", NSLiteralSearch), R::Ascending);
    EXPECT_EQ(compare("\U0001F600", "\uFF21", NSLiteralSearch), R::Ascending);
}

TEST(Compare, CaseInsensitiveFoldsTowardLowerCase) {
    EXPECT_EQ(compare("a", "B", NSCaseInsensitiveSearch), R::Ascending);
    EXPECT_EQ(compare("_", "a", NSCaseInsensitiveSearch), R::Ascending);
    EXPECT_EQ(compare("_", "A", NSCaseInsensitiveSearch), R::Ascending);
    EXPECT_EQ(compare("Zebra", "apple", NSCaseInsensitiveSearch), R::Descending);
    EXPECT_EQ(compare("WhatsApp", "whatsapp", NSCaseInsensitiveSearch), R::Same);
    EXPECT_EQ(compare("\u00c9COLE", "e\u0301cole", NSCaseInsensitiveSearch), R::Same);
    EXPECT_EQ(
        compare("\u00c6\u00d8\u0141\u0178", "\u00e6\u00f8\u0142\u00ff", NSCaseInsensitiveSearch),
        R::Same);
    EXPECT_EQ(
        compare("\u03a9\u039c\u0386\u03a3", "\u03c9\u03bc\u03ac\u03c2", NSCaseInsensitiveSearch),
        R::Same);
    EXPECT_EQ(compare("\u041f\u0420\u0418\u0412\u0415\u0422 \u0401",
                      "\u043f\u0440\u0438\u0432\u0435\u0442 \u0451", NSCaseInsensitiveSearch),
              R::Same);
    EXPECT_NE(compare("stra\u00dfe", "STRASSE", NSCaseInsensitiveSearch), R::Same);
    // With the literal option too, case folds but composition is left alone.
    const unsigned both = NSCaseInsensitiveSearch | NSLiteralSearch;
    EXPECT_EQ(compare("\u00c9", "\u00e9", both), R::Same);
    EXPECT_NE(compare("\u00c9", "e\u0301", both), R::Same);
}

TEST(Compare, MalformedUtf8IsOrderedWithoutCrashing) {
    EXPECT_EQ(compare("\xff", "\xff"), R::Same);
    EXPECT_NE(compare("\xff", "\xfe"), R::Same);
    EXPECT_EQ(compare("a\xff", "a\xfe"), compare("a\xff", "a\xfe", NSCaseInsensitiveSearch));
    EXPECT_EQ(compare("a\xc3",
                      "a\xc3"
                      "b"),
              R::Ascending);
    EXPECT_EQ(compare("x\xe2\x82", "x"), R::Descending);
}

TEST(ReplaceOccurrences, LiteralReplacesLeftToRightWithoutOverlap) {
    EXPECT_EQ(stringByReplacingOccurrences("a.b.c", ".", "-", 0), "a-b-c");
    EXPECT_EQ(stringByReplacingOccurrences("aaaaa", "aa", "b", 0), "bba");
    EXPECT_EQ(stringByReplacingOccurrences("a", "a", "aa", 0), "aa");
    EXPECT_EQ(stringByReplacingOccurrences("abc", "", "x", 0), "abc");
    EXPECT_EQ(stringByReplacingOccurrences("ab", "abc", "x", 0), "ab");
    EXPECT_EQ(stringByReplacingOccurrences("abc", "a.c", "x", NSLiteralSearch), "abc");
    EXPECT_EQ(stringByReplacingOccurrences("$1 \\", "$1 \\", "ok", 0), "ok");
    EXPECT_EQ(stringByReplacingOccurrences("Hi HI hi", "hi", "yo", NSCaseInsensitiveSearch),
              "yo yo yo");
    EXPECT_EQ(stringByReplacingOccurrences("\xff-\xfe", "-", "+", 0), "\xff+\xfe");
}

TEST(ReplaceOccurrences, RegularExpressionExpandsTemplates) {
    constexpr unsigned re = NSRegularExpressionSearch;
    EXPECT_EQ(stringByReplacingOccurrences("John Smith", "(\\w+) (\\w+)", "$2, $1", re),
              "Smith, John");
    EXPECT_EQ(stringByReplacingOccurrences("ab", "b", "[$0$0]", re), "a[bb]");
    // A backslash takes the next character as it is: "\'" gives a bare quote, "\\" one
    // backslash, "\$1" the text $1.
    EXPECT_EQ(stringByReplacingOccurrences("it's", "'", "\\'", re), "it's");
    EXPECT_EQ(stringByReplacingOccurrences("it's", "'", "\\\\'", re), "it\\'s");
    EXPECT_EQ(stringByReplacingOccurrences("x", "(x)", "\\$1=$1", re), "$1=x");
    EXPECT_EQ(stringByReplacingOccurrences("x", "x", "y\\", re), "y");
    // "$" with no digit is literal; digits past what the group count needs are literal.
    EXPECT_EQ(stringByReplacingOccurrences("cost", "cost", "$ $x", re), "$ $x");
    EXPECT_EQ(stringByReplacingOccurrences("a", "(a)", "$12", re), "a2");
    EXPECT_EQ(
        stringByReplacingOccurrences("abcdefghij", "(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)", "$10$1", re),
        "ja");
    // Groups that do not exist or did not take part insert nothing.
    EXPECT_EQ(stringByReplacingOccurrences("a", "(a)", "<$5>", re), "<>");
    EXPECT_EQ(stringByReplacingOccurrences("b", "(a)|(b)", "[$1|$2]", re), "[|b]");
    // Empty matches are replaced at every position; "." takes a whole character.
    EXPECT_EQ(stringByReplacingOccurrences("abc", "x*", "-", re), "-a-b-c-");
    EXPECT_EQ(stringByReplacingOccurrences("\u00e9\U0001F600", ".", "<$0>", re),
              "<\u00e9><\U0001F600>");
    EXPECT_EQ(stringByReplacingOccurrences("\u00c9COLE \u00e9cole", "\u00e9cole", "x",
                                           re | NSCaseInsensitiveSearch),
              "x x");
    EXPECT_EQ(stringByReplacingOccurrences("\u00c9COLE", "\u00e9cole", "x", re), "\u00c9COLE");
}

TEST(ReplaceOccurrences, UnusablePatternLeavesTheSubjectAlone) {
    constexpr unsigned re = NSRegularExpressionSearch;
    for (const char* pattern : {"(", "[a-", "a{2,1}", "(?<=a)b", "\\", "*"}) {
        EXPECT_EQ(stringByReplacingOccurrences("aab\xff", pattern, "x", re), "aab\xff") << pattern;
    }
    EXPECT_EQ(stringByReplacingOccurrences("a\xff"
                                           "b",
                                           "b", "c", re),
              "a\xff"
              "c");
}

}  // namespace
}  // namespace plat
