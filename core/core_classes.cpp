#include "core/core_classes.h"

#include "core/velto_settings_controller.h"
#include "core/velto_switch_cell.h"
#include "platform/prefs/runtime.h"

namespace velto {

void registerCoreClasses() {
    auto& runtime = plat::Runtime::shared();
    VeltoSettingsController::registerClass(runtime);
    VeltoSwitchCell::registerClass(runtime);
}

}  // namespace velto
