#pragma once

#include <nlohmann/json.hpp>

#include "app/render/page_view.h"
#include "platform/foundation/value.h"
#include "platform/system/journal.h"

namespace velto::app {

// The text of any JSON this program prints. Arguments, paths and file contents need not be
// UTF-8; the strict dump() would throw on them mid-error-path, so invalid bytes become U+FFFD.
template <class Json>
std::string jsonText(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// The version of the record's shape, on every line as "schema". docs/json.md describes it;
// a change to a field's meaning or a removal changes the version.
inline constexpr int kJsonSchema = 4;

// The start of every line: {"type": type, "schema": kJsonSchema}.
nlohmann::ordered_json recordLine(const char* type);
// The same, followed by the fields of `fields` (an object) in their order.
nlohmann::ordered_json recordLine(const char* type, const nlohmann::ordered_json& fields);
// An error line: {"type": "error", "schema", "error": message, "step": step or null, "line":
// the step's line in a file of steps, or null}.
nlohmann::ordered_json errorLine(const std::string& message, const std::string& step = "",
                                 std::size_t line = 0);

// A page line (docs/json.md lists its fields).
nlohmann::ordered_json pageJson(const PageView& page,
                                const std::vector<plat::JournalEntry>& journal);
// A journal entry: {"kind", ...} with the fields of its kind.
nlohmann::ordered_json journalJson(const plat::JournalEntry& entry);
// A value as a record shows what a request carried: like valueJson, but archived data is
// shown as what it decodes to ({"archived": ...}), other data by size ({"data": bytes}),
// pictures by size and hash, and long arrays and strings cut short.
nlohmann::ordered_json summaryJson(const plat::Value& value);
// A property-list value: numbers, strings, arrays and dictionaries as themselves, data as
// {"data": base64}, dates as {"date": seconds since 2001}, other objects as {"object": class}.
nlohmann::ordered_json valueJson(const plat::Value& value);

}  // namespace velto::app
