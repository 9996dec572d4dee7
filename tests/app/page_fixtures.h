#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace apptest {

// The JSON page's rows' identifiers (label where a row has none), in order.
std::vector<std::string> rowIds(const nlohmann::json& page);
// The row with this identifier; a null JSON value when there is none.
nlohmann::json rowWithId(const nlohmann::json& page, const std::string& id);
// Journal entries of one kind.
std::vector<nlohmann::json> journalOf(const nlohmann::json& page, const std::string& kind);

// Replaces the installed bundle's root list ("Velto") of a device with a small one: header,
// master switch, then a group and a link row for each (label, page class) given. The master
// switch is off on a new device, so the root page shows exactly rows 0, 1 and the last two:
// give one link to see it on the page. The list has no title, so a page shows the title of
// the row that opened it, or none.
// `masterSetter` replaces the master switch's setter selector.
void writeRootList(const std::string& device,
                   const std::vector<std::pair<std::string, std::string>>& links,
                   const std::string& masterSetter = "veltoEnabledOrDisabled:specifier:");

}  // namespace apptest
