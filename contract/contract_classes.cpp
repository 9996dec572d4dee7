#include "contract/contract_classes.h"

#include "contract/nv_control_table_cell.h"
#include "contract/nv_misc_settings_view_controller.h"
#include "contract/velto_base_messages_settings_controller.h"
#include "contract/velto_base_settings_controller.h"
#include "platform/prefs/runtime.h"

namespace velto {

void registerContractClasses() {
    auto& runtime = plat::Runtime::shared();
    // The shared-settings class is reached by name at run time by code that does not link
    // the library (the Mail avatars); the name must be known to the runtime.
    runtime.registerClass("VeltoSettings", "NSObject");
    VeltoBaseSettingsController::registerClass(runtime);
    VeltoBaseMessagesSettingsController::registerClass(runtime);
    NVMiscSettingsViewController::registerClass(runtime);
    NVControlTableCell::registerClass(runtime);
}

}  // namespace velto
