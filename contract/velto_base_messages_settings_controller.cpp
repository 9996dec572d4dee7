#include "contract/velto_base_messages_settings_controller.h"

#include <algorithm>

#include "contract/catalogue.h"
#include "contract/enabled_query.h"
#include "contract/picture_files.h"
#include "contract/picture_rows.h"
#include "contract/picture_sheets.h"
#include "contract/velto_settings.h"
#include "contract/velto_utils.h"
#include "platform/foundation/plist.h"
#include "platform/foundation/strings.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"
#include "platform/prefs/table_cell.h"
#include "platform/system/bundle.h"
#include "platform/system/log.h"
#include "platform/system/plist_file.h"
#include "platform/system/process.h"
#include "platform/ui/alert_controller.h"

namespace velto {

namespace {

const char* const kMainSettingsFile = files::kMainSettings;

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
    reshapePictureRows(specifiers, pictureRowNames(), round);
}

void VeltoBaseMessagesSettingsController::insertSpecifier(const plat::SpecifierPtr& specifier,
                                                          std::size_t index, bool animated) {
    if (needsReshapeOnInsert(specifier, pictureRowNames()))
        reshapePictureIcon(*specifier, isRoundPicsEnabled(kMainSettingsFile));
    VeltoBaseSettingsController::insertSpecifier(specifier, index, animated);
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
    if (const auto removed = root.removeItem(path); !removed) {
        VeltoUtils::logMessage("Unable to remove '" + path + "': " + removed.error());
        return;
    }
    VeltoUtils::logMessage("Removed '" + path + "'");
}

std::shared_ptr<plat::ImagePickerController> VeltoBaseMessagesSettingsController::imagePicker() {
    return plat::Process::current().slots().get(kImagePickerSlot);
}

void VeltoBaseMessagesSettingsController::selectDefaultContactImage(
    const plat::SpecifierPtr& specifier) {
    auto picker = std::make_shared<plat::ImagePickerController>();
    plat::Process::current().slots().set(kImagePickerSlot, picker);
    picker->setAllowsEditing(true);
    picker->setDelegate(
        std::dynamic_pointer_cast<VeltoBaseMessagesSettingsController>(shared_from_this()));
    picker->setSourceType(plat::UIImagePickerControllerSourceTypePhotoLibrary);
    if (VeltoUtils::isIPad()) {
        picker->setModalPresentationStyle(plat::UIModalPresentationPopover);
        anchorOnCell(*picker, specifier);
    }
    presentViewController(picker, true, nullptr);
}

void VeltoBaseMessagesSettingsController::imagePickerControllerDidFinishPickingMediaWithInfo(
    plat::ImagePickerController&, plat::Value info) {
    // The user cropped the picture to the square a contact picture is; without that crop
    // there is nothing to store.
    if (const auto edited =
            info.objectForKey(plat::UIImagePickerControllerEditedImage).as<plat::Image>()) {
        saveDefaultContactImage(edited);
        pictureFilesChanged();
    }
    if (const auto picker = imagePicker()) picker->dismissViewControllerAnimated(true, nullptr);
    plat::Process::current().slots().set(kImagePickerSlot, nullptr);
}

void VeltoBaseMessagesSettingsController::imagePickerControllerDidCancel(
    plat::ImagePickerController&) {
    if (const auto picker = imagePicker()) picker->dismissViewControllerAnimated(true, nullptr);
    plat::Process::current().slots().set(kImagePickerSlot, nullptr);
}

void VeltoBaseMessagesSettingsController::restoreDefaultContactImage(
    const plat::SpecifierPtr& specifier) {
    const std::weak_ptr<VeltoBaseMessagesSettingsController> weakSelf =
        std::dynamic_pointer_cast<VeltoBaseMessagesSettingsController>(shared_from_this());
    presentRestoreSheet(*this, specifier, [weakSelf] {
        if (const auto self = weakSelf.lock()) {
            self->removeDefaultContactImage();
            self->pictureFilesChanged();
        }
    });
}

void VeltoBaseMessagesSettingsController::pictureFilesChanged() {
    reloadSpecifiers();
    VeltoUtils::logMessage("Posting notification....");
    // Only now: a listener that reacts reads finished files.
    plat::Process::current().darwin().postNotification(kPictureChangedNotification, true);
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
    using Self = VeltoBaseMessagesSettingsController;
    runtime.registerClass(kClassName, VeltoBaseSettingsController::kClassName);
    plat::addAction<Self>(runtime, "selectDefaultContactImage:", &Self::selectDefaultContactImage);
    plat::addAction<Self>(runtime,
                          "restoreDefaultContactImage:", &Self::restoreDefaultContactImage);
}

}  // namespace velto
