#pragma once

#include <optional>
#include <string>

#include "platform/foundation/object.h"
#include "platform/prefs/specifier.h"

namespace plat {

class Bundle;

struct LoadedSpecifiers {
    SpecifierArrayPtr specifiers;      // never null; empty when the resource did not load
    std::optional<std::string> title;  // the resource's localised "title", if any
};

// Reads "<bundle>/<name>.plist" and makes one new Specifier per item of its "items" array, in
// order: every item key is kept in the row's properties; "label", "title" and "footerText" are
// localised through "<name>.strings" (falling back to the text itself); "id", "cell", "set",
// "get", "action" and "detail" fill the row's fields; "icon" names an image of the bundle that
// becomes "iconImage". Items that are not dictionaries are skipped. A missing or malformed
// resource answers an empty list and writes one log line; it never throws.
LoadedSpecifiers loadSpecifiersFromPlist(const Bundle& bundle, const std::string& name,
                                         const ObjectPtr& target);

}  // namespace plat
