#include "device/plist_writing.h"

#include "platform/foundation/plist.h"
#include "platform/system/device_root.h"

namespace velto::device {

std::string_view parentOf(std::string_view devicePath) {
    const std::size_t slash = devicePath.rfind('/');
    if (slash == std::string_view::npos) return "";
    return slash == 0 ? std::string_view("/") : devicePath.substr(0, slash);
}

bool writeBinaryPlist(const plat::DeviceRoot& root, std::string_view devicePath,
                      const plat::Value& value) {
    const auto bytes = plat::dataFromPropertyList(value, plat::PropertyListFormat::Binary);
    if (!bytes) return false;
    const std::string_view folder = parentOf(devicePath);
    if (!folder.empty() && !root.createDirectory(folder, true)) return false;
    return root.writeFile(devicePath, *bytes, true).has_value();
}

}  // namespace velto::device
