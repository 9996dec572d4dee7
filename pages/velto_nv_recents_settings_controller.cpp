#include "pages/velto_nv_recents_settings_controller.h"

#include <optional>
#include <string>

#include "contract/catalogue.h"
#include "contract/enabled_query.h"
#include "contract/list_categories.h"
#include "platform/prefs/runtime.h"

namespace velto {

namespace {

const char* const kVersion = " 2";

// Appending to nothing gives nothing.
std::optional<std::string> withVersion(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    return *text + kVersion;
}

}  // namespace

bool VeltoNVRecentsSettingsController::initForContentSize(plat::Size size) {
    if (!VeltoBaseMessagesSettingsController::initForContentSize(size)) return false;
    loadSettingsFromFile(settingsFilePathFor(files::kWhatsAppSettings));
    return true;
}

plat::SpecifierArrayPtr VeltoNVRecentsSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    setHeldSpecifiers(loadSpecifiersFromPlistName("Recents", shared_from_this()));
    const auto held = heldSpecifiers();
    // The resource must hold the row: a missing one (-1) fails on the array's range check.
    const auto row =
        held->objectAtIndex(static_cast<std::size_t>(nv__identifierIndex(held, kRecentsRow)));
    row->setName(withVersion(row->name()));
    return held;
}

void VeltoNVRecentsSettingsController::viewDidLoad() {
    VeltoBaseMessagesSettingsController::viewDidLoad();
    navigationItem().setTitle(withVersion(navigationItem().title()));
}

void VeltoNVRecentsSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = VeltoNVRecentsSettingsController;
    runtime.registerClass<Self, VeltoBaseMessagesSettingsController>(kBundlePath);
}

}  // namespace velto
