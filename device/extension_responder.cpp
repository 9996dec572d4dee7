#include "device/extension_responder.h"

#include <cstdint>

#include "contract/catalogue.h"
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

plat::Value appIcon(const plat::DeviceRoot& root, const plat::Value& userInfo) {
    const plat::Value kind = userInfo.objectForKey(requests::kMessageID);
    if (!kind.isInteger() || kind.integerValue() != kIconRequestKind)
        return replyWith(plat::Value());
    const auto apps = installedApps(root);
    const InstalledApp* app =
        findInstalledApp(apps, userInfo.objectForKey(requests::kMessageData).str());
    if (!app) return replyWith(plat::Value());
    return replyWith(plat::Value(largestIcon(root, *app)));
}

plat::Value applicationRecords(const plat::DeviceRoot& root) {
    plat::Value list = plat::Value::array();
    for (const InstalledApp& app : installedApps(root)) {
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
    return [device = std::move(device)](const std::string& center, const std::string& message,
                                        const plat::Value& userInfo) -> plat::Value {
        if (center != requests::kCenterName) return plat::Value();
        const plat::DeviceRoot& root = *device;
        if (message == requests::kAppIcon) return appIcon(root, userInfo);
        if (message == requests::kApps) return applicationRecords(root);
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
