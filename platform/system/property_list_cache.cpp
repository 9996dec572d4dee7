#include "platform/system/property_list_cache.h"

#include <sys/stat.h>

#include <map>
#include <mutex>
#include <string>

#include "platform/foundation/plist.h"
#include "platform/system/device_root.h"

namespace plat {

namespace {

struct Entry {
    struct stat info;
    Value contents;
};

bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// Enough for every table and profile of a few device roots; past it, starting over is cheap.
constexpr std::size_t kEntries = 512;

std::mutex mutex;
std::map<std::string, Entry> entries;

}  // namespace

Value cachedPropertyList(const DeviceRoot& root, std::string_view devicePath) {
    const auto host = root.resolve(devicePath);
    struct stat info {};
    if (!host || ::stat(host->c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return Value();
    {
        std::lock_guard lock(mutex);
        const auto found = entries.find(host->string());
        if (found != entries.end() && sameFile(found->second.info, info))
            return found->second.contents;
    }
    // Kept under what the file was before it was read: if it changes meanwhile, the next
    // call sees another identity and reads it again.
    const auto bytes = root.readFile(devicePath);
    Value contents = bytes ? propertyListFromData(*bytes) : Value();
    std::lock_guard lock(mutex);
    if (entries.size() >= kEntries) entries.clear();
    entries[host->string()] = Entry{info, contents};
    return contents;
}

}  // namespace plat
