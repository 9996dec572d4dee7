#pragma once

#include <string_view>

#include "platform/foundation/value.h"

namespace plat {

class DeviceRoot;

// A property list file the process reads again and again (a strings table for every label,
// the device's profile for every fact it asks), parsed once for each version of the file. An
// entry stands while the file keeps its identity, size and modification time, so an edited
// file is read anew, as a fresh read would. Nil when the file is missing, not a regular file
// or not a property list. The answer is shared with later callers: read it, never change it.
Value cachedPropertyList(const DeviceRoot& root, std::string_view devicePath);

}  // namespace plat
