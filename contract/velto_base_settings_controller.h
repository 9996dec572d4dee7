#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/prefs/list_controller.h"
#include "platform/ui/bar_button_item.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"

namespace plat {
class Runtime;
}

namespace velto {

// The extension library's page base. Pages override a few appearance hooks; the base applies
// them when the page's view loads and answers the back button.
class VeltoBaseSettingsController : public plat::ListController {
  public:
    static constexpr const char* kClassName = "VeltoBaseSettingsController";
    std::string className() const override { return kClassName; }

    // Appearance hooks, with the base's defaults.
    virtual bool hasCustomNavigationBarColor() { return false; }
    // The colour of the page bundle's "nav" image.
    virtual plat::ColorPtr customNavigationBarColor();
    // Below system version 11 a plain "Velto" button that calls backButtonAction:; from 11
    // on null (the system's back button).
    virtual std::shared_ptr<plat::BarButtonItem> customBackButton();
    virtual std::string twitterMessage();
    // The "twitter" image of the page's bundle.
    virtual plat::ImagePtr twitterImage();
    // The product glyph stands in for the text title unless a page says otherwise.
    virtual bool shouldShowImageAsTitle() { return true; }

    void viewDidLoad() override;
    // The custom back button's action: leaves the page.
    void backButtonAction(const plat::ObjectPtr& sender);

    // The folder of an installed application, or nil when it is not installed.
    static std::optional<std::string> getAppFolderPath(const std::string& bundleIdentifier);

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
