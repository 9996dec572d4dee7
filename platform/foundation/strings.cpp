#include "platform/foundation/strings.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

#include <unicode/normalizer2.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "platform/foundation/utf8.h"

namespace plat {

namespace {

// NSString holds UTF-16; we hold UTF-8 and decode on demand. A byte that does not start a
// well-formed sequence stands for one unit of its own, 0xDC00 + byte (a lone low surrogate that
// well-formed text can never produce), so malformed input never crashes, distinct inputs stay
// distinct, and re-encoding gives back the original bytes.
constexpr char32_t kEscapeBase = 0xDC00;

bool isEscapedByte(char32_t c) {
    return c >= kEscapeBase + 0x80 && c <= kEscapeBase + 0xFF;
}

bool isContinuation(std::string_view s, std::size_t i) {
    return i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80;
}

// Decodes the character at s[i] and advances i past it.
char32_t decodeOne(std::string_view s, std::size_t& i) {
    const unsigned char lead = static_cast<unsigned char>(s[i]);
    if (lead < 0x80) {
        ++i;
        return lead;
    }
    std::size_t length = 0;
    char32_t cp = 0;
    unsigned char low = 0x80, high = 0xBF;  // bounds of the second byte (rejects overlongs)
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        cp = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        cp = lead & 0x0F;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;  // no encoded surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        cp = lead & 0x07;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;  // nothing above U+10FFFF
    }
    bool ok = length != 0 && i + length <= s.size();
    if (ok) {
        const unsigned char second = static_cast<unsigned char>(s[i + 1]);
        ok = second >= low && second <= high;
        for (std::size_t k = 2; ok && k < length; ++k)
            ok = isContinuation(s, i + k);
    }
    if (!ok) {
        ++i;
        return kEscapeBase + lead;
    }
    for (std::size_t k = 1; k < length; ++k)
        cp = (cp << 6) | (static_cast<unsigned char>(s[i + k]) & 0x3F);
    i += length;
    return cp;
}

void encode(char32_t c, std::string& out) {
    if (isEscapedByte(c))
        out += static_cast<char>(c - kEscapeBase);
    else
        appendUtf8(c, out);
}

// --- boolValue -----------------------------------------------------------------------------

// NSCharacterSet's whitespaceCharacterSet: Unicode general category Zs plus tab. Line breaks
// (\n, \r, \v, \f, U+0085, U+2028/2029) are deliberately not skipped: they belong to the
// newline set, and "whitespace" in NSString's documentation names the narrower set. A value
// that starts with a newline therefore reads as NO.
bool isWhitespace(char32_t c) {
    return c == 0x09 || c == 0x20 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) ||
           c == 0x202F || c == 0x205F || c == 0x3000;
}

// --- comparing -------------------------------------------------------------------------------

// NSString text as ICU holds it: UTF-16, with each escaped byte kept as its lone surrogate so that
// malformed input still compares and matches deterministically.
icu::UnicodeString toUnicode(std::string_view s) {
    icu::UnicodeString text;
    for (std::size_t i = 0; i < s.size();)
        text.append(static_cast<UChar32>(decodeOne(s, i)));
    return text;
}

std::string fromUnicode(const icu::UnicodeString& text) {
    std::string out;
    out.reserve(static_cast<std::size_t>(text.length()));
    for (int32_t i = 0; i < text.length();) {
        const UChar32 c = text.char32At(i);
        encode(static_cast<char32_t>(c), out);
        i += U16_LENGTH(c);
    }
    return out;
}

// The UTF-16 code units that compare: orders by, after the transformations its options ask for:
// canonical decomposition unless the search is literal, then simple (one-to-one) case folding,
// so "ß" stays itself and does not equal "ss".
icu::UnicodeString comparisonUnits(std::string_view s, unsigned options) {
    icu::UnicodeString text = toUnicode(s);
    if (!(options & NSLiteralSearch)) {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
        if (U_SUCCESS(status)) {
            icu::UnicodeString decomposed = nfd->normalize(text, status);
            if (U_SUCCESS(status)) text = std::move(decomposed);
        }
    }
    if (options & NSCaseInsensitiveSearch) {
        icu::UnicodeString folded;
        for (int32_t i = 0; i < text.length();) {
            const UChar32 c = text.char32At(i);
            folded.append(u_foldCase(c, U_FOLD_CASE_DEFAULT));
            i += U16_LENGTH(c);
        }
        text = std::move(folded);
    }
    return text;
}

// --- replacing -------------------------------------------------------------------------------

char asciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 0x20) : c;
}

// Left to right, non-overlapping. The search is on bytes (so always on whole characters of
// well-formed UTF-8); the case-insensitive option folds ASCII letters only here.
std::string replaceLiteral(std::string_view subject, std::string_view target,
                           std::string_view replacement, bool caseInsensitive) {
    if (target.empty() || target.size() > subject.size()) return std::string(subject);
    auto same = [caseInsensitive](char a, char b) {
        return caseInsensitive ? asciiLower(a) == asciiLower(b) : a == b;
    };
    std::string out;
    std::size_t i = 0;
    while (i < subject.size()) {
        if (i + target.size() <= subject.size() &&
            std::equal(target.begin(), target.end(),
                       subject.begin() + static_cast<std::ptrdiff_t>(i), same)) {
            out += replacement;
            i += target.size();
        } else {
            out += subject[i++];
        }
    }
    return out;
}

