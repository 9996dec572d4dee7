#include "pages/face_time_app_settings_controller.h"

#include <cstdint>

#include "contract/catalogue.h"
#include "contract/enabled_query.h"
#include "contract/list_categories.h"
#include "contract/velto_utils.h"
#include "kit/row_editing.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"
#include "platform/prefs/user_defaults.h"

namespace velto {

namespace {

// Removes elements k, k-1, ..., 2. The comparison is signed: nothing goes when k < 2.
void removeFromMonogramDown(plat::SpecifierArray& list, std::int64_t k) {
    for (std::int64_t i = k; i >= 2; --i)
        list.removeObjectAtIndex(static_cast<std::size_t>(i));
}

}  // namespace

std::string FaceTimeAppSettingsController::resourceName() const {
    return VeltoUtils::isIPadOrIPod() ? "FaceTimeApp" : "FaceTimeiPhone";
}

bool FaceTimeAppSettingsController::isVeltoEnabledForFaceTime() {
    return enabledQuery(VeltoUtils::isIPadOrIPod() ? keys::kPhone : keys::kFaceTime,
                        files::kMainSettings);
}

bool FaceTimeAppSettingsController::isFavoritesEnabled() {
    return enabledQuery(keys::kFavorites, files::kMainSettings);
}

plat::SpecifierArrayPtr FaceTimeAppSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    auto list = loadSpecifiersFromPlistName(resourceName(), shared_from_this());
    if (isVeltoEnabledForFaceTime()) {
        const std::int64_t k = nv__identifierIndex(list, "Monogram Image");
        if (!isFavoritesEnabled()) {
            removeFromMonogramDown(*list, k);
            list->objectAtIndex(2)->removePropertyForKey("footerText");
        }
        // The same range again, on the list as it now stands: with favourites off it is
        // cleared twice, as the page has always done.
        removeFromMonogramDown(*list, k);
    } else {
        rows::removeDownToTwo(*list, list->count() - 1);
    }
    setHeldSpecifiers(list);
    return list;
}

void FaceTimeAppSettingsController::faceTimeAppEnabledOrDisabled(
    const plat::Value& value, const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    auto held = heldSpecifiers();
    if (!held) return;
    const std::size_t shown = held->count();
    if (value.boolValue()) {
        auto fresh = loadSpecifiersFromPlistName(resourceName(), shared_from_this());
        rows::insertAtOwnIndexes(*this, *fresh, 2, fresh->count(), true);
    } else {
        // The last row stays, unlike the build rule.
        rows::removeShownDownToTwo(*this, shown - 2, true);
    }
}

void FaceTimeAppSettingsController::favoritesEnabledOrDisabled(
    const plat::Value& value, const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    if (!heldSpecifiers()) return;
    rows::applyFavourites(*this, *loadSpecifiersFromPlistName(resourceName(), shared_from_this()),
                          value.boolValue(), true);
}

void FaceTimeAppSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = FaceTimeAppSettingsController;
    runtime.registerClass<Self, VeltoBaseSettingsController>(kBundlePath);
    plat::addSetter<Self>(
        runtime, "faceTimeAppEnabledOrDisabled:specifier:", &Self::faceTimeAppEnabledOrDisabled);
    plat::addSetter<Self>(
        runtime, "favoritesEnabledOrDisabled:specifier:", &Self::favoritesEnabledOrDisabled);
}

}  // namespace velto
