#include "device/bundle_install.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "device/plist_writing.h"
#include "platform/system/device_root.h"

namespace velto::device {

namespace {

namespace fs = std::filesystem;

plat::Bytes readHostFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path.string());
    return plat::Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

std::size_t installBundle(const plat::DeviceRoot& root, const fs::path& resources) {
    std::error_code ec;
    if (!fs::is_directory(resources, ec))
        throw std::runtime_error("the bundle's resources are not at " + resources.string() +
                                 " (set VELTO_RESOURCES to their folder)");
    std::size_t written = 0;
    for (auto it = fs::recursive_directory_iterator(resources, ec); !ec && it != fs::end(it);
         it.increment(ec)) {
        if (!it->is_regular_file()) continue;
        const std::string relative = fs::relative(it->path(), resources).generic_string();
        const std::string target = std::string(kInstalledBundle) + "/" + relative;
        const plat::Bytes bytes = readHostFile(it->path());
        if (root.readFile(target) == bytes) continue;
        if (!root.createDirectory(parentOf(target), true) || !root.writeFile(target, bytes, true))
            throw std::runtime_error("cannot install " + relative + " into the device at " +
                                     root.describe());
        ++written;
    }
    if (ec) throw std::runtime_error("cannot read " + resources.string() + ": " + ec.message());
    return written;
}

}  // namespace velto::device
