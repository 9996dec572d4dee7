#include "platform/foundation/plist_file.h"

#include "platform/foundation/plist.h"
#include "platform/system/device_root.h"
#include "platform/system/process.h"

namespace plat {

namespace {

Value readRoot(const DeviceRoot& root, std::string_view devicePath, Value::Type wanted) {
    const std::optional<Bytes> bytes = root.readFile(devicePath);
    if (!bytes) return Value();
    Value value = propertyListFromData(*bytes);
    return value.type() == wanted ? value : Value();
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

bool writeDataToFile(const DeviceRoot& root, const Bytes& bytes, std::string_view devicePath,
                     bool atomically) {
    return root.writeFile(devicePath, bytes, atomically);
}

bool writeDataToFile(const Bytes& bytes, std::string_view devicePath, bool atomically) {
    return writeDataToFile(Process::current().root(), bytes, devicePath, atomically);
}

}  // namespace plat
