#include "platform/foundation/strings.h"

#include <algorithm>
#include <cstdint>
#include <regex>
#include <utility>

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

std::u32string decode(std::string_view s) {
    std::u32string out;
    out.reserve(s.size());
    for (std::size_t i = 0; i < s.size();)
        out += decodeOne(s, i);
    return out;
}

void encode(char32_t c, std::string& out) {
    if (isEscapedByte(c))
        out += static_cast<char>(c - kEscapeBase);
    else
        appendUtf8(c, out);
}

template <class Chars>
std::string encode(const Chars& chars) {
    std::string out;
    out.reserve(chars.size());
    for (auto c : chars)
        encode(static_cast<char32_t>(c), out);
    return out;
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

// --- canonical decomposition -----------------------------------------------------------------

// Canonical decompositions of the precomposed letters of Latin-1 Supplement (U+00C0-U+00FF)
// and Latin Extended-A (U+0100-U+017F): base letter and the low byte of one combining mark in
// U+03xx. A zero mark means the letter does not decompose (Æ, Ø, Đ, Ł, Œ, ...; the ligatures Ĳ,
// Ŀ, ŉ, ſ have compatibility mappings only, which compare: ignores). Letters outside these two
// blocks (Greek with tonos, Vietnamese, Hangul...) are compared as they are; that is the
// coverage limit of our equivalence.
struct Decomposition {
    char base;
    std::uint8_t mark;
};

constexpr std::uint8_t kGrave = 0x00, kAcute = 0x01, kCircumflex = 0x02, kTilde = 0x03,
                       kMacron = 0x04, kBreve = 0x06, kDotAbove = 0x07, kDiaeresis = 0x08,
                       kRing = 0x0A, kDoubleAcute = 0x0B, kCaron = 0x0C, kCedilla = 0x27,
                       kOgonek = 0x28;
constexpr Decomposition kNone = {0, 0};

// U+00C0..U+00DF; the lower-case row U+00E0..U+00FF is the same with lower-case bases.
// clang-format off
constexpr Decomposition kLatin1[32] = {
    {'A', kGrave}, {'A', kAcute}, {'A', kCircumflex}, {'A', kTilde},
    {'A', kDiaeresis}, {'A', kRing}, kNone, {'C', kCedilla},
    {'E', kGrave}, {'E', kAcute}, {'E', kCircumflex}, {'E', kDiaeresis},
    {'I', kGrave}, {'I', kAcute}, {'I', kCircumflex}, {'I', kDiaeresis},
    kNone, {'N', kTilde}, {'O', kGrave}, {'O', kAcute},
    {'O', kCircumflex}, {'O', kTilde}, {'O', kDiaeresis}, kNone,
    kNone, {'U', kGrave}, {'U', kAcute}, {'U', kCircumflex},
    {'U', kDiaeresis}, {'Y', kAcute}, kNone, kNone,
};
// clang-format on

// U+0100..U+017F.
// clang-format off
constexpr Decomposition kLatinExtendedA[128] = {
    {'A', kMacron}, {'a', kMacron}, {'A', kBreve}, {'a', kBreve},
    {'A', kOgonek}, {'a', kOgonek}, {'C', kAcute}, {'c', kAcute},
    {'C', kCircumflex}, {'c', kCircumflex}, {'C', kDotAbove}, {'c', kDotAbove},
    {'C', kCaron}, {'c', kCaron}, {'D', kCaron}, {'d', kCaron},
    kNone, kNone, {'E', kMacron}, {'e', kMacron},
    {'E', kBreve}, {'e', kBreve}, {'E', kDotAbove}, {'e', kDotAbove},
    {'E', kOgonek}, {'e', kOgonek}, {'E', kCaron}, {'e', kCaron},
    {'G', kCircumflex}, {'g', kCircumflex}, {'G', kBreve}, {'g', kBreve},
    {'G', kDotAbove}, {'g', kDotAbove}, {'G', kCedilla}, {'g', kCedilla},
    {'H', kCircumflex}, {'h', kCircumflex}, kNone, kNone,
    {'I', kTilde}, {'i', kTilde}, {'I', kMacron}, {'i', kMacron},
    {'I', kBreve}, {'i', kBreve}, {'I', kOgonek}, {'i', kOgonek},
    {'I', kDotAbove}, kNone, kNone, kNone,
    {'J', kCircumflex}, {'j', kCircumflex}, {'K', kCedilla}, {'k', kCedilla},
    kNone, {'L', kAcute}, {'l', kAcute}, {'L', kCedilla},
    {'l', kCedilla}, {'L', kCaron}, {'l', kCaron}, kNone,
    kNone, kNone, kNone, {'N', kAcute},
    {'n', kAcute}, {'N', kCedilla}, {'n', kCedilla}, {'N', kCaron},
    {'n', kCaron}, kNone, kNone, kNone,
    {'O', kMacron}, {'o', kMacron}, {'O', kBreve}, {'o', kBreve},
    {'O', kDoubleAcute}, {'o', kDoubleAcute}, kNone, kNone,
    {'R', kAcute}, {'r', kAcute}, {'R', kCedilla}, {'r', kCedilla},
    {'R', kCaron}, {'r', kCaron}, {'S', kAcute}, {'s', kAcute},
    {'S', kCircumflex}, {'s', kCircumflex}, {'S', kCedilla}, {'s', kCedilla},
    {'S', kCaron}, {'s', kCaron}, {'T', kCedilla}, {'t', kCedilla},
    {'T', kCaron}, {'t', kCaron}, kNone, kNone,
    {'U', kTilde}, {'u', kTilde}, {'U', kMacron}, {'u', kMacron},
    {'U', kBreve}, {'u', kBreve}, {'U', kRing}, {'u', kRing},
    {'U', kDoubleAcute}, {'u', kDoubleAcute}, {'U', kOgonek}, {'u', kOgonek},
    {'W', kCircumflex}, {'w', kCircumflex}, {'Y', kCircumflex}, {'y', kCircumflex},
    {'Y', kDiaeresis}, {'Z', kAcute}, {'z', kAcute}, {'Z', kDotAbove},
    {'z', kDotAbove}, {'Z', kCaron}, {'z', kCaron}, kNone,
};
// clang-format on

Decomposition decomposition(char32_t c) {
    if (c == 0xFF) return {'y', kDiaeresis};
    if (c >= 0xC0 && c < 0xE0) return kLatin1[c - 0xC0];
    if (c >= 0xE0 && c < 0xFF) {
        Decomposition d = kLatin1[c - 0xE0];
        if (d.base) d.base = static_cast<char>(d.base - 'A' + 'a');
        return d;
    }
    if (c >= 0x100 && c < 0x180) return kLatinExtendedA[c - 0x100];
    return kNone;
}

// Canonical combining classes of Combining Diacritical Marks (U+0300-U+036F), the marks our
// decompositions produce and the ones typed after plain letters. Marks elsewhere count as
// class 0 and are never reordered.
int combiningClass(char32_t c) {
    if (c < 0x300 || c > 0x36F) return 0;
    if (c <= 0x314) return 230;
    if (c == 0x315 || c == 0x31A || c == 0x358) return 232;
    if (c == 0x31B) return 216;
    if ((c >= 0x316 && c <= 0x319) || (c >= 0x31C && c <= 0x320) || (c >= 0x323 && c <= 0x326) ||
        (c >= 0x329 && c <= 0x333) || (c >= 0x339 && c <= 0x33C) || (c >= 0x347 && c <= 0x349) ||
        c == 0x34D || c == 0x34E || (c >= 0x353 && c <= 0x356) || c == 0x359 || c == 0x35A)
        return 220;
    if (c == 0x321 || c == 0x322 || c == 0x327 || c == 0x328) return 202;
    if (c >= 0x334 && c <= 0x338) return 1;
    if (c == 0x345) return 240;
    if (c == 0x34F) return 0;
    if (c == 0x35C || c == 0x35F || c == 0x362) return 233;
    if (c == 0x35D || c == 0x35E || c == 0x360 || c == 0x361) return 234;
    return 230;
}

std::u32string canonicalDecomposition(const std::u32string& text) {
    std::u32string out;
    out.reserve(text.size() + text.size() / 2);
    for (char32_t c : text) {
        const Decomposition d = decomposition(c);
        if (d.base) {
            out += static_cast<char32_t>(d.base);
            out += static_cast<char32_t>(0x300 + d.mark);
        } else {
            out += c;
        }
    }
    // Canonical ordering: within each run of marks, a stable sort by combining class, so
    // "e" + dot below + acute and "é" + dot below come out the same.
    for (std::size_t i = 0; i < out.size();) {
        if (combiningClass(out[i]) == 0) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < out.size() && combiningClass(out[end]) != 0)
            ++end;
        std::stable_sort(
            out.begin() + static_cast<std::ptrdiff_t>(i),
            out.begin() + static_cast<std::ptrdiff_t>(end),
            [](char32_t a, char32_t b) { return combiningClass(a) < combiningClass(b); });
        i = end;
    }
    return out;
}

