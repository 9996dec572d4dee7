#include "contract/installed_apps.h"

#include "platform/foundation/strings.h"
#include "platform/system/plist_file.h"
#include "platform/system/process.h"

namespace velto {

namespace {

const char* const kSystemApps = "/Applications";
const char* const kBundleContainers = "/var/containers/Bundle/Application";
const char* const kDataContainers = "/var/mobile/Containers/Data/Application";
const char* const kContainerMetadata = ".com.apple.mobile_container_manager.metadata.plist";

bool identifies(const std::string& appFolder, const std::string& bundleIdentifier) {
    const plat::Value info = plat::dictionaryWithContentsOfFile(
        plat::stringByAppendingPathComponent(appFolder, "Info.plist"));
    return info.objectForKey("CFBundleIdentifier").str() == bundleIdentifier;
}

std::optional<std::string> findIn(const std::string& folder, const std::string& bundleIdentifier) {
    auto& root = plat::Process::current().root();
    for (const std::string& name : root.contentsOfDirectory(folder)) {
        if (!name.ends_with(".app")) continue;
        const std::string app = plat::stringByAppendingPathComponent(folder, name);
        if (identifies(app, bundleIdentifier)) return app;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> findAppFolder(const std::string& bundleIdentifier) {
    if (bundleIdentifier.empty()) return std::nullopt;
    if (auto app = findIn(kSystemApps, bundleIdentifier)) return app;
    auto& root = plat::Process::current().root();
    for (const std::string& uuid : root.contentsOfDirectory(kBundleContainers)) {
        if (auto app = findIn(plat::stringByAppendingPathComponent(kBundleContainers, uuid),
                              bundleIdentifier))
            return app;
    }
    return std::nullopt;
}

std::optional<std::string> findDataContainer(const std::string& bundleIdentifier) {
    if (bundleIdentifier.empty()) return std::nullopt;
    auto& root = plat::Process::current().root();
    for (const std::string& uuid : root.contentsOfDirectory(kDataContainers)) {
        const std::string container = plat::stringByAppendingPathComponent(kDataContainers, uuid);
        const plat::Value metadata = plat::dictionaryWithContentsOfFile(
            plat::stringByAppendingPathComponent(container, kContainerMetadata));
        if (metadata.objectForKey("MCMMetadataIdentifier").str() == bundleIdentifier)
            return container;
    }
    return std::nullopt;
}

}  // namespace velto
