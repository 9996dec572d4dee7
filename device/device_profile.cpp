#include "device/device_profile.h"

#include "device/plist_writing.h"
#include "platform/foundation/plist.h"
#include "platform/system/device_models.h"
#include "platform/system/device_root.h"

namespace velto::device {

bool writeDeviceProfile(const plat::DeviceRoot& root, const DeviceOptions& options) {
    // A scale the family never had keeps the family's usual model: its screen is still one
    // that exists.
    const plat::DeviceModel* model = plat::modelFor(options.family, options.scale);
    if (!model) model = &plat::defaultModel(options.family);
    plat::Value profile = plat::Value::dictionary(
        {{"DeviceFamily", plat::familyName(options.family)},
         {"ProductType", model->productType},
         {"FaceTime", plat::Value::boolean(options.faceTime)},
         {"ScreenScale", plat::Value::integer(options.scale)},
         {"ExtensionAnswers", plat::Value::boolean(options.extensionAnswers)}});
    if (!options.extensionVersion.empty())
        profile.setValueForKey("ExtensionVersion", options.extensionVersion);
    return writeBinaryPlist(root, kDeviceProfile, profile);
}

bool writeSystemVersion(const plat::DeviceRoot& root, const std::string& version) {
    return writeBinaryPlist(
        root, kSystemVersionFile,
        plat::Value::dictionary({{"ProductName", "iPhone OS"}, {"ProductVersion", version}}));
}

std::optional<std::string> extensionVersion(const plat::DeviceRoot& root) {
    const auto bytes = root.readFile(kDeviceProfile);
    if (!bytes) return std::nullopt;
    const plat::Value version = plat::propertyListFromData(*bytes).objectForKey("ExtensionVersion");
    if (!version.isString()) return std::nullopt;
    return version.str();
}

bool extensionAnswers(const plat::DeviceRoot& root) {
    const auto bytes = root.readFile(kDeviceProfile);
    if (!bytes) return true;
    const plat::Value answers = plat::propertyListFromData(*bytes).objectForKey("ExtensionAnswers");
    return answers.isNil() || answers.boolValue();
}

}  // namespace velto::device
