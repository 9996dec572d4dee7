#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

namespace velto::app {

// The bundle's resources: $VELTO_RESOURCES when set, else the installed copy beside the
// program (share/velto-settings/resources next to its bin/), else the source tree's resources
// folder this program was built from.
std::filesystem::path resourcesFolder();

// ${XDG_STATE_HOME:-$HOME/.local/state}/velto-settings/demo.
std::filesystem::path demoDeviceFolder();

// A folder given as a device that is not one; the message says how to make one.
class NotADevice : public std::runtime_error {
  public:
    NotADevice(const std::string& folder, const std::string& why);
};

// Whether `folder` is a device root, made by `device init` (it has a profile) or copied from a
// device (it has a system version), with the bundle installed or not.
bool isDeviceRoot(const std::filesystem::path& folder);

// Throws NotADevice unless `folder` holds a device root with the bundle installed.
void requireDeviceRoot(const std::filesystem::path& folder);

// Replaces the demo device with a new one in its first state; answers where it is.
std::filesystem::path resetDemoDevice();

// The device a session runs on: the folder given (which must be a device root), or the demo device,
// made on first use and given the current bundle every time, as installing a new build of
// the bundle would. Throws std::runtime_error, saying why, when there is no usable device.
std::filesystem::path prepareDevice(const std::optional<std::string>& device);

}  // namespace velto::app
