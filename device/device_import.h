#pragma once

#include <atomic>
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
// compression tar reads.
// Nothing outside the copy is read: no component of a path taken may be a symbolic link, and
// a file with a second (hard) link is passed over as a link is. An archive is unpacked only
// for the files wanted, into a scratch folder that goes on every way out. A file larger than
// the device's read limit (64 MB) fails the import.
// Answers how many files were copied; throws std::runtime_error when the source cannot be
// read or holds none of these files, or when `stop` turns true (an interrupt).
std::size_t importDeviceFiles(const plat::DeviceRoot& root, const std::filesystem::path& source,
                              const std::atomic<bool>* stop = nullptr);

}  // namespace velto::device
