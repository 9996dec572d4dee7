#pragma once

#include <cstddef>
#include <filesystem>

namespace plat {
class DeviceRoot;
}

namespace velto::device {

// Copies what the Settings application reads of a real device into a device root: the
// preferences (/var/mobile/Library/Preferences/*.plist), the applications' Info.plists and
// icons (/Applications/*.app and the bundle containers, with the containers' metadata), the
// dpkg status database and the system version. `source` is a copy of the device's file system
// (its /, or with /var under /private/var as on the device), or a tar archive of one, in any
// compression tar reads. Symbolic links are not followed, so nothing outside the copy is read.
// Answers how many files were copied; throws std::runtime_error when the source cannot be
// read or holds none of these files.
std::size_t importDeviceFiles(const plat::DeviceRoot& root, const std::filesystem::path& source);

}  // namespace velto::device
