#include "pages/phone_app_settings_controller.h"

#include "contract/catalogue.h"
#include "contract/velto_settings.h"
#include "kit/row_editing.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"
#include "platform/prefs/user_defaults.h"

namespace velto {

namespace {
const char* const kPhoneResource = "PhoneApp";
}

bool PhoneAppSettingsController::isPhoneAppEnabled() {
    return VeltoSettings::sharedSettings()->isVeltoEnabled_Phone();
}

bool PhoneAppSettingsController::isFavoritesEnabled() {
    return VeltoSettings::sharedSettings()->isShowFavoritesContactImage();
}

plat::SpecifierArrayPtr PhoneAppSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    auto list = loadSpecifiersFromPlistName(kPhoneResource, shared_from_this());
    if (isPhoneAppEnabled()) {
        if (!isFavoritesEnabled()) {
            list->removeObjectAtIndex(5);
            list->removeObjectAtIndex(4);
            list->objectAtIndex(2)->removePropertyForKey("footerText");
        }
        // The file's last row is never shown on an enabled page.
        list->removeLastObject();
    } else {
        rows::removeDownToTwo(*list, list->count() - 1);
    }
    setHeldSpecifiers(list);
    return list;
}

void PhoneAppSettingsController::phoneAppEnabledOrDisabled(const plat::Value& value,
                                                           const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    auto held = heldSpecifiers();
    if (!held) return;
    const std::size_t shown = held->count();
    if (value.boolValue()) {
        // Whatever favourites say: the rows they would prune come back too.
        auto fresh = loadSpecifiersFromPlistName(kPhoneResource, shared_from_this());
        rows::insertAtOwnIndexes(*this, *fresh, 2, fresh->count() - 1, true);
    } else {
        rows::removeShownDownToTwo(*this, shown - 1, true);
    }
}

void PhoneAppSettingsController::favoritesEnabledOrDisabled(const plat::Value& value,
                                                            const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    if (!heldSpecifiers()) return;
    rows::applyFavourites(*this, *loadSpecifiersFromPlistName(kPhoneResource, shared_from_this()),
                          value.boolValue(), false);
}

void PhoneAppSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = PhoneAppSettingsController;
    runtime.registerClass<Self, VeltoBaseSettingsController>(kBundlePath);
    plat::addSetter<Self>(runtime,
                          "phoneAppEnabledOrDisabled:specifier:", &Self::phoneAppEnabledOrDisabled);
    plat::addSetter<Self>(
        runtime, "favoritesEnabledOrDisabled:specifier:", &Self::favoritesEnabledOrDisabled);
}

}  // namespace velto
