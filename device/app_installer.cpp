#include "device/app_installer.h"

#include <cstdint>
#include <cstdio>

#include "device/app_icon.h"
#include "device/plist_writing.h"
#include "platform/system/device_root.h"
#include "platform/ui/image.h"
#include "platform/ui/png_encoding.h"

namespace velto::device {

namespace {

std::uint64_t fnv1a64(const std::string& text, std::uint64_t basis) {
    std::uint64_t hash = basis;
    for (unsigned char c : text) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    return hash;
}

// Home-screen folders and executables have no spaces ("App Store" lives in AppStore.app).
std::string executableName(const std::string& name) {
    std::string executable;
    for (char c : name)
        if (c != ' ') executable += c;
    return executable.empty() ? "App" : executable;
}

std::string folderName(const std::string& name) {
    return executableName(name) + ".app";
}

std::string iconBaseName(plat::DeviceFamily family) {
    return family == plat::DeviceFamily::iPad ? "AppIcon76x76" : "AppIcon60x60";
}

plat::Value infoPlist(const AppChoice& app, plat::DeviceFamily family) {
    const plat::Value icons = plat::Value::dictionary(
        {{"CFBundlePrimaryIcon",
          plat::Value::dictionary(
              {{"CFBundleIconFiles", plat::Value::array({iconBaseName(family)})},
               {"CFBundleIconName", "AppIcon"}})}});
    return plat::Value::dictionary(
        {{"CFBundleIdentifier", app.bundleIdentifier},
         {"CFBundleDisplayName", app.name},
         {"CFBundleName", app.name},
         {"CFBundleExecutable", executableName(app.name)},
         {"CFBundlePackageType", "APPL"},
         {family == plat::DeviceFamily::iPad ? "CFBundleIcons~ipad" : "CFBundleIcons", icons}});
}

}  // namespace

std::string stableUuid(const std::string& seed) {
    const std::uint64_t high = fnv1a64(seed, 14695981039346656037ull);
    const std::uint64_t low = fnv1a64(seed + "#", 0x84222325cbf29ce4ull);
    char text[40];
    // Version 4 and variant bits set, so the name reads like the UUIDs installd makes.
    std::snprintf(text, sizeof text, "%08X-%04X-4%03X-%04X-%012llX",
                  static_cast<unsigned>(high >> 32), static_cast<unsigned>((high >> 16) & 0xffff),
                  static_cast<unsigned>(high & 0xfff),
                  static_cast<unsigned>(0x8000 | ((low >> 48) & 0x3fff)),
                  static_cast<unsigned long long>(low & 0xffffffffffffull));
    return text;
}

int iconPoints(plat::DeviceFamily family) {
    return family == plat::DeviceFamily::iPad ? 76 : 60;
}

std::string iconFileName(plat::DeviceFamily family, int scale) {
    const std::string scaleSuffix = scale > 1 ? "@" + std::to_string(scale) + "x" : "";
    const std::string idiom = family == plat::DeviceFamily::iPad ? "~ipad" : "";
    return iconBaseName(family) + scaleSuffix + idiom + ".png";
}

std::string installApp(const plat::DeviceRoot& root, const AppChoice& app,
                       plat::DeviceFamily family, int scale) {
    const std::string container =
        app.system ? kSystemApplications
                   : std::string(kBundleContainers) + "/" + stableUuid(app.bundleIdentifier);
    const std::string folder = container + "/" + folderName(app.name);

    if (!writeBinaryPlist(root, folder + "/Info.plist", infoPlist(app, family))) return "";

    const int pixels = iconPoints(family) * scale;
    const auto icon = drawAppIcon(app.bundleIdentifier, app.name, pixels, scale);
    // Encoded for speed: a device of thousands of apps is mostly its icons.
    const plat::Bytes png =
        icon ? plat::encodePngQuickly(icon->surface(), icon->hasAlpha()) : plat::Bytes();
    if (png.empty() || !root.writeFile(folder + "/" + iconFileName(family, scale), png, true))
        return "";

    if (!app.system && installDataContainer(root, app.bundleIdentifier).empty()) return "";
    return folder;
}

std::string installDataContainer(const plat::DeviceRoot& root,
                                 const std::string& bundleIdentifier) {
    const std::string container =
        std::string(kDataContainers) + "/" + stableUuid(bundleIdentifier + "/data");
    if (!writeBinaryPlist(
            root, container + "/" + kContainerMetadata,
            plat::Value::dictionary({{"MCMMetadataIdentifier", bundleIdentifier},
                                     {"MCMMetadataContentClass", plat::Value::integer(2)}})))
        return "";
    return container;
}

}  // namespace velto::device
