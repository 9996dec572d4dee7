#include "app/session/device_watch.h"

#include <poll.h>

#include <algorithm>

#include "contract/catalogue.h"
#include "device/bundle_install.h"
#include "platform/system/host_device_root.h"

namespace velto::app {

namespace fs = std::filesystem;

namespace {

// How long a save is given to finish.
constexpr int kSettleMilliseconds = 100;
constexpr int kSettleLooks = 10;

fs::path under(const fs::path& root, const char* devicePath) {
    return root / fs::path(devicePath).relative_path();
}

bool inside(const fs::path& path, const fs::path& folder) {
    const auto [end, rest] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end();
}

std::vector<fs::path> watchedFolders(const WatchPlaces& places) {
    std::vector<fs::path> folders{under(places.device, folders::kPreferences),
                                  under(places.device, device::kInstalledBundle)};
    if (places.resources) folders.push_back(*places.resources);
    return folders;
}

}  // namespace

DeviceWatch::DeviceWatch(WatchPlaces places)
    : places_(std::move(places)),
      settings_(under(places_.device, folders::kPreferences)),
      watch_(watchedFolders(places_)) {}

std::vector<fs::path> DeviceWatch::settledChanges(const std::function<bool()>& stop) {
    std::vector<fs::path> changed = watch_.changes();
    if (changed.empty()) return changed;
    for (int look = 0; look < kSettleLooks && !stop(); ++look) {
        ::poll(nullptr, 0, kSettleMilliseconds);
        const auto more = watch_.changes();
        if (more.empty()) break;
        changed.insert(changed.end(), more.begin(), more.end());
    }
    return changed;
}

std::string DeviceWatch::note(const std::vector<fs::path>& changed) const {
    std::string note = "changed:";
    // A device path for what is on the device, the host path for the rest.
    for (const fs::path& path : changed)
        note += " " + (inside(path, places_.device)
                           ? "/" + path.lexically_relative(places_.device).generic_string()
                           : path.string());
    return note + "\n";
}

void DeviceWatch::reinstallIfNeeded(const std::vector<fs::path>& changed) const {
    if (!places_.resources) return;
    const bool resourcesChanged = std::any_of(changed.begin(), changed.end(),
                                              [&](const auto& p) { return !inside(p, settings_); });
    if (resourcesChanged)
        device::installBundle(plat::HostDeviceRoot(places_.device), *places_.resources);
}

}  // namespace velto::app
