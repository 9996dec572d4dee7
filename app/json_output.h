#pragma once

#include <nlohmann/json.hpp>

#include "app/page_view.h"
#include "platform/foundation/value.h"
#include "platform/system/journal.h"

namespace velto::app {

// The text of any JSON this program prints. Arguments, paths and file contents need not be
// UTF-8; the strict dump() would throw on them mid-error-path, so invalid bytes become U+FFFD.
template <class Json>
std::string jsonText(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// The JSON shapes scripts read. A page:
//   {"page", "title", "depth", "rows": [{"index", "cell", "label", "id", "footer", "value",
//    "detail", "action", "icon": {"width", "height"} | null}], "presented", "journal"}
nlohmann::ordered_json pageJson(const PageView& page,
                                const std::vector<plat::JournalEntry>& journal);
// A journal entry: {"kind", ...} with the fields of its kind.
nlohmann::ordered_json journalJson(const plat::JournalEntry& entry);
// A property-list value: numbers, strings, arrays and dictionaries as themselves, data as
// {"data": base64}, dates as {"date": seconds since 2001}, other objects as {"object": class}.
nlohmann::ordered_json valueJson(const plat::Value& value);

}  // namespace velto::app
