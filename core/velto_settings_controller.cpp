#include "core/velto_settings_controller.h"

#include <cstdint>

#include "contract/catalogue.h"
#include "contract/list_categories.h"
#include "contract/nv_utils.h"
#include "contract/velto_settings.h"
#include "contract/velto_utils.h"
#include "kit/row_editing.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"
#include "platform/prefs/user_defaults.h"
#include "platform/system/process.h"

namespace velto {

namespace {

constexpr plat::SlotKey<plat::MessageCenter> kMessageCenterSlot{
    "VeltoSettingsController.messageCenter"};

// Where a row is looked for: its found index, or the fallback when the lookup answers a
// negative index. The index is unsigned from here on, as the list operations take it.
std::size_t foundOr(std::int64_t found, std::size_t fallback) {
    return found >= 0 ? static_cast<std::size_t>(found) : fallback;
}

}  // namespace

std::shared_ptr<plat::MessageCenter> VeltoSettingsController::tweakMessageCenter() {
    return plat::Process::current().slots().get(kMessageCenterSlot);
}

bool VeltoSettingsController::initForContentSize(plat::Size size) {
    if (!VeltoBaseMessagesSettingsController::initForContentSize(size)) return false;
    loadSettingsFromFile(settingsFilePath());
    return true;
}

std::string VeltoSettingsController::resourceName() const {
    return VeltoUtils::isIPadOrIPod() ? "VeltoiPad" : "Velto";
}

plat::SpecifierArrayPtr VeltoSettingsController::specifiers() {
    auto& slots = plat::Process::current().slots();
    if (!slots.get(kMessageCenterSlot))
        slots.set(kMessageCenterSlot, NVUtils::messageCenter(requests::kCenterName));

    if (!heldSpecifiers()) {
        if (VeltoSettings::sharedSettings()->isVeltoEnabled()) {
            setHeldSpecifiers(buildEnabledList());
        } else {
            setHeldSpecifiers(hideOtherSpecifiers(
                loadSpecifiersFromPlistName(resourceName(), shared_from_this())));
        }
    }
    fetchIcons(heldSpecifiers());
    return heldSpecifiers();
}

plat::SpecifierArrayPtr VeltoSettingsController::buildEnabledList() {
    const bool whatsApp = isWhatsAppInstalled();
    const bool biteSMS = isBiteSMSInstalled();
    const bool ringLedger = VeltoUtils::isRingLedgerInstalled();
    const bool recents = VeltoUtils::isRecentsInstalled();
    const bool noCustomApplication = !(biteSMS || whatsApp || recents || ringLedger);

    const bool iPadList = VeltoUtils::isIPadOrIPod();
    auto list = loadSpecifiersFromPlistName(iPadList ? "VeltoiPad" : "Velto", shared_from_this());

    // Each index is looked up on the list as the previous steps left it.
    std::int64_t index = nv__identifierIndex(list, "Recents");
    if (recents) {
        // A negative index is taken as it is: the row must exist when the app is installed.
        auto row = list->objectAtIndex(static_cast<std::size_t>(index));
        if (row->name()) row->setName(*row->name() + " 2");
    } else {
        list->removeObjectAtIndex(foundOr(index, 15));
    }

    if (!biteSMS) list->removeObjectAtIndex(foundOr(nv__identifierIndex(list, "biteSMS"), 13));

    if (!ringLedger) {
        index = nv__identifierIndex(list, "RingLedger");
        // The iPad list has no fallback and keeps a row at index 0; this asymmetry is meant.
        if (!iPadList)
            list->removeObjectAtIndex(foundOr(index, 14));
        else if (index > 0)
            list->removeObjectAtIndex(static_cast<std::size_t>(index));
    }

    if (noCustomApplication)
        list->removeObjectAtIndex(foundOr(nv__identifierIndex(list, "Custom Applications"), 12));

    if (!VeltoUtils::isFaceTimeAvailable())
        list->removeObjectAtIndex(foundOr(nv__identifierIndex(list, "FaceTime"), 6));

    if (VeltoUtils::isIOS13())
        list->removeObjectAtIndex(foundOr(nv__identifierIndex(list, "Lock Screen"), 7));
    return list;
}

void VeltoSettingsController::fetchIcons(const plat::SpecifierArrayPtr& specifiers) {
    if (!specifiers) return;
    auto center = tweakMessageCenter();
    for (const auto& row : *specifiers) {
        const plat::Value bundleIdentifier = row->propertyForKey("bundleIdentifier");
        if (bundleIdentifier.isNil()) continue;
        const plat::Value userInfo = plat::Value::dictionary(
            {{requests::kMessageID, plat::Value::integer(requests::kAppIconRequestKind)},
             {requests::kMessageData, bundleIdentifier}});
        const plat::Value reply =
            center ? center->sendMessageAndReceiveReplyName(requests::kAppIcon, userInfo)
                   : plat::Value();
        const plat::Value payload = reply.objectForKey(requests::kMessageData);
        const plat::Bytes* data = payload.asData();
        const plat::Value icon = data ? plat::unarchiveObjectWithData(*data) : plat::Value();
        if (!icon.isNil()) row->setProperty(icon, "iconImage");
    }
}

plat::SpecifierArrayPtr VeltoSettingsController::hideOtherSpecifiers(
    const plat::SpecifierArrayPtr& specifiers) {
    if (!specifiers) return specifiers;
    // A list shorter than three rows wraps and fails on the first removal.
    rows::removeDownToTwo(*specifiers, specifiers->count() - 3);
    return specifiers;
}

void VeltoSettingsController::veltoEnabledOrDisabled(const plat::Value& value,
                                                     const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();

    if (auto held = heldSpecifiers()) {
        if (value.boolValue()) {
            // The unfiltered middle comes in animated; the rebuild below filters it.
            auto full = loadSpecifiersFromPlistName(resourceName(), shared_from_this());
            rows::insertAtOwnIndexes(*this, *full, 2, full->count() - 2, true);
        } else {
            rows::removeShownDownToTwo(*this, held->count() - 3, true);
        }
    }
    reloadSpecifiers();
}

bool VeltoSettingsController::isBiteSMSInstalled() {
    // Relative on purpose: resolved against the process's working directory, "/".
    return plat::Process::current().root().fileExists("Applications/biteSMS.app");
}

bool VeltoSettingsController::isWhatsAppInstalled() {
    return getAppFolderPath(appids::kWhatsApp).has_value();
}

void VeltoSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = VeltoSettingsController;
    runtime.registerClass<Self, VeltoBaseMessagesSettingsController>(kBundlePath);
    plat::addSetter<Self>(runtime,
                          "veltoEnabledOrDisabled:specifier:", &Self::veltoEnabledOrDisabled);
}

}  // namespace velto
