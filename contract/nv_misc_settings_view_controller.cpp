#include "contract/nv_misc_settings_view_controller.h"

#include <chrono>
#include <ctime>

#include "contract/appearance.h"
#include "platform/prefs/runtime.h"
#include "platform/system/bundle.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/navigation_controller.h"

namespace velto {

std::int64_t NVMiscSettingsViewController::currentYear() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm tm{};
    localtime_r(&now, &tm);
    return tm.tm_year + 1900;
}

plat::SpecifierArrayPtr NVMiscSettingsViewController::specifiers() {
    if (!heldSpecifiers()) {
        setHeldSpecifiers(loadSpecifiersFromPlistName(specifiersFileName(), shared_from_this()));
        if (auto footerRow = copyRightSpecifier())
            footerRow->setProperty(copryRightSpecifierText(currentYear()), "footerText");
    }
    return heldSpecifiers();
}

void NVMiscSettingsViewController::viewDidLoad() {
    ListController::viewDidLoad();
    Appearance appearance;
    appearance.backButton = customBackButton();
    if (hasCustomNavigationBarColor()) appearance.barTint = customNavigationBarColor();
    applyAppearance(*this, appearance);
}

void NVMiscSettingsViewController::showError(const std::string& text) {
    auto alert = plat::AlertController::alertControllerWithTitle(productName(), text,
                                                                 plat::UIAlertControllerStyleAlert);
    alert->addAction(plat::AlertAction::actionWithTitle(
        plat::Bundle::mainBundle().localizedStringForKey("OK", "", ""),
        plat::UIAlertActionStyleDefault, {}));
    presentViewController(alert, true, {});
}

void NVMiscSettingsViewController::backButtonAction(const plat::ObjectPtr&) {
    if (auto navigation = navigationController()) navigation->popViewControllerAnimated(true);
}

void NVMiscSettingsViewController::registerClass(plat::Runtime& runtime) {
    runtime.registerClass("NVMiscSettingsViewController", "PSListController");
    runtime.addMethod("NVMiscSettingsViewController", "backButtonAction:",
                      plat::bindMethod<NVMiscSettingsViewController>(
                          [](NVMiscSettingsViewController& self, const plat::Arguments& args) {
                              self.backButtonAction(plat::argumentAt(args, 0).asObject());
                              return plat::Value();
                          }));
}

}  // namespace velto
