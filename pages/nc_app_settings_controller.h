#pragma once

#include <string>

#include "kit/enable_switch_page.h"

namespace velto {

// Contact pictures in Notification Center.
class NCAppSettingsController : public EnableSwitchPage {
  public:
    NCAppSettingsController();
    static constexpr const char* kClassName = "NCAppSettingsController";
    std::string className() const override { return kClassName; }

    bool isNotificationCenterEnabled() { return isEnabled(); }
    void ncAppEnabledOrDisabled(const plat::Value& value, const plat::SpecifierPtr& specifier) {
        enabledOrDisabled(value, specifier);
    }

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
