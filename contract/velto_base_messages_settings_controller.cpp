#include "contract/velto_base_messages_settings_controller.h"

#include <algorithm>

#include "contract/enabled_query.h"
#include "contract/picture_files.h"
#include "contract/velto_settings.h"
#include "contract/velto_utils.h"
#include "platform/foundation/plist.h"
#include "platform/foundation/plist_file.h"
#include "platform/foundation/strings.h"
#include "platform/prefs/runtime.h"
#include "platform/system/log.h"
#include "platform/system/process.h"

namespace velto {

namespace {

const char* const kMainSettingsFile = "com.norvale.velto.plist";

std::string parentFolder(const std::string& path) {
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos || slash == 0 ? "/" : path.substr(0, slash);
}

bool ensureFolder(const std::string& folder) {
    auto& root = plat::Process::current().root();
    return root.fileExists(folder) || root.createDirectory(folder, true);
}

void savePicture(const plat::ImagePtr& image, plat::Size canvas, const std::string& path) {
    if (path.empty()) return;
    if (!ensureFolder(parentFolder(path)) || !writePictureFile(image, canvas, path)) {
        VeltoUtils::logMessage("Unable to save the default contact picture at '" + path + "'");
        return;
    }
    VeltoUtils::logMessage("Saved the default contact picture at '" + path + "'");
}

}  // namespace

const std::vector<std::string>& pictureRowNames() {
    static const std::vector<std::string> names = {"Default Avatar", "My Avatar",
                                                   "Default Group Avatar"};
    return names;
}

void reshapePictureRows(const plat::SpecifierArrayPtr& specifiers, bool round) {
    if (!specifiers) return;
    const auto& names = pictureRowNames();
    for (const auto& row : *specifiers) {
        if (!row->name() || std::find(names.begin(), names.end(), *row->name()) == names.end())
            continue;
        auto icon = row->propertyForKey("iconImage").as<plat::Image>();
        auto shaped = round ? VeltoUtils::roundedImage(icon) : VeltoUtils::squareImage(icon);
        if (shaped) row->setProperty(plat::Value(shaped), "iconImage");
    }
}

std::string VeltoBaseMessagesSettingsController::settingsFilePath() {
    return settingsFilePathFor(kMainSettingsFile);
}

void VeltoBaseMessagesSettingsController::loadSettingsFromFile(const std::string& path) {
    settings_ = plat::dictionaryWithContentsOfFile(path);
    settingsSource_ = path;
}

void VeltoBaseMessagesSettingsController::updateSettingsDict(const plat::Value& value,
                                                             const std::string& key) {
    settings_.setValueForKey(key, value);
    writeSettings();
    VeltoSettings::sharedSettings()->loadSettings();
}

void VeltoBaseMessagesSettingsController::writeSettings() {
    auto data = plat::dataFromPropertyList(settings_, plat::PropertyListFormat::Binary);
    const std::string path = settingsFilePath();
    if (!data) return;
    // A dictionary read from another file (the whatsapp file of the call-log and recents
    // pages) would replace every option of the main file: that file is only read here.
    if (!settingsSource_.empty() && settingsSource_ != path) return;
    // In place on purpose: the extension keeps watching the same file.
    if (!plat::writeDataToFile(*data, path, false)) {
        plat::NSLog("com.norvale.Velto: Error => Unable to save settings to " + path +
                    " and settings: " + settings_.description());
    }
}

void VeltoBaseMessagesSettingsController::setPreferenceValue(const plat::Value& value,
                                                             const plat::SpecifierPtr& specifier) {
    const bool ownFileRow = specifier && specifier->propertyForKey("defaults").str().empty() &&
                            !specifier->propertyForKey("key").str().empty();
    if (ownFileRow && !settings_.isNil() && settingsSource_ == settingsFilePath()) {
        // The dictionary was read when the page opened; since then other rows (the master
        // switch first of all) have written the file through the platform. Writing the old
        // copy back would undo them, so the value goes into what the file holds now.
        const plat::Value current = plat::dictionaryWithContentsOfFile(settingsSource_);
        if (!current.isNil()) settings_ = current;
        updateSettingsDict(value, specifier->propertyForKey("key").str());
        const std::string notification = specifier->propertyForKey("PostNotification").str();
        if (!notification.empty())
            plat::Process::current().darwin().postNotification(notification, true);
        return;
    }
    ListController::setPreferenceValue(value, specifier);
}

bool VeltoBaseMessagesSettingsController::isEnabledForKey(const std::string& key,
                                                          const std::string& settingsFileName) {
    return enabledQuery(key, settingsFileName);
}

bool VeltoBaseMessagesSettingsController::isRoundPicsEnabled(const std::string& settingsFileName) {
    return isEnabledForKey("VeltoEnabledRoundedPictures", settingsFileName);
}

void VeltoBaseMessagesSettingsController::setPicturesForSpecifiers(
    const plat::SpecifierArrayPtr& specifiers, bool round) {
    reshapePictureRows(specifiers, round);
}

void VeltoBaseMessagesSettingsController::saveDefaultContactImage(const plat::ImagePtr& image) {
    savePicture(image, defaultPictureCanvas(), getImageCacheFilePath(kDefaultImageName));
    savePicture(image, defaultThumbnailCanvas(),
                getThumnailImageCacheFilePath(kDefaultThumbnailName));
}

void VeltoBaseMessagesSettingsController::saveDefaultContactImage(
    const plat::ImagePtr& image, const std::string& imageCacheFilePath) {
    savePicture(image, defaultPictureCanvas(),
                plat::stringByAppendingPathComponent(imageCacheFilePath, kDefaultImageName));
    savePicture(image, defaultThumbnailCanvas(),
                plat::stringByAppendingPathComponent(imageCacheFilePath, kDefaultThumbnailName));
}

void VeltoBaseMessagesSettingsController::removeDefaultContactImage() {
    preparePathAndRemoveItem(kDefaultImageName);
    preparePathAndRemoveItem(kDefaultThumbnailName);
}

void VeltoBaseMessagesSettingsController::removeItemAtPath(const std::string& path) {
    auto& root = plat::Process::current().root();
    if (path.empty() || !root.fileExists(path)) return;
    std::string error;
    if (!root.removeItem(path, &error))
        VeltoUtils::logMessage("Unable to remove '" + path + "': " + error);
}

std::string VeltoBaseMessagesSettingsController::getImageCacheFilePath(const std::string&) {
    return "";
}

std::string VeltoBaseMessagesSettingsController::getThumnailImageCacheFilePath(
    const std::string& fileName) {
    return getImageCacheFilePath(fileName);
}

void VeltoBaseMessagesSettingsController::preparePathAndRemoveItem(const std::string& fileName) {
    // The thumbnail is removed from where it was saved, which may be a folder of its own.
    removeItemAtPath(fileName == kDefaultThumbnailName ? getThumnailImageCacheFilePath(fileName)
                                                       : getImageCacheFilePath(fileName));
}

void VeltoBaseMessagesSettingsController::registerClass(plat::Runtime& runtime) {
    runtime.registerClass("VeltoBaseMessagesSettingsController", "VeltoBaseSettingsController");
}

}  // namespace velto
