#pragma once

#include <filesystem>

#include "contract/catalogue.h"
#include "device/device_options.h"

namespace plat {
class DeviceRoot;
}

namespace velto::device {

inline constexpr const char* kMainSettingsFile = files::kMainSettingsPath;

// Writes a device root into `folder` (made if missing; files already there are overwritten,
// others kept): the profile, the system version, the bundle installed from `resources`, the
// applications with their icons, the package database and, when the options hold one, the
// main settings file. Throws std::runtime_error, saying what failed, when a file cannot be
// written.
void initDevice(const std::filesystem::path& folder, const DeviceOptions& options,
                const std::filesystem::path& resources);
// The same on any device, one in memory included.
void initDevice(const plat::DeviceRoot& root, const DeviceOptions& options,
                const std::filesystem::path& resources);

}  // namespace velto::device
