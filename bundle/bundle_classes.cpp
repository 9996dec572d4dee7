#include "bundle/bundle_classes.h"

#include "about/velto_misc_controller.h"
#include "about/velto_package_header_cell.h"
#include "apps/velto_disabled_apps_settings_controller.h"
#include "contract/contract_classes.h"
#include "core/core_classes.h"
#include "pages/face_time_app_settings_controller.h"
#include "pages/mail_app_settings_controller.h"
#include "pages/phone_app_settings_controller.h"
#include "platform/prefs/runtime.h"

namespace velto {

void registerBundleClasses() {
    registerContractClasses();
    registerCoreClasses();
    auto& runtime = plat::Runtime::shared();
    PhoneAppSettingsController::registerClass(runtime);
    FaceTimeAppSettingsController::registerClass(runtime);
    MailAppSettingsController::registerClass(runtime);
    VeltoDisabledAppsSettingsController::registerClass(runtime);
    VeltoMiscController::registerClass(runtime);
    VeltoPackageHeaderCell::registerClass(runtime);
}

}  // namespace velto
