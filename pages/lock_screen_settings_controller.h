#pragma once

#include <string>

#include "kit/enable_switch_page.h"

namespace velto {

// Contact pictures on the lock screen.
class LockScreenSettingsController : public EnableSwitchPage {
  public:
    LockScreenSettingsController();
    static constexpr const char* kClassName = "LockScreenSettingsController";
    std::string className() const override { return kClassName; }

    bool isVeltoEnabledForLockScreen() { return isEnabled(); }
    void lockScreenEnabledOrDisabled(const plat::Value& value,
                                     const plat::SpecifierPtr& specifier) {
        enabledOrDisabled(value, specifier);
    }

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
