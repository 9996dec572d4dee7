#include "pages/velto_ring_ledger_settings_controller.h"

#include "contract/catalogue.h"
#include "contract/enabled_query.h"
#include "platform/prefs/runtime.h"

namespace velto {

bool VeltoRingLedgerSettingsController::initForContentSize(plat::Size size) {
    if (!VeltoBaseMessagesSettingsController::initForContentSize(size)) return false;
    loadSettingsFromFile(settingsFilePathFor(files::kWhatsAppSettings));
    return true;
}

plat::SpecifierArrayPtr VeltoRingLedgerSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    setHeldSpecifiers(loadSpecifiersFromPlistName("RingLedger", shared_from_this()));
    return heldSpecifiers();
}

void VeltoRingLedgerSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = VeltoRingLedgerSettingsController;
    runtime.registerClass<Self, VeltoBaseMessagesSettingsController>(kBundlePath);
}

}  // namespace velto
