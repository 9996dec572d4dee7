#include "device/installed_app_list.h"

#include <mutex>
#include <string>
#include <unordered_map>

#include "device/app_installer.h"
#include "platform/foundation/plist.h"
#include "platform/system/device_root.h"

namespace velto::device {

namespace {

plat::Value readPlist(const plat::DeviceRoot& root, const std::string& path) {
    const auto bytes = root.readFile(path);
    return bytes ? plat::propertyListFromData(*bytes) : plat::Value();
}

void collect(const plat::DeviceRoot& root, const std::string& folder, bool system,
             std::vector<InstalledApp>& apps) {
    for (const std::string& name : root.contentsOfDirectory(folder)) {
        if (!name.ends_with(".app")) continue;
        const std::string path = folder + "/" + name;
        const plat::Value info = readPlist(root, path + "/Info.plist");
        const std::string identifier = info.objectForKey("CFBundleIdentifier").str();
        if (identifier.empty()) continue;
        std::string shown = info.objectForKey("CFBundleDisplayName").str();
        if (shown.empty()) shown = info.objectForKey("CFBundleName").str();
        if (shown.empty()) shown = name.substr(0, name.size() - 4);
        apps.push_back({identifier, shown, system, path});
    }
}

// The largest icon an app shows on a phone's home screen: 60 points at 3x.
constexpr int kIconPixels = 180;
// Icon files bigger than this are not decoded at all (4096 x 4096 pixels).
constexpr long long kIconDecodeBudget = 1LL << 24;

// "@2x" or "@3x" in a file name gives the scale; none means 1.
double scaleOf(const std::string& fileName) {
    for (int scale : {2, 3})
        if (fileName.find("@" + std::to_string(scale) + "x") != std::string::npos) return scale;
    return 1;
}

// The icons made so far, by the file they were made from. Every request for an icon, or for
// the application list, would otherwise decode and scale the same files again, and the
// resource check asks for them thousands of times over its devices.
class IconCache {
  public:
    plat::ImagePtr find(const plat::Bytes& file, double scale) {
        std::lock_guard lock(mutex_);
        const auto found = icons_.find(key(file, scale));
        return found == icons_.end() ? nullptr : found->second;
    }
    void keep(const plat::Bytes& file, double scale, plat::ImagePtr icon) {
        std::lock_guard lock(mutex_);
        if (icons_.size() >= kLimit) icons_.clear();
        icons_.emplace(key(file, scale), std::move(icon));
    }

  private:
    // The scale, then the file's bytes: one string, hashed and compared whole.
    static std::string key(const plat::Bytes& file, double scale) {
        std::string text = std::to_string(scale) + ":";
        text.append(reinterpret_cast<const char*>(file.data()), file.size());
        return text;
    }

    static constexpr std::size_t kLimit = 512;
    std::mutex mutex_;
    std::unordered_map<std::string, plat::ImagePtr> icons_;
};

IconCache& iconCache() {
    static IconCache cache;
    return cache;
}

}  // namespace

std::vector<InstalledApp> installedApps(const plat::DeviceRoot& root) {
    std::vector<InstalledApp> apps;
    collect(root, kSystemApplications, true, apps);
    for (const std::string& uuid : root.contentsOfDirectory(kBundleContainers))
        collect(root, std::string(kBundleContainers) + "/" + uuid, false, apps);
    return apps;
}

const InstalledApp* findInstalledApp(const std::vector<InstalledApp>& apps,
                                     const std::string& bundleIdentifier) {
    for (const InstalledApp& app : apps)
        if (app.bundleIdentifier == bundleIdentifier) return &app;
    return nullptr;
}

plat::ImagePtr largestIcon(const plat::DeviceRoot& root, const InstalledApp& app) {
    // Chosen by the sizes the headers declare, so that only one picture is decoded; a picture
    // past the decoder's pixel budget is passed over.
    std::optional<plat::Bytes> bestBytes;
    std::string bestName;
    int bestWidth = 0, bestHeight = 0;
    for (const std::string& name : root.contentsOfDirectory(app.folder)) {
        if (!name.starts_with("AppIcon") || !name.ends_with(".png")) continue;
        auto bytes = root.readFile(app.folder + "/" + name);
        if (!bytes) continue;
        const auto size = plat::pngPixelSize(*bytes);
        if (!size || size->first <= bestWidth ||
            static_cast<long long>(size->first) * size->second > kIconDecodeBudget)
            continue;
        bestWidth = size->first;
        bestHeight = size->second;
        bestBytes = std::move(bytes);
        bestName = name;
    }
    if (!bestBytes) return nullptr;
    const double scale = scaleOf(bestName);
    // An icon of home-screen size goes out as the file it is, decoded only if someone draws it.
    if (bestWidth <= kIconPixels && bestHeight <= kIconPixels)
        return plat::Image::imageWithPngDeferred(std::move(*bestBytes), scale);
    if (auto icon = iconCache().find(*bestBytes, scale)) return icon;
    // Whatever the app ships, Settings gets an icon no larger than a home-screen icon: an app
    // with a poster-sized icon must not cost every root-page show a poster's memory.
    auto icon = plat::imageScaledToFit(plat::Image::imageWithData(*bestBytes, scale), kIconPixels);
    if (icon) iconCache().keep(*bestBytes, scale, icon);
    return icon;
}

}  // namespace velto::device
