#include "pages/contacts_app_settings_controller.h"

#include "contract/catalogue.h"
#include "platform/prefs/runtime.h"

namespace velto {

plat::SpecifierArrayPtr ContactsAppSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    setHeldSpecifiers(loadSpecifiersFromPlistName("ContactsApp", shared_from_this()));
    return heldSpecifiers();
}

void ContactsAppSettingsController::registerClass(plat::Runtime& runtime) {
    runtime.registerClass<ContactsAppSettingsController, VeltoBaseSettingsController>(kBundlePath);
}

}  // namespace velto
