#include "platform/foundation/format.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <span>

#include "platform/foundation/strings.h"
#include "platform/foundation/utf8.h"

namespace plat {

namespace {

enum class Length { Default, Char, Short, Wide };

struct Conversion {
    std::string flags;
    int width = -1;
    int precision = -1;
    Length length = Length::Default;
};

// snprintf into a std::string; the format is built by us from validated pieces.
template <class T>
std::string printed(const std::string& cFormat, T value) {
    const int size = std::snprintf(nullptr, 0, cFormat.c_str(), value);
    if (size <= 0) return std::string();
    std::string out(static_cast<std::size_t>(size) + 1, '\0');
    std::snprintf(out.data(), out.size(), cFormat.c_str(), value);
    out.resize(static_cast<std::size_t>(size));
    return out;
}

std::string cFormat(const Conversion& c, std::string_view lengthAndConversion) {
    // Appended, not `"%" + c.flags`: GCC 12 at -O3 reports a false -Wrestrict for a literal
    // prepended to a string.
    std::string f(1, '%');
    f += c.flags;
    if (c.width >= 0) f += std::to_string(c.width);
    if (c.precision >= 0) {
        f += '.';
        f += std::to_string(c.precision);
    }
    f += lengthAndConversion;
    return f;
}

// The C value a conversion would have read: the Value's integer cut to the conversion's width.
long long signedArgument(const Value& v, Length length) {
    const std::int64_t i = v.integerValue();
    switch (length) {
        case Length::Char:
            return static_cast<std::int8_t>(i);
        case Length::Short:
            return static_cast<std::int16_t>(i);
        case Length::Default:
            return static_cast<std::int32_t>(i);
        case Length::Wide:
            return i;
    }
    return i;
}

unsigned long long unsignedArgument(const Value& v, Length length) {
    const std::uint64_t u = v.unsignedValue();
    switch (length) {
        case Length::Char:
            return static_cast<std::uint8_t>(u);
        case Length::Short:
            return static_cast<std::uint16_t>(u);
        case Length::Default:
            return static_cast<std::uint32_t>(u);
        case Length::Wide:
            return u;
    }
    return u;
}

// Cuts text to at most `units` UTF-16 units without splitting a character.
std::string truncated(const std::string& text, std::size_t units) {
    std::size_t end = 0, used = 0;
    while (end < text.size()) {
        std::size_t next = end + 1;
        while (next < text.size() && (static_cast<unsigned char>(text[next]) & 0xC0) == 0x80)
            ++next;
        const std::size_t width = utf16Length(std::string_view(text).substr(end, next - end));
        if (used + width > units) break;
        used += width;
        end = next;
    }
    return text.substr(0, end);
}

std::string padded(std::string text, const Conversion& c) {
    if (c.precision >= 0) text = truncated(text, static_cast<std::size_t>(c.precision));
    const std::size_t length = utf16Length(text);
    if (c.width < 0 || length >= static_cast<std::size_t>(c.width)) return text;
    const std::string fill(static_cast<std::size_t>(c.width) - length, ' ');
    return c.flags.find('-') != std::string::npos ? text + fill : fill + text;
}

std::string characterText(const Value& v, bool unichar) {
    if (const std::string* s = v.asString()) {
        // A string argument gives its first character.
        std::size_t end = s->empty() ? 0 : 1;
        while (end < s->size() && (static_cast<unsigned char>((*s)[end]) & 0xC0) == 0x80)
            ++end;
        return s->substr(0, end);
    }
    std::string out;
    const std::int64_t code = v.integerValue();
    // %c reads a C char (taken as Latin-1), %C a unichar.
    appendUtf8(static_cast<char32_t>(unichar ? static_cast<std::uint16_t>(code)
                                             : static_cast<std::uint8_t>(code)),
               out);
    return out;
}

class Formatter {
  public:
    Formatter(std::string_view format, std::span<const Value> args)
        : format_(format), args_(args) {}

    std::string run() {
        while (at_ < format_.size()) {
            const char c = format_[at_];
            if (c != '%') {
                out_ += c;
                ++at_;
                continue;
            }
            conversion();
        }
        return std::move(out_);
    }

  private:
    const Value& argument(std::size_t index) const {
        static const Value nil;
        return index < args_.size() ? args_[index] : nil;
    }
    const Value& nextArgument() { return argument(next_++); }

    bool digit() const {
        return at_ < format_.size() && format_[at_] >= '0' && format_[at_] <= '9';
    }

