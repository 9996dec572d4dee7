#pragma once

#include <string>

#include "device/app_choice.h"
#include "platform/system/device_facts.h"

namespace plat {
class DeviceRoot;
}

namespace velto::device {

// Where installed applications and their data live on the device.
inline constexpr const char* kSystemApplications = "/Applications";
inline constexpr const char* kBundleContainers = "/var/containers/Bundle/Application";
inline constexpr const char* kDataContainers = "/var/mobile/Containers/Data/Application";
inline constexpr const char* kContainerMetadata =
    ".com.apple.mobile_container_manager.metadata.plist";

// Installs an application the way the device lays it out: its folder with Info.plist and a
// home-screen icon for the family and scale, and for a user application a data container
// whose metadata names the bundle identifier. Containers get stable UUIDs made from the
// identifier, so installing again overwrites rather than duplicates. Answers the device path
// of the application's folder, or "" when something could not be written.
std::string installApp(const plat::DeviceRoot& root, const AppChoice& app,
                       plat::DeviceFamily family, int scale);

// A data container whose metadata names the bundle identifier, at a stable UUID. Answers its
// device path, or "" when the metadata could not be written.
std::string installDataContainer(const plat::DeviceRoot& root, const std::string& bundleIdentifier);

// A UUID-shaped name derived from a text (the same text always gives the same UUID).
std::string stableUuid(const std::string& seed);

// The icon file an application of this family gets at this scale, and its size in points.
std::string iconFileName(plat::DeviceFamily family, int scale);
int iconPoints(plat::DeviceFamily family);

}  // namespace velto::device
