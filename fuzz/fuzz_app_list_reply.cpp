// Any bytes as the application-list reply's payload, through the Excluded applications page's
// row building: rows or an empty page, never a crash, a hang or a leak.
#include <memory>
#include <string>

#include "apps/velto_disabled_apps_settings_controller.h"
#include "memory_bundle.h"

void fuzzInBundle(MemoryBundle& device, const plat::Bytes& input) {
    const plat::Value reply =
        plat::Value::dictionary({{"VeltoServiceMessageData", plat::Value::data(input)}});
    device.process().messageCenters().setResponder(
        [reply](const std::string&, const std::string&, const plat::Value&) { return reply; });
    auto page = std::make_shared<velto::VeltoDisabledAppsSettingsController>();
    page->initForContentSize({320, 568});
    page->specifiers();
}
