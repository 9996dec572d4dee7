#pragma once

#include <string>

#include "contract/velto_base_settings_controller.h"

namespace velto {

// A page with one enable switch (row 1 of its resource, under the group at row 0) and rows
// from index 2 on that are shown only while the switch is on. The state is one boolean of the
// main settings file, read afresh at each use. The Lock screen and Notification Center pages
// are this page under two names.
class EnableSwitchPage : public VeltoBaseSettingsController {
  public:
    plat::SpecifierArrayPtr specifiers() override;

  protected:
    EnableSwitchPage(std::string resource, std::string key)
        : resource_(std::move(resource)), key_(std::move(key)) {}

    bool isEnabled();
    // What the page's switch does once the platform hands it the new value.
    void enabledOrDisabled(const plat::Value& value, const plat::SpecifierPtr& specifier);

  private:
    std::string resource_;
    std::string key_;
};

}  // namespace velto
