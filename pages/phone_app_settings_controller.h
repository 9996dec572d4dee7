#pragma once

#include <string>

#include "contract/velto_base_settings_controller.h"

namespace velto {

// Contact pictures in the Phone application: the enable switch and, while it is on, the
// favourites switch with the rows that depend on it. The state is asked of the shared
// settings object.
class PhoneAppSettingsController : public VeltoBaseSettingsController {
  public:
    static constexpr const char* kClassName = "PhoneAppSettingsController";
    std::string className() const override { return kClassName; }

    plat::SpecifierArrayPtr specifiers() override;
    bool isPhoneAppEnabled();
    bool isFavoritesEnabled();
    void phoneAppEnabledOrDisabled(const plat::Value& value, const plat::SpecifierPtr& specifier);
    void favoritesEnabledOrDisabled(const plat::Value& value, const plat::SpecifierPtr& specifier);

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
