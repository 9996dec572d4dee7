#pragma once

#include <string>

#include "contract/velto_base_settings_controller.h"

namespace velto {

// Contact pictures in FaceTime. On iPad and iPod touch, which have no Phone application,
// the page governs the Phone key ("PhoneAppEnabled") and loads its iPad resource; the state is
// read from the main settings file afresh on every question.
class FaceTimeAppSettingsController : public VeltoBaseSettingsController {
  public:
    static constexpr const char* kClassName = "FaceTimeAppSettingsController";
    std::string className() const override { return kClassName; }

    plat::SpecifierArrayPtr specifiers() override;
    bool isVeltoEnabledForFaceTime();
    bool isFavoritesEnabled();
    void faceTimeAppEnabledOrDisabled(const plat::Value& value,
                                      const plat::SpecifierPtr& specifier);
    void favoritesEnabledOrDisabled(const plat::Value& value, const plat::SpecifierPtr& specifier);

    static void registerClass(plat::Runtime& runtime);

  private:
    std::string resourceName() const;
};

}  // namespace velto
