#include "platform/system/property_list_cache.h"

#include "platform/foundation/plist.h"
#include "platform/system/device_root.h"
#include "platform/system/file_version.h"

namespace plat {

namespace {

// Enough for every table and profile of a few device roots.
FileVersionCache<Value> parsed(512);

}  // namespace

Value cachedPropertyList(const DeviceRoot& root, std::string_view devicePath) {
    const auto status = root.status(devicePath);
    if (!status || status->kind != FileKind::File) return Value();
    const std::string key = FileVersionCache<Value>::keyOf(root, devicePath);
    if (auto kept = parsed.find(key, status->version)) return *kept;
    const auto bytes = root.readFile(devicePath);
    Value contents = bytes ? propertyListFromData(*bytes) : Value();
    parsed.keep(key, status->version, contents);
    return contents;
}

}  // namespace plat
