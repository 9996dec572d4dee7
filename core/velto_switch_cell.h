#pragma once

#include <string>

#include "contract/nv_control_table_cell.h"

namespace velto {

// The bundle's switch cell: switches turn on in the product colour.
class VeltoSwitchCell : public NVControlTableCell {
  public:
    std::string className() const override { return "VeltoSwitchCell"; }
    plat::ColorPtr switchCellOnTintColor() override;

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
