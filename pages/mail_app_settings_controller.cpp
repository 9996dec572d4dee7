#include "pages/mail_app_settings_controller.h"

#include <algorithm>
#include <optional>

#include "contract/catalogue.h"
#include "contract/enabled_query.h"
#include "contract/picture_rows.h"
#include "contract/picture_sheets.h"
#include "contract/velto_utils.h"
#include "kit/row_editing.h"
#include "pages/mail_avatar_files.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/selectors.h"
#include "platform/prefs/table_cell.h"
#include "platform/prefs/user_defaults.h"
#include "platform/system/bundle.h"
#include "platform/system/log.h"
#include "platform/system/process.h"
#include "platform/ui/alert_controller.h"

namespace velto {

namespace {

const char* const kMailResource = "MailApp";

}  // namespace

std::shared_ptr<plat::ImagePickerController> MailAppSettingsController::imagePicker() {
    return plat::Process::current().slots().get(kImagePickerSlot);
}

std::shared_ptr<plat::ViewController> MailAppSettingsController::popover() {
    return plat::Process::current().slots().get(kPopoverSlot);
}

bool MailAppSettingsController::isEnabledForKey(const std::string& key,
                                                const std::string& settingsFileName) {
    return enabledQuery(key, settingsFileName);
}

bool MailAppSettingsController::isMailAppEnabled() {
    return isEnabledForKey(keys::kMail, files::kMainSettings);
}

bool MailAppSettingsController::isRoundPicsEnabled(const std::string& settingsFileName) {
    return isEnabledForKey(keys::kRoundedPictures, settingsFileName);
}

std::vector<std::string> MailAppSettingsController::getImageCellSpecifierNames() {
    return {"Default Avatar", "My Avatar", "Default Group Avatar"};
}

plat::SpecifierArrayPtr MailAppSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    auto list = loadSpecifiersFromPlistName(kMailResource, shared_from_this());
    // A list shorter than one row wraps to a huge start and the first removal raises.
    if (!isMailAppEnabled()) rows::removeDownToTwo(*list, list->count() - 1);
    setHeldSpecifiers(list);
    setPicturesForSpecifiers(heldSpecifiers(), isRoundPicsEnabled(files::kMainSettings));
    return heldSpecifiers();
}

void MailAppSettingsController::setPicturesForSpecifiers(const plat::SpecifierArrayPtr& specifiers,
                                                         bool round) {
    reshapePictureRows(specifiers, getImageCellSpecifierNames(), round);
}

void MailAppSettingsController::insertSpecifier(const plat::SpecifierPtr& specifier,
                                                std::size_t index, bool animated) {
    if (needsReshapeOnInsert(specifier, getImageCellSpecifierNames()))
        reshapePictureIcon(*specifier, isRoundPicsEnabled(files::kMainSettings));
    VeltoBaseSettingsController::insertSpecifier(specifier, index, animated);
}

void MailAppSettingsController::mailAppEnabledOrDisabled(const plat::Value& value,
                                                         const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    rows::applyEnableSwitch(*this, value.boolValue(), kMailResource);
}

void MailAppSettingsController::selectDefaultAvatarMail(const plat::SpecifierPtr& specifier) {
    auto picker = std::make_shared<plat::ImagePickerController>();
    plat::Process::current().slots().set(kImagePickerSlot, picker);
    picker->setAllowsEditing(true);
    picker->setDelegate(std::dynamic_pointer_cast<MailAppSettingsController>(shared_from_this()));
    picker->setSourceType(plat::UIImagePickerControllerSourceTypePhotoLibrary);
    if (VeltoUtils::isIPad()) {
        picker->setModalPresentationStyle(plat::UIModalPresentationPopover);
        anchorOnCell(*picker, specifier);
    }
    presentViewController(picker, true, nullptr);
}

void MailAppSettingsController::imagePickerControllerDidFinishPickingMediaWithInfo(
    plat::ImagePickerController&, plat::Value info) {
    auto& slots = plat::Process::current().slots();
    if (VeltoUtils::isIPad()) {
        // Nothing ever puts a popover here; the check stays for the day something does.
        const auto shownPopover = popover();
        if (shownPopover && shownPopover->presentingViewController()) {
            shownPopover->dismissViewControllerAnimated(true, nullptr);
            slots.set<plat::ViewController>(kPopoverSlot, nullptr);
        }
    }
    // Only the cropped picture counts; the original is never used.
    if (const auto edited =
            info.objectForKey(plat::UIImagePickerControllerEditedImage).as<plat::Image>())
        storeChosenPicture(edited);
    if (const auto picker = imagePicker()) picker->dismissViewControllerAnimated(true, nullptr);
    slots.set(kImagePickerSlot, nullptr);
}

void MailAppSettingsController::imagePickerControllerDidCancel(plat::ImagePickerController&) {
    // The older modal dismissal, unlike the finished pick's: each stays where it is.
    if (const auto picker = imagePicker()) picker->dismissModalViewControllerAnimated(true);
    plat::Process::current().slots().set(kImagePickerSlot, nullptr);
}

void MailAppSettingsController::restoreAvatarsMail(const plat::SpecifierPtr& specifier) {
    const std::weak_ptr<MailAppSettingsController> weakSelf =
        std::dynamic_pointer_cast<MailAppSettingsController>(shared_from_this());
    presentRestoreSheet(*this, specifier, [weakSelf] {
        if (const auto self = weakSelf.lock()) self->restoreStockAvatar();
    });
}

void MailAppSettingsController::storeChosenPicture(const plat::ImagePtr& image) {
    saveDefaultContactImage(image);
    saveDefaultContactImageThumbnail(image);
    reloadSpecifiers();
    plat::NSLog("Posting notification....");
    // Only now: a listener that reacts reads finished files.
    mail::postAvatarsChanged();
}

void MailAppSettingsController::restoreStockAvatar() {
    preparePathAndRemoveItem(mail::avatarImagePath());
    preparePathAndRemoveItem(mail::avatarThumbnailPath());
    // Only the thumbnail comes back, from the stock picture; the full image stays away.
    saveDefaultContactImageThumbnail(plat::Image::imageWithContentsOfFile(mail::stockAvatarPath()));
    reloadSpecifiers();
    mail::postAvatarsChanged();
}

void MailAppSettingsController::saveDefaultContactImage(const plat::ImagePtr& image) {
    mail::saveAvatar(image, mail::AvatarFile::Image);
}

void MailAppSettingsController::saveDefaultContactImageThumbnail(const plat::ImagePtr& image) {
    mail::saveAvatar(image, mail::AvatarFile::Thumbnail);
}

void MailAppSettingsController::removeItemAtPath(const std::string& path) {
    mail::removeAvatarItem(path);
}

void MailAppSettingsController::preparePathAndRemoveItem(const std::string& path) {
    removeItemAtPath(path);
}

void MailAppSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = MailAppSettingsController;
    runtime.registerClass<Self, VeltoBaseSettingsController>(kBundlePath);
    plat::addSetter<Self>(runtime,
                          "mailAppEnabledOrDisabled:specifier:", &Self::mailAppEnabledOrDisabled);
    plat::addAction<Self>(runtime, "selectDefaultAvatarMail:", &Self::selectDefaultAvatarMail);
    plat::addAction<Self>(runtime, "restoreAvatarsMail:", &Self::restoreAvatarsMail);
}

}  // namespace velto
