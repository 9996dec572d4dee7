#pragma once

#include <optional>
#include <string>
#include <vector>

#include "device/app_choice.h"

namespace plat {
class DeviceRoot;
}

namespace velto::device {

// The device's dpkg status database, /var/lib/dpkg/status: one stanza per installed package,
// in the form dpkg-query reads when it is pointed at the device.
inline constexpr const char* kPackageDatabase = "/var/lib/dpkg/status";

// Writes the database with exactly these packages, each "install ok installed". An empty
// list still writes the file, so dpkg-query finds a database and simply knows nothing.
bool writePackageDatabase(const plat::DeviceRoot& root, const std::vector<PackageChoice>& packages);

// The version of an installed package, read from the database; nullopt when the package is
// absent or not installed.
std::optional<std::string> installedPackageVersion(const plat::DeviceRoot& root,
                                                   const std::string& identifier);

}  // namespace velto::device
