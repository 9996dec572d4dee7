#pragma once

#include <nlohmann/json.hpp>

#include "app/page_view.h"
#include "platform/foundation/value.h"
#include "platform/system/journal.h"

namespace velto::app {

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
