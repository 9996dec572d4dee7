#include "platform/system/plist_file.h"

#include <cstdio>
#include <ctime>
#include "platform/foundation/plist.h"

#include "platform/system/device_root.h"
#include "platform/system/log.h"
#include "platform/system/process.h"

namespace plat {

namespace {

Value readRoot(const DeviceRoot& root, std::string_view devicePath, Value::Type wanted) {
    const std::optional<Bytes> bytes = root.readFile(devicePath);
    if (!bytes) return Value();
    Value value = propertyListFromData(*bytes);
    return value.type() == wanted ? value : Value();
}

// Every property list this process writes over is a preferences domain or a dictionary read
// back whole: what is there must read as a dictionary, or writing would lose it. Anything else
// (unparseable, too large, a FIFO, a folder, another root type) is renamed aside beside itself,
// never deleted, so the user can still recover it.
void setAsideUnreadable(const DeviceRoot& root, std::string_view devicePath) {
    if (!root.fileExists(devicePath)) return;
    if (readRoot(root, devicePath, Value::Type::Dictionary).isDictionary()) return;
    char stamp[32];
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::strftime(stamp, sizeof stamp, "%Y%m%dT%H%M%SZ", &utc);
    std::string aside = std::string(devicePath) + ".unreadable-" + stamp;
    for (int n = 1; root.status(aside); ++n)
        aside = std::string(devicePath) + ".unreadable-" + stamp + "-" + std::to_string(n);
    const bool moved = root.moveItem(devicePath, aside).has_value();
    const std::string line = std::string(moved ? "Moved" : "Could not move") +
                             " the unreadable property list " + std::string(devicePath) +
                             " aside to " + aside;
    // Tools that run without a simulated process (defaults) still say it, on standard error.
    if (Process::tryCurrent())
        NSLog(line);
    else
        std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace

Value dictionaryWithContentsOfFile(const DeviceRoot& root, std::string_view devicePath) {
    return readRoot(root, devicePath, Value::Type::Dictionary);
}

Value dictionaryWithContentsOfFile(std::string_view devicePath) {
    return dictionaryWithContentsOfFile(Process::current().root(), devicePath);
}

Value arrayWithContentsOfFile(const DeviceRoot& root, std::string_view devicePath) {
    return readRoot(root, devicePath, Value::Type::Array);
}

Value arrayWithContentsOfFile(std::string_view devicePath) {
    return arrayWithContentsOfFile(Process::current().root(), devicePath);
}

bool writePropertyListToFile(const DeviceRoot& root, const Value& value,
                             std::string_view devicePath, bool atomically) {
    // Only NSDictionary and NSArray answer writeToFile:atomically: with a property list.
    if (!value.isDictionary() && !value.isArray()) return false;
    const std::optional<Bytes> bytes = dataFromPropertyList(value, PropertyListFormat::XML);
    return bytes && root.writeFile(devicePath, *bytes, atomically);
}

bool writePropertyListToFile(const Value& value, std::string_view devicePath, bool atomically) {
    return writePropertyListToFile(Process::current().root(), value, devicePath, atomically);
}

PortStatus writeDataToFile(const DeviceRoot& root, const Bytes& bytes, std::string_view devicePath,
                           bool atomically) {
    if (!devicePath.ends_with(".plist")) return root.writeFile(devicePath, bytes, atomically);
    // What looks unreadable may be another writer's file half-written in place: it is judged,
    // and replaced, only once no writer of this program is at work on the folder.
    const auto lock = lockForWriting(root, devicePath);
    setAsideUnreadable(root, devicePath);
    return root.writeFile(devicePath, bytes, atomically);
}

PortStatus writeDataToFile(const Bytes& bytes, std::string_view devicePath, bool atomically) {
    return writeDataToFile(Process::current().root(), bytes, devicePath, atomically);
}

std::unique_ptr<DeviceRoot::FolderLock> lockForWriting(const DeviceRoot& root,
                                                       std::string_view devicePath) {
    const std::size_t slash = devicePath.rfind('/');
    return root.lockFolder(slash == std::string_view::npos ? std::string_view(".")
                           : slash == 0                    ? std::string_view("/")
                                                           : devicePath.substr(0, slash));
}

std::unique_ptr<DeviceRoot::FolderLock> lockForWriting(std::string_view devicePath) {
    return lockForWriting(Process::current().root(), devicePath);
}

}  // namespace plat
