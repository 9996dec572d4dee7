#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace plat {

// -[NSString boolValue]: skip leading whitespace; Y/y/T/t is true; otherwise skip one sign
// and any zeros, and the answer is whether a digit 1-9 follows.
bool nsStringBoolValue(std::string_view s);

// -[NSString length]: the number of UTF-16 code units of a UTF-8 string.
std::size_t utf16Length(std::string_view utf8);

// Whether the bytes are well-formed UTF-8, as +[NSString stringWithUTF8String:] needs them to
// be (it answers nil otherwise).
bool isValidUTF8(std::string_view bytes);

// -[NSString stringByAppendingPathComponent:].
std::string stringByAppendingPathComponent(std::string_view base, std::string_view component);

// NSComparisonResult.
enum class ComparisonResult { Ascending = -1, Same = 0, Descending = 1 };

// NSStringCompareOptions values used by the bundle.
enum CompareOptions : unsigned {
    NSCaseInsensitiveSearch = 1,
    NSLiteralSearch = 2,
    NSRegularExpressionSearch = 1024,
};

// -[NSString compare:] (options 0) and compare:options:. Orders by UTF-16 code units; without
// NSLiteralSearch, canonically equivalent spellings are equal (precomposed and decomposed
// letters). NSCaseInsensitiveSearch applies Unicode's simple case folding.
ComparisonResult compare(std::string_view a, std::string_view b, unsigned options = 0);

// stringByReplacingOccurrencesOfString:withString:options:range: over the whole string. With
// NSRegularExpressionSearch the target is a regular expression and the replacement a template
// of backslash escapes (group references are not modelled); otherwise both are literal.
std::string stringByReplacingOccurrences(std::string_view subject, std::string_view target,
                                         std::string_view replacement, unsigned options);

}  // namespace plat
