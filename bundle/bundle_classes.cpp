#include "bundle/bundle_classes.h"

#include "about/velto_misc_controller.h"
#include "about/velto_package_header_cell.h"
#include "apps/velto_disabled_apps_settings_controller.h"
#include "contract/contract_classes.h"
#include "core/core_classes.h"
#include "general/velto_general_settings_controller.h"
#include "pages/bite_sms_app_settings_controller.h"
#include "pages/contacts_app_settings_controller.h"
#include "pages/face_time_app_settings_controller.h"
#include "pages/lock_screen_settings_controller.h"
#include "pages/mail_app_settings_controller.h"
#include "pages/messages_app_settings_controller.h"
#include "pages/nc_app_settings_controller.h"
#include "pages/phone_app_settings_controller.h"
#include "pages/velto_nv_recents_settings_controller.h"
#include "pages/velto_ring_ledger_settings_controller.h"
#include "platform/prefs/runtime.h"

namespace velto {

void registerBundleClasses() {
    registerContractClasses();
    registerCoreClasses();
    auto& runtime = plat::Runtime::shared();
    PhoneAppSettingsController::registerClass(runtime);
    FaceTimeAppSettingsController::registerClass(runtime);
    MailAppSettingsController::registerClass(runtime);
    MessagesAppSettingsController::registerClass(runtime);
    LockScreenSettingsController::registerClass(runtime);
    NCAppSettingsController::registerClass(runtime);
    ContactsAppSettingsController::registerClass(runtime);
    BiteSMSAppSettingsController::registerClass(runtime);
    VeltoRingLedgerSettingsController::registerClass(runtime);
    VeltoNVRecentsSettingsController::registerClass(runtime);
    VeltoGeneralSettingsController::registerClass(runtime);
    VeltoDisabledAppsSettingsController::registerClass(runtime);
    VeltoMiscController::registerClass(runtime);
    VeltoPackageHeaderCell::registerClass(runtime);
}

}  // namespace velto
