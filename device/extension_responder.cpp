#include "device/extension_responder.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "contract/catalogue.h"
#include "device/app_installer.h"
#include "device/device_profile.h"
#include "device/installed_app_list.h"
#include "device/package_database.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/system/device_root.h"
#include "platform/system/process.h"

namespace velto::device {

namespace {

plat::Value replyWith(const plat::Value& payload) {
    if (payload.isNil()) return plat::Value::dictionary();
    const auto archived = plat::archivedDataWithRootObject(payload);
    if (!archived) return plat::Value::dictionary();
    return plat::Value::dictionary({{requests::kMessageData, plat::Value::data(*archived)}});
}

// The extension's own number for an icon request, written out here rather than taken from the
// bundle's catalogue: the two sides are built apart, and a bundle asking with another kind
// must go without icons, as it would on a device.
constexpr std::int64_t kIconRequestKind = 6;

// The applications as last scanned, kept while the folders that hold them list the same
// entries, as SpringBoard knows its applications without reading them again: the root page
// asks for several icons in a row, and each would otherwise read every application's
// Info.plist. The application list itself is always read afresh.
class AppIndex {
  public:
    std::vector<InstalledApp> scan(const plat::DeviceRoot& root) {
        // Keyed before scanning: an install during the scan leaves a key that no longer
        // matches, and the next question scans again.
        std::string key = listingKey(root);
        auto apps = installedApps(root);
        std::lock_guard lock(mutex_);
        key_ = std::move(key);
        apps_ = apps;
        return apps;
    }
    std::vector<InstalledApp> known(const plat::DeviceRoot& root) {
        {
            std::lock_guard lock(mutex_);
            if (key_ && *key_ == listingKey(root)) return apps_;
        }
        return scan(root);
    }

  private:
    static std::string listingKey(const plat::DeviceRoot& root) {
        std::string key;
        for (const char* folder : {kSystemApplications, kBundleContainers}) {
            for (const std::string& name : root.contentsOfDirectory(folder))
                key += name + "\n";
            key += "\n";
        }
        return key;
    }

    std::mutex mutex_;
    std::optional<std::string> key_;
    std::vector<InstalledApp> apps_;
};

plat::Value appIcon(const plat::DeviceRoot& root, AppIndex& index, const plat::Value& userInfo) {
    const plat::Value kind = userInfo.objectForKey(requests::kMessageID);
    if (!kind.isInteger() || kind.integerValue() != kIconRequestKind)
        return replyWith(plat::Value());
    const auto apps = index.known(root);
    const InstalledApp* app =
        findInstalledApp(apps, userInfo.objectForKey(requests::kMessageData).str());
    if (!app) return replyWith(plat::Value());
    return replyWith(plat::Value(largestIcon(root, *app)));
}

plat::Value applicationRecords(const plat::DeviceRoot& root, AppIndex& index) {
    plat::Value list = plat::Value::array();
    for (const InstalledApp& app : index.scan(root)) {
        plat::Value record =
            plat::Value::dictionary({{records::kBundleIdentifier, app.bundleIdentifier},
                                     {records::kDisplayName, app.displayName},
                                     {records::kType, plat::Value::boolean(app.system)}});
        if (auto icon = largestIcon(root, app))
            record.setValueForKey(records::kImage, plat::Value(icon));
        list.addObject(record);
    }
    return replyWith(list);
}

plat::Value productInformation(const plat::DeviceRoot& root) {
    auto version = extensionVersion(root);
    if (!version) version = installedPackageVersion(root, kProductPackage);
    if (!version) return replyWith(plat::Value());
    return replyWith(plat::Value::dictionary({{"Version", *version}}));
}

}  // namespace

plat::MessageResponder extensionResponder(std::shared_ptr<const plat::DeviceRoot> device) {
    return [device = std::move(device), index = std::make_shared<AppIndex>()](
               const std::string& center, const std::string& message,
               const plat::Value& userInfo) -> plat::Value {
        if (center != requests::kCenterName) return plat::Value();
        const plat::DeviceRoot& root = *device;
        if (message == requests::kAppIcon) return appIcon(root, *index, userInfo);
        if (message == requests::kApps) return applicationRecords(root, *index);
        if (message == requests::kProduct) return productInformation(root);
        return plat::Value();
    };
}

void attachExtension(plat::Process& process) {
    if (!extensionAnswers(process.root())) {
        process.messageCenters().setResponder({});
        return;
    }
    process.messageCenters().setResponder(extensionResponder(process.sharedRoot()));
}

}  // namespace velto::device
