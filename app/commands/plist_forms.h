#pragma once

#include <optional>
#include <string>

#include "platform/foundation/value.h"

namespace velto::app {

// What `plutil -p` prints: a property list for people, dictionaries sorted by key as
// `"key" => value`, arrays as `index => value`, nested two spaces deeper; ends in a newline.
std::string printedPropertyList(const plat::Value& value);

// The property list as JSON text, for `plutil -convert json`. JSON has no data, dates or UIDs:
// nullopt with `why` set when the list holds one.
std::optional<std::string> propertyListJson(const plat::Value& value, std::string& why);

}  // namespace velto::app
