#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velto::app {

// The bundle's resources: $VELTO_RESOURCES when set (an installed program), else the source
// tree's resources folder this program was built from.
std::filesystem::path resourcesFolder();

// ${XDG_STATE_HOME:-$HOME/.local/state}/velto-settings/demo.
std::filesystem::path demoDeviceFolder();

// The device a session runs on: the folder given (which must exist), or the demo device,
// made on first use and given the current bundle every time, as installing a new build of
// the bundle would. Throws std::runtime_error, saying why, when there is no usable device.
std::filesystem::path prepareDevice(const std::optional<std::string>& device);

}  // namespace velto::app
