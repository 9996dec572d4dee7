#include "app/commands/defaults_values.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <unordered_map>

namespace velto::app {

namespace {

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

// Seconds from 1970 to NSDate's reference date, 2001-01-01 00:00:00 UTC.
constexpr double kUnixToReference = 978307200.0;

// "2024-05-01 12:30:00 +0000" (what `read` prints), "2024-05-01T12:30:00Z" or "2024-05-01", in
// UTC.
std::optional<plat::Value> parseDate(const std::string& text) {
    std::tm tm{};
    int consumed = 0;
    const char* s = text.c_str();
    if (std::sscanf(s, "%4d-%2d-%2d%n", &tm.tm_year, &tm.tm_mon, &tm.tm_mday, &consumed) != 3)
        return std::nullopt;
    std::string rest = text.substr(static_cast<std::size_t>(consumed));
    if (!rest.empty()) {
        int used = 0;
        char separator = 0;
        if (std::sscanf(rest.c_str(), "%c%2d:%2d:%2d%n", &separator, &tm.tm_hour, &tm.tm_min,
                        &tm.tm_sec, &used) != 4 ||
            (separator != ' ' && separator != 'T'))
            return std::nullopt;
        rest = rest.substr(static_cast<std::size_t>(used));
        if (rest != "" && rest != "Z" && rest != " +0000") return std::nullopt;
    }
    if (tm.tm_mon < 1 || tm.tm_mon > 12 || tm.tm_mday < 1 || tm.tm_mday > 31 || tm.tm_hour > 23 ||
        tm.tm_min > 59 || tm.tm_sec > 60)
        return std::nullopt;
    tm.tm_year -= 1900;
    tm.tm_mon -= 1;
    return plat::Value::date(static_cast<double>(::timegm(&tm)) - kUnixToReference);
}

// Hexadecimal digits in pairs, spaces and a surrounding <...> allowed, as `read` prints data.
std::optional<plat::Value> parseHex(const std::string& text) {
    std::string digits;
    for (char c : text)
        if (c != ' ' && c != '<' && c != '>') digits += c;
    if (digits.size() % 2 != 0) return std::nullopt;
    plat::Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const std::string pair = digits.substr(i, 2);
        char* end = nullptr;
        const long byte = std::strtol(pair.c_str(), &end, 16);
        if (*end != '\0' || pair[0] == '-' || pair[0] == '+') return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    return plat::Value::data(std::move(bytes));
}

std::optional<plat::Value> parseTyped(const std::string& type, const std::string& text,
                                      std::string& error) {
    std::optional<plat::Value> value;
    if (type == "-bool" || type == "-boolean") {
        const std::string word = lower(text);
        if (word == "true" || word == "yes" || word == "1") return plat::Value::boolean(true);
        if (word == "false" || word == "no" || word == "0") return plat::Value::boolean(false);
        error = "'" + text + "' is not a boolean (true, false, yes, no, 1, 0)";
    } else if (type == "-int" || type == "-integer") {
        char* end = nullptr;
        errno = 0;
        const long long number = std::strtoll(text.c_str(), &end, 10);
        if (!text.empty() && *end == '\0' && errno != ERANGE) return plat::Value::integer(number);
        error = "'" + text + "' is not an integer";
    } else if (type == "-float") {
        char* end = nullptr;
        const double number = std::strtod(text.c_str(), &end);
        if (!text.empty() && *end == '\0') return plat::Value::real(number);
        error = "'" + text + "' is not a number";
    } else if (type == "-string") {
        return plat::Value::string(text);
    } else if (type == "-data") {
        if ((value = parseHex(text))) return value;
        error = "'" + text + "' is not hexadecimal data (pairs of digits, e.g. 0a1b)";
    } else if (type == "-date") {
        if ((value = parseDate(text))) return value;
        error = "'" + text + "' is not a date (YYYY-MM-DD[ HH:MM:SS +0000], UTC)";
    } else {
        error = "unknown type " + type +
                " (use -bool, -int, -float, -string, -data, -date, -array, -array-add, -dict or "
                "-dict-add)";
    }
    return std::nullopt;
}

// One ITEM at words[at]: a bare string, or a type and its value. Moves `at` past it.
std::optional<plat::Value> parseItem(const std::vector<std::string>& words, std::size_t& at,
                                     std::string& error) {
    const std::string& word = words[at++];
    if (word.empty() || word[0] != '-') return plat::Value::string(word);
    if (at == words.size()) {
        error = word + " needs a value";
        return std::nullopt;
    }
    return parseTyped(word, words[at++], error);
}

}  // namespace

std::optional<plat::Value> parseWrittenValue(const std::vector<std::string>& words,
                                             const plat::Value& stored, std::string& error) {
    if (words.empty()) {
        error = "expected a value, or a type and a value";
        return std::nullopt;
    }
    const std::string& type = words[0];
    const bool array = type == "-array" || type == "-array-add";
    const bool dictionary = type == "-dict" || type == "-dict-add";
    if (!array && !dictionary) {
        std::size_t at = 0;
        auto value = parseItem(words, at, error);
        if (value && at != words.size()) {
            error = "one value expected after " + words[0];
            return std::nullopt;
        }
        return value;
    }

    const bool add = type.ends_with("-add");
    if (add && !stored.isNil() && !(array ? stored.isArray() : stored.isDictionary())) {
        error = type + " adds to " + (array ? "an array" : "a dictionary") + ", not to a " +
                defaultsTypeName(stored);
        return std::nullopt;
    }
    // The stored container is a fresh read of the file, so it may be changed in place.
    plat::Value result = add && !stored.isNil() ? stored
                         : array                ? plat::Value::array()
                                                : plat::Value::dictionary();
    for (std::size_t at = 1; at < words.size();) {
        std::string key;
        if (dictionary) {
            key = words[at++];
            if (at == words.size()) {
                error = "the key " + key + " has no value";
                return std::nullopt;
            }
        }
        auto item = parseItem(words, at, error);
        if (!item) return std::nullopt;
        if (array)
            result.addObject(*item);
        else
            result.setValueForKey(key, *item);
    }
    return result;
}

std::string defaultsTypeName(const plat::Value& value) {
    using Type = plat::Value::Type;
    switch (value.type()) {
        case Type::Boolean:
            return "boolean";
        case Type::Integer:
            return "integer";
        case Type::Real:
            return "float";
        case Type::String:
            return "string";
        case Type::Data:
            return "data";
        case Type::Date:
            return "date";
        case Type::Array:
            return "array";
        case Type::Dictionary:
            return "dictionary";
        default:
            break;
    }
    return plat::typeName(value.type());
}

namespace {

// Counted once per container, however often it is shared; sums saturate past the limit.
std::uint64_t countPrinted(const plat::Value& value, std::uint64_t limit,
                           std::unordered_map<const void*, std::uint64_t>& counted) {
    const void* container = value.isArray()        ? static_cast<const void*>(value.asArray())
                            : value.isDictionary() ? static_cast<const void*>(value.asDictionary())
                                                   : nullptr;
    if (!container) return 1;
    if (auto known = counted.find(container); known != counted.end()) return known->second;
    counted[container] = limit + 1;  // a container that holds itself never ends
    std::uint64_t total = 1;
    const auto add = [&](const plat::Value& item) {
        total = std::min(limit + 1, total + countPrinted(item, limit, counted));
    };
    if (const plat::Array* items = value.asArray())
        for (const plat::Value& item : *items)
            add(item);
    if (const plat::Dictionary* entries = value.asDictionary())
        for (const auto& [key, item] : *entries)
            add(item);
    counted[container] = total;
    return total;
}

}  // namespace

std::uint64_t printedObjectCount(const plat::Value& value, std::uint64_t limit) {
    std::unordered_map<const void*, std::uint64_t> counted;
    return countPrinted(value, limit, counted);
}

}  // namespace velto::app
