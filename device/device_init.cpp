#include "device/device_init.h"

#include <stdexcept>

#include "contract/catalogue.h"
#include "contract/velto_utils.h"
#include "device/app_installer.h"
#include "device/bundle_install.h"
#include "device/device_profile.h"
#include "device/package_database.h"
#include "device/plist_writing.h"
#include "platform/system/host_device_root.h"

namespace velto::device {

namespace {

void require(bool ok, const std::string& what, const plat::DeviceRoot& root) {
    if (!ok)
        throw std::runtime_error("cannot write " + what + " into the device at " + root.describe());
}

void require(const plat::PortStatus& done, const std::string& what, const plat::DeviceRoot& root) {
    if (!done)
        throw std::runtime_error("cannot write " + what + " into the device at " + root.describe() +
                                 " (" + done.error() + ")");
}

bool writeExtensionLog(const plat::DeviceRoot& root, const std::string& text) {
    const std::string path = VeltoUtils::kLogFilePath;
    return root.createDirectory(path.substr(0, path.rfind('/')), true) &&
           root.writeFile(path, plat::Bytes(text.begin(), text.end()), true);
}

}  // namespace

void initDevice(const std::filesystem::path& folder, const DeviceOptions& options,
                const std::filesystem::path& resources) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec || !std::filesystem::is_directory(folder))
        throw std::runtime_error("cannot make the device folder " + folder.string() +
                                 (ec ? ": " + ec.message() : ""));
    const plat::HostDeviceRoot root(std::filesystem::canonical(folder));
    // Run as root, a device written over / would rewrite the host's own package database.
    if (root.hostRoot() == root.hostRoot().root_path())
        throw std::runtime_error("refusing to write a device into /");
    initDevice(root, options, resources);
}

void initDevice(const plat::DeviceRoot& root, const DeviceOptions& options,
                const std::filesystem::path& resources) {
    require(writeDeviceProfile(root, options), "the device profile", root);
    require(writeSystemVersion(root, options.systemVersion), "the system version", root);
    // The bundle writes its settings here and expects the folder to be there, as it is on a device.
    require(root.createDirectory(folders::kPreferences, true), "the preferences folder", root);
    installBundle(root, resources);
    // Messages is part of every system the bundle runs on, and so is its data container, where
    // the bundle keeps a copy of the default contact picture.
    require(!installDataContainer(root, appids::kMessages).empty(), "the Messages data container",
            root);
    for (const AppChoice& app : options.apps)
        require(!installApp(root, app, options.family, options.scale).empty(),
                "the application " + app.bundleIdentifier, root);
    require(writePackageDatabase(root, options.packages), "the package database", root);
    if (!options.extensionLog.empty())
        require(writeExtensionLog(root, options.extensionLog), "the extension's log", root);
    if (!options.mainSettings.isNil())
        require(writeBinaryPlist(root, kMainSettingsFile, options.mainSettings),
                "the main settings file", root);
}

}  // namespace velto::device
