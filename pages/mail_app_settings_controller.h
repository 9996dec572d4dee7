#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "contract/velto_base_settings_controller.h"
#include "platform/system/slot_key.h"
#include "platform/ui/image_picker_controller.h"
#include "platform/ui/view_controller.h"

namespace velto {

// Contact pictures in Mail: the enable switch and, while it is on, the picture rows (their
// icons cut round or square as the rounded-pictures option says) and the two buttons that
// choose the default avatar from the photo library or restore the stock one. The enable and
// rounded states are read from the main settings file at each use. The page is the photo
// picker's delegate.
class MailAppSettingsController : public VeltoBaseSettingsController,
                                  public plat::ImagePickerDelegate {
  public:
    // Process-wide slots: the open photo picker, and a popover presenter that nothing fills
    // but that a finished pick on an iPad still checks and clears.
    static constexpr plat::SlotKey<plat::ImagePickerController> kImagePickerSlot{
        "mailAppImgPicker"};
    static constexpr plat::SlotKey<plat::ViewController> kPopoverSlot{"mailAppPopover"};

    static constexpr const char* kClassName = "MailAppSettingsController";

    std::string className() const override { return kClassName; }

    plat::SpecifierArrayPtr specifiers() override;

    bool isEnabledForKey(const std::string& key, const std::string& settingsFileName);
    bool isMailAppEnabled();
    bool isRoundPicsEnabled(const std::string& settingsFileName);
    std::vector<std::string> getImageCellSpecifierNames();
    void setPicturesForSpecifiers(const plat::SpecifierArrayPtr& specifiers, bool round);

    // A picture row gets its icon reshaped before it goes in.
    void insertSpecifier(const plat::SpecifierPtr& specifier, std::size_t index,
                         bool animated) override;
    using VeltoBaseSettingsController::insertSpecifier;

    void mailAppEnabledOrDisabled(const plat::Value& value, const plat::SpecifierPtr& specifier);
    void selectDefaultAvatarMail(const plat::SpecifierPtr& specifier);
    void restoreAvatarsMail(const plat::SpecifierPtr& specifier);

    void imagePickerControllerDidFinishPickingMediaWithInfo(plat::ImagePickerController& picker,
                                                            plat::Value info) override;
    void imagePickerControllerDidCancel(plat::ImagePickerController& picker) override;

    // The avatar files.
    void saveDefaultContactImage(const plat::ImagePtr& image);
    void saveDefaultContactImageThumbnail(const plat::ImagePtr& image);
    void removeItemAtPath(const std::string& path);
    void preparePathAndRemoveItem(const std::string& path);

    static std::shared_ptr<plat::ImagePickerController> imagePicker();
    static std::shared_ptr<plat::ViewController> popover();

    static void registerClass(plat::Runtime& runtime);

  private:
    void storeChosenPicture(const plat::ImagePtr& image);
    void restoreStockAvatar();
};

}  // namespace velto