// Expands an NSRegularExpression template: a backslash takes the next character literally (a
// trailing lone backslash disappears). Group references ("$1") are not modelled, as the
// bundle's one template only escapes a quote; a "$" is copied as written.
void expandTemplate(const icu::UnicodeString& templ, icu::UnicodeString& out) {
    for (int32_t i = 0; i < templ.length(); ++i) {
        if (templ.charAt(i) == u'\\' && ++i == templ.length()) break;
        out.append(templ.charAt(i));
    }
}

std::string replaceRegex(std::string_view subject, std::string_view pattern, std::string_view templ,
                         bool caseInsensitive) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    const uint32_t flags = caseInsensitive ? UREGEX_CASE_INSENSITIVE : 0;
    std::unique_ptr<icu::RegexPattern> regex(
        icu::RegexPattern::compile(toUnicode(pattern), flags, parseError, status));
    // NSRegularExpression returns nil for a pattern it cannot compile, and messaging nil leaves
    // the receiver as it was.
    if (U_FAILURE(status) || !regex) return std::string(subject);
    const icu::UnicodeString text = toUnicode(subject);
    const icu::UnicodeString wideTemplate = toUnicode(templ);
    std::unique_ptr<icu::RegexMatcher> matcher(regex->matcher(text, status));
    if (U_FAILURE(status) || !matcher) return std::string(subject);
    // A pattern that backtracks without end must not hang the Settings app.
    matcher->setTimeLimit(2000, status);
    icu::UnicodeString out;
    int32_t copied = 0;
    while (matcher->find(status) && U_SUCCESS(status)) {
        const int32_t begin = matcher->start(status), end = matcher->end(status);
        if (U_FAILURE(status)) break;
        out.append(text, copied, begin - copied);
        copied = end;
        expandTemplate(wideTemplate, out);
    }
    // A match that ran out of ICU's time or stack limits leaves the receiver as it was, as a
    // failed replacement would.
    if (U_FAILURE(status)) return std::string(subject);
    out.append(text, copied, text.length() - copied);
    return fromUnicode(out);
}

}  // namespace

bool nsStringBoolValue(std::string_view s) {
    std::size_t i = 0;
    char32_t c = 0;
    auto next = [&]() -> bool {
        if (i >= s.size()) return false;
        c = decodeOne(s, i);
        return true;
    };
    bool more = next();
    while (more && isWhitespace(c))
        more = next();
    if (!more) return false;
    // Letters count only before any sign or zero: "+y" and "0t" are NO.
    if (c == 'Y' || c == 'y' || c == 'T' || c == 't') return true;
    if (c == '+' || c == '-') more = next();
    while (more && c == '0')
        more = next();
    return more && c >= '1' && c <= '9';
}

std::size_t utf16Length(std::string_view utf8) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < utf8.size();)
        length += decodeOne(utf8, i) >= 0x10000 ? 2 : 1;
    return length;
}

bool isValidUTF8(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size();)
        if (isEscapedByte(decodeOne(bytes, i))) return false;
    return true;
}

std::string stringByAppendingPathComponent(std::string_view base, std::string_view component) {
    std::string joined(base);
    if (!component.empty()) {
        if (!joined.empty()) joined += '/';
        joined += component;
    }
    // Paths come out standardised: runs of "/" collapse to one and a trailing "/" goes, except
    // for the root itself. The receiver is normalised too ("a//b" + "c" is "a/b/c").
    std::string out;
    out.reserve(joined.size());
    for (char c : joined) {
        if (c == '/' && !out.empty() && out.back() == '/') continue;
        out += c;
    }
    if (out.size() > 1 && out.back() == '/') out.pop_back();
    return out;
}

ComparisonResult compare(std::string_view a, std::string_view b, unsigned options) {
    const icu::UnicodeString left = comparisonUnits(a, options);
    const icu::UnicodeString right = comparisonUnits(b, options);
    // Code-unit order, as NSString's non-localized compare: gives.
    const int order = left.compare(right);
    if (order < 0) return ComparisonResult::Ascending;
    if (order > 0) return ComparisonResult::Descending;
    return ComparisonResult::Same;
}

std::string stringByReplacingOccurrences(std::string_view subject, std::string_view target,
                                         std::string_view replacement, unsigned options) {
    const bool caseInsensitive = (options & NSCaseInsensitiveSearch) != 0;
    if (options & NSRegularExpressionSearch)
        return replaceRegex(subject, target, replacement, caseInsensitive);
    return replaceLiteral(subject, target, replacement, caseInsensitive);
}

}  // namespace plat
