#include "app/device_location.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "device/bundle_install.h"
#include "device/demo_device.h"
#include "device/device_init.h"
#include "device/device_profile.h"
#include "platform/system/device_root.h"

#ifndef VELTO_RESOURCES_DIR
#error "VELTO_RESOURCES_DIR must name the bundle's resources folder"
#endif

namespace velto::app {

namespace fs = std::filesystem;

fs::path resourcesFolder() {
    if (const char* override = std::getenv("VELTO_RESOURCES"); override && *override)
        return override;
    return VELTO_RESOURCES_DIR;
}

fs::path demoDeviceFolder() {
    fs::path state;
    if (const char* xdg = std::getenv("XDG_STATE_HOME"); xdg && *xdg) {
        state = xdg;
    } else if (const char* home = std::getenv("HOME"); home && *home) {
        state = fs::path(home) / ".local" / "state";
    } else {
        throw std::runtime_error(
            "neither XDG_STATE_HOME nor HOME is set: give a device with --device");
    }
    return state / "velto-settings" / "demo";
}

namespace {

// Made aside and moved into place, so two programs starting at once never see half a device.
void makeDemoDevice(const fs::path& folder) {
    fs::create_directories(folder.parent_path());
    const fs::path scratch = folder.parent_path() / (".demo-" + std::to_string(::getpid()));
    fs::remove_all(scratch);
    device::DeviceOptions options;
    device::addDemoContent(options);
    device::initDevice(scratch, options, resourcesFolder());
    std::error_code ec;
    fs::rename(scratch, folder, ec);
    // Another program made it first: theirs is as good as ours.
    if (ec) fs::remove_all(scratch);
}

}  // namespace

fs::path prepareDevice(const std::optional<std::string>& device) {
    if (device) {
        std::error_code ec;
        if (!fs::is_directory(*device, ec))
            throw std::runtime_error("no device at " + *device +
                                     " (make one with: velto-settings device init " + *device +
                                     ")");
        return fs::canonical(*device);
    }
    const fs::path folder = demoDeviceFolder();
    if (!fs::exists(folder / fs::path(device::kDeviceProfile).relative_path()))
        makeDemoDevice(folder);
    device::installBundle(plat::DeviceRoot(fs::canonical(folder)), resourcesFolder());
    return fs::canonical(folder);
}

}  // namespace velto::app
