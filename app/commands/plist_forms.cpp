#include "app/commands/plist_forms.h"

#include <cmath>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "app/render/json_output.h"

namespace velto::app {

namespace {

// Seconds between the Unix epoch and the reference date of property lists (2001-01-01).
constexpr double kReferenceEpoch = 978307200.0;

std::string dateText(double sinceReference) {
    const auto seconds = static_cast<std::time_t>(std::floor(sinceReference + kReferenceEpoch));
    std::tm utc{};
    if (!::gmtime_r(&seconds, &utc)) return "(bad date)";
    char text[40];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &utc);
    return text;
}

std::string dataText(const plat::Bytes& bytes) {
    std::string hex;
    char digits[3];
    for (std::size_t i = 0; i < bytes.size() && i < 32; ++i) {
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(bytes[i]));
        hex += digits;
    }
    return "{length = " + std::to_string(bytes.size()) + ", bytes = 0x" + hex +
           (bytes.size() > 32 ? "..." : "") + "}";
}

void print(const plat::Value& value, std::size_t depth, std::string& out) {
    using Type = plat::Value::Type;
    const std::string inner(2 * (depth + 1), ' ');
    switch (value.type()) {
        case Type::Dictionary:
            out += "{\n";
            for (const auto& [key, item] : *value.asDictionary()) {
                out += inner + jsonText(nlohmann::json(key)) + " => ";
                print(item, depth + 1, out);
                out += "\n";
            }
            out += std::string(2 * depth, ' ') + "}";
            return;
        case Type::Array: {
            out += "[\n";
            std::size_t index = 0;
            for (const plat::Value& item : *value.asArray()) {
                out += inner + std::to_string(index++) + " => ";
                print(item, depth + 1, out);
                out += "\n";
            }
            out += std::string(2 * depth, ' ') + "]";
            return;
        }
        case Type::String:
            out += jsonText(nlohmann::json(value.str()));
            return;
        case Type::Boolean:
            out += value.boolValue() ? "true" : "false";
            return;
        case Type::Data:
            out += dataText(*value.asData());
            return;
        case Type::Date:
            out += dateText(*value.asDate());
            return;
        case Type::Uid:
            out += "<CFKeyedArchiverUID>{value = " + std::to_string(*value.asUid()) + "}";
            return;
        case Type::Integer:
        case Type::Real:
            out += jsonText(valueJson(value));
            return;
        case Type::Nil:
        case Type::Null:
        case Type::Object:
            out += value.description();
            return;
    }
}

// The first kind of value inside that JSON cannot hold, or nullptr.
const char* unfitForJson(const plat::Value& value) {
    using Type = plat::Value::Type;
    switch (value.type()) {
        case Type::Data:
            return "data";
        case Type::Date:
            return "a date";
        case Type::Uid:
            return "an archive UID";
        case Type::Array:
            for (const plat::Value& item : *value.asArray())
                if (const char* kind = unfitForJson(item)) return kind;
            return nullptr;
        case Type::Dictionary:
            for (const auto& [key, item] : *value.asDictionary())
                if (const char* kind = unfitForJson(item)) return kind;
            return nullptr;
        case Type::Real:
            return std::isfinite(value.doubleValue()) ? nullptr : "a number JSON cannot write";
        default:
            return nullptr;
    }
}

}  // namespace

std::string printedPropertyList(const plat::Value& value) {
    std::string out;
    print(value, 0, out);
    return out + "\n";
}

std::optional<std::string> propertyListJson(const plat::Value& value, std::string& why) {
    if (const char* kind = unfitForJson(value)) {
        why = std::string("it holds ") + kind + ", which JSON cannot hold";
        return std::nullopt;
    }
    return jsonText(valueJson(value)) + "\n";
}

}  // namespace velto::app
