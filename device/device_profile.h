#pragma once

#include <optional>
#include <string>

#include "device/device_options.h"

namespace plat {
class DeviceRoot;
}

namespace velto::device {

// /DeviceProfile.plist: the facts no file carries on a real device. Besides the keys the
// platform reads (DeviceFamily, ProductType, FaceTime, ScreenScale) it records whether the
// extension answers requests ("ExtensionAnswers"), which on a device depends on whether
// SpringBoard has the extension loaded, and optionally the version the extension reports of
// itself ("ExtensionVersion").
inline constexpr const char* kDeviceProfile = "/DeviceProfile.plist";
inline constexpr const char* kSystemVersionFile =
    "/System/Library/CoreServices/SystemVersion.plist";

// The product type is the model of the family at the options' scale (plat::modelFor).
bool writeDeviceProfile(const plat::DeviceRoot& root, const DeviceOptions& options);
bool writeSystemVersion(const plat::DeviceRoot& root, const std::string& version);

// The version the extension reports of itself ("ExtensionVersion"), when the profile sets one.
std::optional<std::string> extensionVersion(const plat::DeviceRoot& root);

// True unless the profile says the extension stays silent; a copy of a real device has no
// such key, and its extension answers.
bool extensionAnswers(const plat::DeviceRoot& root);

}  // namespace velto::device
