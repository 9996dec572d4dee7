#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "contract/nv_misc_settings_view_controller.h"

namespace velto {

// The About page: the product's answers to the maker's about-page base, the version footer,
// and a guard in front of log mailing, since a log written with logging off holds nothing
// that would help support.
class VeltoMiscController : public NVMiscSettingsViewController {
  public:
    static constexpr const char* kCopyRightIdentifier = "VeltoCopyRightHeader";

    static constexpr const char* kClassName = "VeltoMiscController";

    std::string className() const override { return kClassName; }

    std::string serviceName() override;
    std::string productName() override;
    std::string specifiersFileName() override { return "VeltoMisc"; }
    std::string twitterMessage() override;
    plat::ImagePtr twitterImage() override;
    bool hasCustomNavigationBarColor() override { return true; }
    plat::ColorPtr customNavigationBarColor() override;
    std::shared_ptr<plat::BarButtonItem> customBackButton() override;
    plat::SpecifierPtr copyRightSpecifier() override;
    // The version as the package manager (or else SpringBoard) reports it, and the year as
    // given; a version nobody knows prints as "(null)".
    std::string copryRightSpecifierText(std::int64_t year) override;
    // With logging off, tells the user to switch it on instead of mailing.
    void emailLogFile(const plat::ObjectPtr& sender) override;

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
