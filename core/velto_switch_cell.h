#pragma once

#include <string>

#include "contract/nv_control_table_cell.h"

namespace velto {

// The bundle's switch cell: switches turn on in the product colour.
class VeltoSwitchCell : public NVControlTableCell {
  public:
    static constexpr const char* kClassName = "VeltoSwitchCell";
    std::string className() const override { return kClassName; }
    plat::ColorPtr switchCellOnTintColor() override;

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
