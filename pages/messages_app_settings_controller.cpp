#include "pages/messages_app_settings_controller.h"

#include "contract/catalogue.h"
#include "contract/nv_utils.h"
#include "contract/velto_utils.h"
#include "kit/row_editing.h"
#include "platform/foundation/strings.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"
#include "platform/prefs/user_defaults.h"

namespace velto {

namespace {

const char* const kMessagesResource = "MessagesApp";
const char* const kPictureFolder = "/var/mobile/Library/Preferences/Velto";

// A nil path reads "(null)" in a log line, as a format's %@ prints it.
std::string shown(const std::optional<std::string>& path) {
    return path.value_or("(null)");
}

}  // namespace

std::optional<std::string> MessagesAppSettingsController::messagesContainerFolder() {
    const auto container = NVUtils::applicationDataContainerDirectory(kMessagesBundleIdentifier);
    if (!container) return std::nullopt;
    return plat::stringByAppendingPathComponent(*container, "Library/Preferences/Velto");
}

bool MessagesAppSettingsController::isMessagesAppEnabled() {
    return isEnabledForKey(keys::kMessages, files::kMainSettings);
}

plat::SpecifierArrayPtr MessagesAppSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    auto list = loadSpecifiersFromPlistName(kMessagesResource, shared_from_this());
    // Unsigned on purpose, as everywhere rows are counted down: a list shorter than one row
    // wraps to a huge start and the first removal raises.
    if (!isMessagesAppEnabled()) rows::removeDownToTwo(*list, list->count() - 1);
    setHeldSpecifiers(list);
    setPicturesForSpecifiers(heldSpecifiers(), isRoundPicsEnabled(files::kMainSettings));
    return heldSpecifiers();
}

void MessagesAppSettingsController::messagesAppEnabledOrDisabled(
    const plat::Value& value, const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    rows::applyEnableSwitch(*this, value.boolValue(), kMessagesResource);
}

std::string MessagesAppSettingsController::getImageCacheFilePath(const std::string& fileName) {
    return plat::stringByAppendingPathComponent(kPictureFolder, fileName);
}

std::string MessagesAppSettingsController::getThumnailImageCacheFilePath(
    const std::string& fileName) {
    // One folder for both: the thumbnail's own name keeps it apart from the picture.
    return getImageCacheFilePath(fileName);
}

void MessagesAppSettingsController::saveDefaultContactImage(const plat::ImagePtr& image) {
    VeltoBaseMessagesSettingsController::saveDefaultContactImage(image);
    const auto folder = messagesContainerFolder();
    VeltoUtils::logMessage("Saving Default Image to messages directory '" + shown(folder) +
                           "' too...");
    if (folder) saveDefaultContactImage(image, *folder);
}

void MessagesAppSettingsController::preparePathAndRemoveItem(const std::string& fileName) {
    removeItemAtPath(getImageCacheFilePath(fileName));
    const auto folder = messagesContainerFolder();
    const std::optional<std::string> path =
        folder ? std::optional(plat::stringByAppendingPathComponent(*folder, fileName))
               : std::nullopt;
    VeltoUtils::logMessage("Removing Image to messages directory '" + shown(path) + "' too...");
    if (path) removeItemAtPath(*path);
}

void MessagesAppSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = MessagesAppSettingsController;
    runtime.registerClass<Self, VeltoBaseMessagesSettingsController>(kBundlePath);
    plat::addSetter<Self>(
        runtime, "messagesAppEnabledOrDisabled:specifier:", &Self::messagesAppEnabledOrDisabled);
}

}  // namespace velto
