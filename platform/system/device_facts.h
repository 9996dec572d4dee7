#pragma once

#include <string>

namespace plat {

class DeviceRoot;

enum class DeviceFamily { iPhone, iPad, iPod };

// Device facts the pages depend on. The system version comes from the device's
// /System/Library/CoreServices/SystemVersion.plist (ProductVersion); the facts no file carries
// on a real device come from the root's /DeviceProfile.plist:
//   DeviceFamily: "iPhone" | "iPad" | "iPod"   (default iPhone)
//   ProductType:  e.g. "iPhone13,2"            (default: the family's model at that scale)
//   FaceTime:     boolean                      (default true)
//   ScreenScale:  1, 2 or 3                    (default 3 on iPhone, 2 otherwise)
// Read on every call; a file is parsed again only when it has changed.
struct DeviceFacts {
    DeviceFamily family = DeviceFamily::iPhone;
    std::string productType;
    std::string systemVersion = "14.4";
    bool faceTime = true;
    double screenScale = 3;

    static DeviceFacts read(const DeviceRoot& root);

    // Numeric comparison of the system version with major.minor (missing parts are 0).
    bool systemVersionAtLeast(int major, int minor = 0) const;
};

const char* familyName(DeviceFamily family);

}  // namespace plat
