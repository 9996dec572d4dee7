#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/velto_disabled_apps_settings_controller.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/ui/image.h"
#include "tests/support/bundle_device.h"

namespace appstest {

using Page = velto::VeltoDisabledAppsSettingsController;

// One application record as the extension's SpringBoard side sends it.
inline plat::Value record(const std::string& id, const std::string& name, bool system) {
    return plat::Value::dictionary(
        {{"VeltoBundleIdentifier", id},
         {"VeltoFolderDisplayName", name},
         {"VeltoType", plat::Value::boolean(system)},
         {"VeltoFolderImage", plat::Value(plat::Image::blank(4, 4, 2))}});
}

// A device whose extension answers the application-list request with a fixed reply.
class AppsDevice : public testsupport::BundleDevice {
  public:
    // The preferences folder is there on every device; the exclusion list is written into it.
    AppsDevice() { writeSettings({}); }
    void answerReply(plat::Value reply) {
        process().messageCenters().setResponder(
            [reply](const std::string&, const std::string& message, const plat::Value&) {
                return message == "com.norvale.velto.apps" ? reply : plat::Value();
            });
    }
    void answerRecords(const plat::Value& records) {
        answerReply(plat::Value::dictionary(
            {{"VeltoServiceMessageData",
              plat::Value::data(*plat::archivedDataWithRootObject(records))}}));
    }
    std::shared_ptr<Page> page() const { return open<Page>("VeltoDisabledAppsSettingsController"); }
    // Row names in order, group titles included; "(nil)" for a nameless row.
    static std::vector<std::string> names(const plat::SpecifierArrayPtr& list) {
        std::vector<std::string> out;
        for (const auto& row : *list)
            out.push_back(row->name().value_or("(nil)"));
        return out;
    }
};

}  // namespace appstest
