#include "pages/bite_sms_app_settings_controller.h"

#include "contract/catalogue.h"
#include "platform/prefs/runtime.h"

namespace velto {

plat::SpecifierArrayPtr BiteSMSAppSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    setHeldSpecifiers(loadSpecifiersFromPlistName("BiteSMSApp", shared_from_this()));
    return heldSpecifiers();
}

void BiteSMSAppSettingsController::registerClass(plat::Runtime& runtime) {
    runtime.registerClass<BiteSMSAppSettingsController, VeltoBaseSettingsController>(kBundlePath);
}

}  // namespace velto
