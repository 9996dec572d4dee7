#pragma once

#include <string>

#include "contract/velto_base_settings_controller.h"

namespace velto {

// Options for pictures everywhere: monogram pictures (with the "Colored Monogram" row and the
// first group's footer, both shown only while monograms are on), rounded pictures, and the
// local picture cache, whose change is confirmed in a sheet because it restarts the
// device's user interface. Only the monogram state is read back, from the main settings file
// at each use.
class VeltoGeneralSettingsController : public VeltoBaseSettingsController {
  public:
    static constexpr const char* kColoredMonogramRow = "Colored Monogram";

    static constexpr const char* kClassName = "VeltoGeneralSettingsController";

    std::string className() const override { return kClassName; }

    plat::SpecifierArrayPtr specifiers() override;
    bool isMonogramEnabled();

    void veltoMonogramEnabledOrDisabled(const plat::Value& value,
                                        const plat::SpecifierPtr& specifier);
    void enableDisableColoredMonogramSettings(bool enabled);
    void veltoRoundedPicsEnabledOrDisabled(const plat::Value& value,
                                           const plat::SpecifierPtr& specifier);
    void veltoUseLocalCacheEnabledOrDisabled(const plat::Value& value,
                                             const plat::SpecifierPtr& specifier);
    // Keeps elements 0, 1 and the last of a list and drops the rest. Nothing on the page
    // calls it; it stays for callers that trim a list of their own.
    void disableMonogramRelatedSettings(const plat::SpecifierArrayPtr& specifiers);

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
