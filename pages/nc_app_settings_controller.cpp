#include "pages/nc_app_settings_controller.h"

#include "contract/catalogue.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"

namespace velto {

NCAppSettingsController::NCAppSettingsController()
    : EnableSwitchPage("NCApp", keys::kNotificationCenter) {}

void NCAppSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = NCAppSettingsController;
    runtime.registerClass<Self, VeltoBaseSettingsController>(kBundlePath);
    plat::addSetter<Self>(runtime,
                          "ncAppEnabledOrDisabled:specifier:", &Self::ncAppEnabledOrDisabled);
}

}  // namespace velto
