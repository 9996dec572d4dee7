#include "pages/lock_screen_settings_controller.h"

#include "contract/catalogue.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"

namespace velto {

LockScreenSettingsController::LockScreenSettingsController()
    : EnableSwitchPage("LockScreen", keys::kLockScreen) {}

void LockScreenSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = LockScreenSettingsController;
    runtime.registerClass<Self, VeltoBaseSettingsController>(kBundlePath);
    plat::addSetter<Self>(
        runtime, "lockScreenEnabledOrDisabled:specifier:", &Self::lockScreenEnabledOrDisabled);
}

}  // namespace velto
