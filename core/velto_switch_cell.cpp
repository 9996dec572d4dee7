#include "core/velto_switch_cell.h"

#include "contract/catalogue.h"
#include "contract/velto_utils.h"
#include "platform/prefs/runtime.h"

namespace velto {

plat::ColorPtr VeltoSwitchCell::switchCellOnTintColor() {
    return VeltoUtils::navigationBarColor(className(), "nav");
}

void VeltoSwitchCell::registerClass(plat::Runtime& runtime) {
    runtime.registerClass<VeltoSwitchCell, NVControlTableCell>(kBundlePath);
}

}  // namespace velto