// --- case folding ----------------------------------------------------------------------------

// Greek letters outside the contiguous capital ranges, with their folded forms.
constexpr std::pair<char32_t, char32_t> kGreekFolds[] = {
    {0x370, 0x371}, {0x372, 0x373}, {0x376, 0x377}, {0x37F, 0x3F3}, {0x3CF, 0x3D7},
    {0x3D0, 0x3B2}, {0x3D1, 0x3B8}, {0x3D5, 0x3C6}, {0x3D6, 0x3C0}, {0x3F0, 0x3BA},
    {0x3F1, 0x3C1}, {0x3F4, 0x3B8}, {0x3F5, 0x3B5}, {0x3F7, 0x3F8}, {0x3F9, 0x3F2},
    {0x3FA, 0x3FB}, {0x3FD, 0x37B}, {0x3FE, 0x37C}, {0x3FF, 0x37D}};

// Simple (one-to-one) case folding toward lower case for Latin-1, Latin Extended-A, Greek and
// Cyrillic. Full folding is not applied: "ß" stays itself and does not equal "ss", the answer
// of the peer implementation we could run; no Apple data point says otherwise.
char32_t foldCase(char32_t c) {
    if (c < 0x80) return (c >= 'A' && c <= 'Z') ? c + 0x20 : c;
    if (c == 0xB5) return 0x3BC;  // micro sign folds to Greek mu
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 0x20;
    if (c >= 0x100 && c <= 0x17F) {
        if (c == 0x130 || c == 0x131 || c == 0x138 || c == 0x149) return c;
        if (c == 0x178) return 0xFF;
        if (c == 0x17F) return 's';
        const bool oddIsUpper = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
        return ((c & 1) == (oddIsUpper ? 1u : 0u)) ? c + 1 : c;
    }
    if (c >= 0x370 && c <= 0x3FF) {
        if (c == 0x386) return 0x3AC;
        if (c >= 0x388 && c <= 0x38A) return c + 0x25;
        if (c == 0x38C) return 0x3CC;
        if (c == 0x38E || c == 0x38F) return c + 0x3F;
        if ((c >= 0x391 && c <= 0x3A1) || (c >= 0x3A3 && c <= 0x3AB)) return c + 0x20;
        if (c == 0x3C2) return 0x3C3;  // final sigma
        if (c >= 0x3D8 && c <= 0x3EF) return (c & 1) ? c : c + 1;
        for (const auto& [upper, lower] : kGreekFolds)
            if (c == upper) return lower;
        return c;
    }
    if (c >= 0x400 && c <= 0x52F) {
        if (c <= 0x40F) return c + 0x50;
        if (c <= 0x42F) return c + 0x20;
        if (c == 0x4C0) return 0x4CF;
        if (c >= 0x4C1 && c <= 0x4CE) return (c & 1) ? c + 1 : c;
        if ((c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0))
            return (c & 1) ? c : c + 1;
        return c;
    }
    return c;
}

