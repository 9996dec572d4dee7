#include "platform/system/device_facts.h"

#include <cctype>
#include <string_view>

#include "platform/system/device_models.h"
#include "platform/system/device_root.h"
#include "platform/system/property_list_cache.h"

namespace plat {

namespace {

// A property list read from the device; nil when missing or not a property list, so every
// lookup below falls back to its default. Pages ask for facts at every row: the files are
// parsed again only when they change.
Value readPropertyList(const DeviceRoot& root, std::string_view devicePath) {
    return cachedPropertyList(root, devicePath);
}

// "14.4.1" -> 14, 4: leading digits of each dot-separated part, missing parts 0.
void versionParts(const std::string& version, int& major, int& minor) {
    int parts[2] = {0, 0};
    std::size_t at = 0;
    for (int& part : parts) {
        long value = 0;
        while (at < version.size() && std::isdigit(static_cast<unsigned char>(version[at]))) {
            if (value < 100000) value = value * 10 + (version[at] - '0');
            ++at;
        }
        part = static_cast<int>(value);
        // Anything but a dot ends the number ("14.4b2" reads as 14.4).
        while (at < version.size() && version[at] != '.')
            ++at;
        if (at < version.size()) ++at;
    }
    major = parts[0];
    minor = parts[1];
}

}  // namespace

DeviceFacts DeviceFacts::read(const DeviceRoot& root) {
    DeviceFacts facts;

    Value system = readPropertyList(root, "/System/Library/CoreServices/SystemVersion.plist");
    if (const std::string version = system.objectForKey("ProductVersion").str(); !version.empty())
        facts.systemVersion = version;

    Value profile = readPropertyList(root, "/DeviceProfile.plist");
    std::string family = profile.objectForKey("DeviceFamily").str();
    if (family == "iPad")
        facts.family = DeviceFamily::iPad;
    else if (family == "iPod")
        facts.family = DeviceFamily::iPod;
    else
        facts.family = DeviceFamily::iPhone;

    Value faceTime = profile.objectForKey("FaceTime");
    facts.faceTime = faceTime.isNil() ? true : faceTime.boolValue();

    // Only the scales a device has ever had; anything else is a mistake in the profile.
    double scale = profile.objectForKey("ScreenScale").doubleValue();
    if (scale == 1 || scale == 2 || scale == 3)
        facts.screenScale = scale;
    else
        facts.screenScale = facts.family == DeviceFamily::iPhone ? 3 : 2;

    // Without one, a model the family really had at that scale, for code that shows or
    // compares the product type.
    const std::string productType = profile.objectForKey("ProductType").str();
    facts.productType = !productType.empty() ? productType : modelOf(facts).productType;
    return facts;
}

bool DeviceFacts::systemVersionAtLeast(int major, int minor) const {
    int haveMajor = 0;
    int haveMinor = 0;
    versionParts(systemVersion, haveMajor, haveMinor);
    if (haveMajor != major) return haveMajor > major;
    return haveMinor >= minor;
}

const char* familyName(DeviceFamily family) {
    switch (family) {
        case DeviceFamily::iPad:
            return "iPad";
        case DeviceFamily::iPod:
            return "iPod";
        case DeviceFamily::iPhone:
            break;
    }
    return "iPhone";
}

}  // namespace plat
