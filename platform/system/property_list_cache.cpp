#include "platform/system/property_list_cache.h"

#include <sys/stat.h>

#include "platform/foundation/plist.h"
#include "platform/system/device_root.h"
#include "platform/system/file_version.h"

namespace plat {

namespace {

// Enough for every table and profile of a few device roots.
FileVersionCache<Value> parsed(512);

}  // namespace

Value cachedPropertyList(const DeviceRoot& root, std::string_view devicePath) {
    const auto host = root.resolve(devicePath);
    struct stat info {};
    if (!host || ::stat(host->c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return Value();
    if (auto kept = parsed.find(host->string(), info)) return *kept;
    const auto bytes = root.readFile(devicePath);
    Value contents = bytes ? propertyListFromData(*bytes) : Value();
    parsed.keep(host->string(), info, contents);
    return contents;
}

}  // namespace plat