// The UTF-16 code units that compare: orders by, after the transformations its options ask for.
std::u16string comparisonUnits(std::string_view s, unsigned options) {
    std::u32string chars = decode(s);
    if (!(options & NSLiteralSearch)) chars = canonicalDecomposition(chars);
    std::u16string units;
    units.reserve(chars.size());
    for (char32_t c : chars) {
        if (options & NSCaseInsensitiveSearch) c = foldCase(c);
        if (c >= 0x10000) {
            c -= 0x10000;
            units += static_cast<char16_t>(0xD800 + (c >> 10));
            units += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        } else {
            units += static_cast<char16_t>(c);
        }
    }
    return units;
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

// Matching runs on code points (wchar_t is UTF-32 here), so "." takes a whole character as ICU
// does, and case-insensitive matching uses the same folding as compare:.
static_assert(sizeof(wchar_t) == 4, "regular expressions assume UTF-32 wchar_t");

struct FoldingTraits : std::regex_traits<wchar_t> {
    wchar_t translate_nocase(wchar_t c) const {
        return static_cast<wchar_t>(foldCase(static_cast<char32_t>(c)));
    }
};

using WideRegex = std::basic_regex<wchar_t, FoldingTraits>;
using WideIterator = std::regex_iterator<std::wstring::const_iterator, wchar_t, FoldingTraits>;

std::wstring widen(std::string_view s) {
    const std::u32string chars = decode(s);
    return std::wstring(chars.begin(), chars.end());
}

// Expands an NSRegularExpression template for one match. A backslash takes the next character
// literally (a trailing lone backslash disappears). "$" followed by digits names a group; it
// reads at most as many digits as the group count has, so with 3 groups "$12" is group 1 and a
// literal "2". A group that does not exist or did not take part inserts nothing. A "$" with no
// digit after it is literal.
void expandTemplate(const std::wstring& templ, const std::wsmatch& match, std::wstring& out) {
    const std::size_t groups = match.size() - 1;
    std::size_t maxDigits = 1;
    for (std::size_t magnitude = 10; magnitude < groups + 1; magnitude *= 10)
        ++maxDigits;
    for (std::size_t i = 0; i < templ.size();) {
        const wchar_t c = templ[i];
        if (c == L'\\') {
            if (i + 1 < templ.size()) out += templ[i + 1];
            i += 2;
            continue;
        }
        if (c == L'$') {
            std::size_t j = i + 1, group = 0;
            while (j < templ.size() && j - (i + 1) < maxDigits && templ[j] >= L'0' &&
                   templ[j] <= L'9') {
                group = group * 10 + static_cast<std::size_t>(templ[j] - L'0');
                ++j;
            }
            if (j > i + 1) {
                if (group <= groups && match[group].matched) out += match[group].str();
                i = j;
                continue;
            }
        }
        out += c;
        ++i;
    }
}

std::string replaceRegex(std::string_view subject, std::string_view pattern, std::string_view templ,
                         bool caseInsensitive) {
    try {
        auto flags = std::regex_constants::ECMAScript;
        if (caseInsensitive) flags |= std::regex_constants::icase;
        const WideRegex regex(widen(pattern), flags);
        const std::wstring text = widen(subject);
        const std::wstring wideTemplate = widen(templ);
        std::wstring out;
        auto copied = text.cbegin();
        for (WideIterator it(text.cbegin(), text.cend(), regex), end; it != end; ++it) {
            const auto& match = *it;
            out.append(copied, match[0].first);
            copied = match[0].second;
            expandTemplate(wideTemplate, match, out);
        }
        out.append(copied, text.cend());
        return encode(out);
    } catch (const std::regex_error&) {
        // NSRegularExpression returns nil for a pattern it cannot compile, and messaging nil
        // leaves the receiver as it was.
        return std::string(subject);
    }
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
    const std::u16string left = comparisonUnits(a, options);
    const std::u16string right = comparisonUnits(b, options);
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
