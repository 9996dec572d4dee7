#pragma once

#include <filesystem>

namespace plat {
class DeviceRoot;
}

namespace velto::device {

inline constexpr const char* kInstalledBundle =
    "/System/Library/PreferenceBundles/VeltoSettings.bundle";

// Installs the bundle's resources (the source folder's files, sub-folders included) where the
// Settings application loads the bundle from. Files already there with the same contents are
// left alone and changed ones are replaced whole, so a running Settings application never
// reads half a file. Answers how many files were written; throws std::runtime_error when the
// source folder is missing or a file cannot be written.
std::size_t installBundle(const plat::DeviceRoot& root, const std::filesystem::path& resources);

}  // namespace velto::device
