#pragma once

#include <string>
#include <vector>

#include "platform/ui/image.h"

namespace plat {
class DeviceRoot;
}

namespace velto::device {

// An application found on the device, as SpringBoard knows it.
struct InstalledApp {
    std::string bundleIdentifier;
    std::string displayName;
    bool system = false;  // in /Applications (biteSMS and the maker's apps included)
    std::string folder;   // device path of the .app folder
};

// Every application on the device: system applications first, then user applications, each
// group in folder order. A folder without a readable Info.plist or bundle identifier is not
// an application and is skipped.
std::vector<InstalledApp> installedApps(const plat::DeviceRoot& root);

// The application with this bundle identifier, if installed.
const InstalledApp* findInstalledApp(const std::vector<InstalledApp>& apps,
                                     const std::string& bundleIdentifier);

// The application's largest home-screen icon (AppIcon*.png), at the scale its file name
// says; nullptr when it has none whose header reads. An icon no larger than a home-screen
// icon is the file itself, decoded only when drawn (a damaged body draws transparent); a
// larger one is decoded and drawn down.
plat::ImagePtr largestIcon(const plat::DeviceRoot& root, const InstalledApp& app);

}  // namespace velto::device