    int number() {
        long long n = 0;
        while (digit()) {
            if (n < 1000000) n = n * 10 + (format_[at_] - '0');
            ++at_;
        }
        return static_cast<int>(n);
    }

    bool accept(char c) {
        if (at_ < format_.size() && format_[at_] == c) {
            ++at_;
            return true;
        }
        return false;
    }

    void conversion() {
        const std::size_t start = at_++;
        if (accept('%')) {
            out_ += '%';
            return;
        }
        // "%2$@": a 1-based argument position.
        std::size_t position = 0;
        if (digit()) {
            const std::size_t mark = at_;
            const int n = number();
            if (n > 0 && accept('$'))
                position = static_cast<std::size_t>(n);
            else
                at_ = mark;
        }
        const Conversion c = directive();
        if (at_ >= format_.size()) {
            out_.append(format_.substr(start));
            return;
        }
        const char kind = format_[at_++];
        // Unknown conversions (and %n, which would write through a pointer) are copied as
        // written and consume no argument.
        if (std::string_view("@diuxXoDUOfFeEgGaAscCp").find(kind) == std::string_view::npos) {
            out_.append(format_.substr(start, at_ - start));
            return;
        }
        out_ += converted(kind, position ? argument(position - 1) : nextArgument(), c);
    }

    // Flags, width, precision and length, as far as the format gives them.
    Conversion directive() {
        Conversion c;
        while (at_ < format_.size() &&
               std::string_view("-+ #0'").find(format_[at_]) != std::string_view::npos) {
            // The grouping flag "'" has no effect in the POSIX locale; leave it out.
            if (format_[at_] != '\'') c.flags += format_[at_];
            ++at_;
        }
        if (accept('*')) {
            const std::int64_t w = nextArgument().integerValue();
            if (w < 0) c.flags += '-';
            c.width = static_cast<int>(std::min<std::int64_t>(w < 0 ? -w : w, 1000000));
        } else if (digit()) {
            c.width = number();
        }
        if (accept('.')) {
            if (accept('*')) {
                const std::int64_t p = nextArgument().integerValue();
                c.precision = p < 0 ? -1 : static_cast<int>(std::min<std::int64_t>(p, 1000000));
            } else {
                c.precision = number();
            }
        }
        if (accept('h')) {
            c.length = accept('h') ? Length::Char : Length::Short;
        } else if (accept('l')) {
            accept('l');
            c.length = Length::Wide;
        } else if (accept('q') || accept('z') || accept('t') || accept('j')) {
            c.length = Length::Wide;
        } else {
            accept('L');
        }
        return c;
    }

    static std::string converted(char kind, const Value& v, const Conversion& c) {
        Conversion plain = c;
        plain.precision = -1;
        switch (kind) {
            case '@':
                return padded(v.description(), c);
            case 'd':
            case 'i':
                return printed(cFormat(c, "lld"), signedArgument(v, c.length));
            case 'u':
            case 'x':
            case 'X':
            case 'o':
                return printed(cFormat(c, std::string("ll") + kind), unsignedArgument(v, c.length));
            case 'D':
                return printed(cFormat(c, "lld"), signedArgument(v, Length::Wide));
            case 'U':
            case 'O':
                return printed(cFormat(c, std::string("ll") + static_cast<char>(kind + 32)),
                               unsignedArgument(v, Length::Wide));
            case 's':
                return padded(v.isString() ? *v.asString() : v.description(), c);
            case 'c':
            case 'C':
                return padded(characterText(v, kind == 'C' || c.length == Length::Wide), plain);
            case 'p': {
                const auto address = v.isObject()
                                         ? reinterpret_cast<std::uintptr_t>(v.asObject().get())
                                         : static_cast<std::uintptr_t>(v.unsignedValue());
                return padded("0x" + printed("%llx", static_cast<unsigned long long>(address)),
                              plain);
            }
            default:  // f F e E g G a A
                return printed(cFormat(c, std::string(1, kind)), v.doubleValue());
        }
    }

    std::string_view format_;
    std::span<const Value> args_;
    std::size_t at_ = 0;
    std::size_t next_ = 0;
    std::string out_;
};

}  // namespace

std::string stringWithFormat(std::string_view format, std::initializer_list<Value> args) {
    return Formatter(format, std::span<const Value>(args.begin(), args.size())).run();
}

std::string stringWithFormat(std::string_view format, const std::vector<Value>& args) {
    return Formatter(format, std::span<const Value>(args)).run();
}

}  // namespace plat
