#pragma once

#include <string>

#include "contract/velto_base_settings_controller.h"

namespace velto {

// Contact pictures in biteSMS. The rows are the resource's own; its switches store through the
// platform.
class BiteSMSAppSettingsController : public VeltoBaseSettingsController {
  public:
    static constexpr const char* kClassName = "BiteSMSAppSettingsController";
    std::string className() const override { return kClassName; }

    plat::SpecifierArrayPtr specifiers() override;

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
