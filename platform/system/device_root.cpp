#include "platform/system/device_root.h"

namespace plat {

bool DeviceRoot::fileExists(std::string_view devicePath, bool* isDirectory) const {
    const auto found = status(devicePath);
    if (!found) return false;
    if (isDirectory) *isDirectory = found->kind == FileKind::Folder;
    return true;
}

std::vector<std::string_view> devicePathComponents(std::string_view devicePath) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    while (start <= devicePath.size()) {
        std::size_t end = devicePath.find('/', start);
        if (end == std::string_view::npos) end = devicePath.size();
        std::string_view part = devicePath.substr(start, end - start);
        if (part == "..") {
            if (!parts.empty()) parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        start = end + 1;
    }
    return parts;
}

}  // namespace plat
