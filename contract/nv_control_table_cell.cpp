#include "contract/nv_control_table_cell.h"

#include "platform/prefs/runtime.h"

namespace velto {

bool NVControlTableCell::initWithStyle(int style, const std::optional<std::string>& reuseIdentifier,
                                       const plat::SpecifierPtr& specifier) {
    if (!TableCell::initWithStyle(style, reuseIdentifier, specifier)) return false;
    if (auto control = this->control()) {
        if (auto tint = switchCellOnTintColor()) control->setOnTintColor(tint);
    }
    return true;
}

void NVControlTableCell::registerClass(plat::Runtime& runtime) {
    runtime.registerClass<NVControlTableCell, plat::TableCell>();
}

}  // namespace velto
