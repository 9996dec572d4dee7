#pragma once

#include <optional>
#include <string>

namespace velto {

// Where applications live on the device: system applications in /Applications/<Name>.app,
// user applications in bundle containers /var/containers/Bundle/Application/<UUID>/<Name>.app,
// each found by the CFBundleIdentifier of its Info.plist; their data containers in
// /var/mobile/Containers/Data/Application/<UUID>, found by the MCMMetadataIdentifier of the
// container's metadata property list. Looked up afresh on every call.
std::optional<std::string> findAppFolder(const std::string& bundleIdentifier);
std::optional<std::string> findDataContainer(const std::string& bundleIdentifier);

}  // namespace velto
