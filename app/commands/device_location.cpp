#include "app/commands/device_location.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "device/bundle_install.h"
#include "device/demo_device.h"
#include "device/device_init.h"
#include "device/device_profile.h"
#include "platform/system/host_device_root.h"

#ifndef VELTO_RESOURCES_DIR
#error "VELTO_RESOURCES_DIR must name the bundle's resources folder"
#endif
#ifndef VELTO_INSTALLED_RESOURCES
#error "VELTO_INSTALLED_RESOURCES must name the installed resources relative to the program"
#endif

namespace velto::app {

namespace fs = std::filesystem;

fs::path resourcesFolder() {
    if (const char* override = std::getenv("VELTO_RESOURCES"); override && *override)
        return override;
    // An installed program carries its resources; the source tree may be long gone.
    std::error_code ec;
    const fs::path program = fs::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        const fs::path installed = program.parent_path() / VELTO_INSTALLED_RESOURCES;
        if (fs::is_directory(installed, ec)) return installed.lexically_normal();
    }
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

namespace {

bool holds(const fs::path& folder, const char* devicePath) {
    std::error_code ec;
    return fs::is_regular_file(folder / fs::path(devicePath).relative_path(), ec);
}

// How to make a device where the user pointed. `--force` writes over what a folder holds, so it
// is offered only for a device root, never for a folder of someone's own files.
std::string initAdvice(const std::string& folder) {
    std::error_code ec;
    if (!fs::exists(folder, ec) || fs::is_empty(folder, ec))
        return "make one with: velto-settings device init " + folder;
    if (isDeviceRoot(folder)) return "make one with: velto-settings device init --force " + folder;
    return "make one in a new or empty folder with: velto-settings device init DIR";
}

}  // namespace

NotADevice::NotADevice(const std::string& folder, const std::string& why)
    : std::runtime_error(why + " (" + initAdvice(folder) + ")") {}

bool isDeviceRoot(const fs::path& folder) {
    // A device root made here has a profile; a copy of a real device at least its system
    // version. Anything else would open on pages with no rows at all.
    return holds(folder, device::kDeviceProfile) || holds(folder, device::kSystemVersionFile);
}

void requireDeviceRoot(const fs::path& folder) {
    const std::string name = folder.string();
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) throw NotADevice(name, "no device at " + name);
    if (!isDeviceRoot(folder))
        throw NotADevice(name, name + " is not a device root: it has neither " +
                                   device::kDeviceProfile + " nor " + device::kSystemVersionFile);
    const std::string bundleList = std::string(device::kInstalledBundle) + "/Velto.plist";
    if (!holds(folder, bundleList.c_str()))
        throw NotADevice(name, "the device at " + name + " has no VeltoSettings bundle in " +
                                   device::kInstalledBundle);
}

fs::path prepareDevice(const std::optional<std::string>& device) {
    if (device) {
        requireDeviceRoot(*device);
        return fs::canonical(*device);
    }
    const fs::path folder = demoDeviceFolder();
    if (!fs::exists(folder / fs::path(device::kDeviceProfile).relative_path()))
        makeDemoDevice(folder);
    device::installBundle(plat::HostDeviceRoot(fs::canonical(folder)), resourcesFolder());
    return fs::canonical(folder);
}

fs::path resetDemoDevice() {
    const fs::path folder = demoDeviceFolder();
    // The old device goes aside first, so the new one can be moved into its place whole.
    const fs::path aside = folder.parent_path() / (".old-demo-" + std::to_string(::getpid()));
    std::error_code ec;
    fs::rename(folder, aside, ec);
    makeDemoDevice(folder);
    fs::remove_all(aside, ec);
    return fs::canonical(folder);
}

}  // namespace velto::app
