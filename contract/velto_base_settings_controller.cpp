#include "contract/velto_base_settings_controller.h"

#include "contract/appearance.h"
#include "contract/installed_apps.h"
#include "contract/velto_utils.h"
#include "platform/prefs/runtime.h"
#include "platform/ui/navigation_controller.h"

namespace velto {

plat::ColorPtr VeltoBaseSettingsController::customNavigationBarColor() {
    return VeltoUtils::navigationBarColor(className(), "nav");
}

std::shared_ptr<plat::BarButtonItem> VeltoBaseSettingsController::customBackButton() {
    return makeBackButton(shared_from_this(), className());
}

std::string VeltoBaseSettingsController::twitterMessage() {
    return sharingMessage();
}

plat::ImagePtr VeltoBaseSettingsController::twitterImage() {
    return bundleImage(className(), "twitter");
}

void VeltoBaseSettingsController::viewDidLoad() {
    ListController::viewDidLoad();
    Appearance appearance;
    appearance.backButton = customBackButton();
    if (hasCustomNavigationBarColor()) appearance.barTint = customNavigationBarColor();
    if (shouldShowImageAsTitle()) appearance.titleImage = bundleImage(className(), "Velto");
    applyAppearance(*this, appearance);
}

void VeltoBaseSettingsController::backButtonAction(const plat::ObjectPtr&) {
    if (auto navigation = navigationController()) navigation->popViewControllerAnimated(true);
}

std::optional<std::string> VeltoBaseSettingsController::getAppFolderPath(
    const std::string& bundleIdentifier) {
    return findAppFolder(bundleIdentifier);
}

void VeltoBaseSettingsController::registerClass(plat::Runtime& runtime) {
    runtime.registerClass(kClassName, plat::ListController::kClassName);
    runtime.addMethod("VeltoBaseSettingsController", "backButtonAction:",
                      plat::bindMethod<VeltoBaseSettingsController>(
                          [](VeltoBaseSettingsController& self, const plat::Arguments& args) {
                              self.backButtonAction(plat::argumentAt(args, 0).asObject());
                              return plat::Value();
                          }));
}

}  // namespace velto
