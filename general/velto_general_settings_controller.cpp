#include "general/velto_general_settings_controller.h"

#include <cstdint>
#include <memory>
#include <optional>

#include "contract/catalogue.h"
#include "contract/enabled_query.h"
#include "contract/list_categories.h"
#include "kit/row_editing.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"
#include "platform/prefs/user_defaults.h"
#include "platform/system/bundle.h"
#include "platform/system/process.h"
#include "platform/ui/alert_controller.h"

namespace velto {

namespace {

const char* const kGeneralResource = "General";
const char* const kFooterText = "footerText";
const char* const kRestartCommand = "killall backboardd";

// The index is trusted: a resource without the row gives -1, which reaches the array as a
// huge index and fails there with the range error.
std::size_t coloredMonogramIndex(const plat::SpecifierArrayPtr& list) {
    return static_cast<std::size_t>(
        nv__identifierIndex(list, VeltoGeneralSettingsController::kColoredMonogramRow));
}

}  // namespace

bool VeltoGeneralSettingsController::isMonogramEnabled() {
    return enabledQuery(keys::kMonogram, files::kMainSettings);
}

plat::SpecifierArrayPtr VeltoGeneralSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    auto list = loadSpecifiersFromPlistName(kGeneralResource, shared_from_this());
    if (!isMonogramEnabled()) {
        list->removeObjectAtIndex(coloredMonogramIndex(list));
        list->objectAtIndex(0)->removePropertyForKey(kFooterText);
    }
    setHeldSpecifiers(list);
    return list;
}

void VeltoGeneralSettingsController::veltoMonogramEnabledOrDisabled(
    const plat::Value& value, const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    enableDisableColoredMonogramSettings(value.boolValue());
}

void VeltoGeneralSettingsController::enableDisableColoredMonogramSettings(bool enabled) {
    const auto held = heldSpecifiers();
    if (!held) return;
    const auto fresh = loadSpecifiersFromPlistName(kGeneralResource, shared_from_this());
    const std::size_t k = coloredMonogramIndex(fresh);
    const auto firstGroup = held->objectAtIndex(0);
    if (enabled) {
        firstGroup->setProperty(fresh->objectAtIndex(0)->propertyForKey(kFooterText), kFooterText);
        insertSpecifier(fresh->objectAtIndex(k), k, true);
    } else {
        // The file's index, not the shown row's: the page and the file agree while the list
        // is only edited here.
        removeSpecifierAtIndex(k, true);
        firstGroup->removePropertyForKey(kFooterText);
    }
    reloadSpecifier(firstGroup, true);
}

void VeltoGeneralSettingsController::veltoRoundedPicsEnabledOrDisabled(
    const plat::Value& value, const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
}

void VeltoGeneralSettingsController::veltoUseLocalCacheEnabledOrDisabled(
    const plat::Value& value, const plat::SpecifierPtr& specifier) {
    // Nothing is stored until the user confirms: the extension rebuilds its cache only after
    // a restart, so a stored change without one would leave it half switched.
    auto sheet = plat::AlertController::alertControllerWithTitle(
        std::nullopt,
        plat::NSLocalizedString(
            "Are you sure you want to continue? Your device will respring once it is done."),
        plat::UIAlertControllerStyleActionSheet);
    const std::weak_ptr<VeltoGeneralSettingsController> weakSelf =
        std::dynamic_pointer_cast<VeltoGeneralSettingsController>(shared_from_this());

    sheet->addAction(plat::AlertAction::actionWithTitle(
        plat::NSLocalizedString("Continue"), plat::UIAlertActionStyleDestructive,
        [weakSelf, value, specifier](plat::AlertAction&) {
            if (const auto self = weakSelf.lock()) self->setPreferenceValue(value, specifier);
            plat::UserDefaults::standardUserDefaults().synchronize();
            plat::Process::current().shell().system(kRestartCommand);
        }));
    sheet->addAction(plat::AlertAction::actionWithTitle(
        plat::NSLocalizedString("Cancel"), plat::UIAlertActionStyleCancel,
        [weakSelf, value, specifier](plat::AlertAction&) {
            // The old value is written again, so whoever watches the row hears it is unchanged.
            const auto previous = plat::Value::integer(value.boolValue() ? 0 : 1);
            const auto self = weakSelf.lock();
            if (self) self->setPreferenceValue(previous, specifier);
            plat::UserDefaults::standardUserDefaults().synchronize();
            if (self) self->reloadSpecifier(specifier, true);
        }));
    presentViewController(sheet, true, nullptr);
}

void VeltoGeneralSettingsController::disableMonogramRelatedSettings(
    const plat::SpecifierArrayPtr& specifiers) {
    if (!specifiers) return;
    rows::removeDownToTwo(*specifiers, specifiers->count() - 2);
}

void VeltoGeneralSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = VeltoGeneralSettingsController;
    runtime.registerClass<Self, VeltoBaseSettingsController>(kBundlePath);
    plat::addSetter<Self>(runtime, "veltoMonogramEnabledOrDisabled:specifier:",
                          &Self::veltoMonogramEnabledOrDisabled);
    plat::addSetter<Self>(runtime, "veltoRoundedPicsEnabledOrDisabled:specifier:",
                          &Self::veltoRoundedPicsEnabledOrDisabled);
    plat::addSetter<Self>(runtime, "veltoUseLocalCacheEnabledOrDisabled:specifier:",
                          &Self::veltoUseLocalCacheEnabledOrDisabled);
}

}  // namespace velto
