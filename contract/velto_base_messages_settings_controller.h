#pragma once

#include <string>

#include "contract/catalogue.h"
#include "contract/velto_base_settings_controller.h"
#include "platform/foundation/value.h"
#include "platform/prefs/specifier.h"
#include "platform/system/slot_key.h"
#include "platform/ui/image.h"
#include "platform/ui/image_picker_controller.h"

namespace velto {

// The extension library's base for pages that keep a settings dictionary of their own and
// for the Messages picture page.
//
// Settings store: `settings` is read once by the page (nil when its file is missing);
// updateSettingsDict:forKey: changes one value of it, writes the whole dictionary to
// settingsFilePath (binary, in place) and refreshes the shared settings. The base calls it
// for rows that name a key but no defaults domain: their value belongs to the page's own
// file, and goes into a fresh read of it, so that what other rows stored since the page
// opened is kept. It does so only when the page's dictionary was read from settingsFilePath; a page
// holding another file's dictionary (the call-log and recents pages hold the whatsapp file)
// never writes it: that file is read-only for this bundle.
//
// Default contact picture: saved as DefaultContactImage@3x.png and its thumbnail
// DefaultContactImageThumb@3x.png at the paths the subclass's hooks give. A page offers it
// through two button rows: selectDefaultContactImage: opens the photo picker (a popover at the
// row on an iPad) and saves the cropped picture; restoreDefaultContactImage: asks first, then
// removes both files so the extension goes back to its stock picture. Either way the rows are
// reloaded and the extension is told.
class VeltoBaseMessagesSettingsController : public VeltoBaseSettingsController,
                                            public plat::ImagePickerDelegate {
  public:
    static constexpr const char* kDefaultImageName = "DefaultContactImage@3x.png";
    static constexpr const char* kDefaultThumbnailName = "DefaultContactImageThumb@3x.png";
    // Posted on the Darwin center once the picture files changed.
    static constexpr const char* kPictureChangedNotification =
        notifications::kMessagesAvatarChanged;
    // Process-wide slot: the open photo picker.
    static constexpr plat::SlotKey<plat::ImagePickerController> kImagePickerSlot{
        "veltoDefaultContactImagePicker"};

    static constexpr const char* kClassName = "VeltoBaseMessagesSettingsController";

    std::string className() const override { return kClassName; }

    // The settings store.
    plat::Value settings() const { return settings_; }
    void setSettings(plat::Value settings) { settings_ = std::move(settings); }
    // The main settings file, built afresh on each call.
    virtual std::string settingsFilePath();
    virtual void updateSettingsDict(const plat::Value& value, const std::string& key);
    virtual void writeSettings();
    // Reads `settings` from a file once (the page's initialiser does it) and remembers where
    // they came from.
    void loadSettingsFromFile(const std::string& path);

    void setPreferenceValue(const plat::Value& value, const plat::SpecifierPtr& specifier) override;

    bool isEnabledForKey(const std::string& key, const std::string& settingsFileName);
    bool isRoundPicsEnabled(const std::string& settingsFileName);
    // Gives the picture rows ("Default Avatar", "My Avatar", "Default Group Avatar") round or
    // square icons; a row whose reshaped icon comes back empty keeps its old one.
    void setPicturesForSpecifiers(const plat::SpecifierArrayPtr& specifiers, bool round);
    // A picture row that has an icon gets it reshaped before it goes in, so rows a switch
    // brings back look like the ones built with the page.
    void insertSpecifier(const plat::SpecifierPtr& specifier, std::size_t index,
                         bool animated) override;
    using VeltoBaseSettingsController::insertSpecifier;

    // The default contact picture and its thumbnail, at the hooks' paths.
    virtual void saveDefaultContactImage(const plat::ImagePtr& image);
    // A copy of both files into a folder (made when missing).
    void saveDefaultContactImage(const plat::ImagePtr& image,
                                 const std::string& imageCacheFilePath);
    // Removes both files through preparePathAndRemoveItem:.
    void removeDefaultContactImage();
    // Removes a file if there is one.
    virtual void removeItemAtPath(const std::string& path);

    // The button rows' actions.
    void selectDefaultContactImage(const plat::SpecifierPtr& specifier);
    void restoreDefaultContactImage(const plat::SpecifierPtr& specifier);
    void imagePickerControllerDidFinishPickingMediaWithInfo(plat::ImagePickerController& picker,
                                                            plat::Value info) override;
    void imagePickerControllerDidCancel(plat::ImagePickerController& picker) override;
    static std::shared_ptr<plat::ImagePickerController> imagePicker();

    // Hooks the subclass supplies; the base's defaults keep no cache.
    virtual std::string getImageCacheFilePath(const std::string& fileName);
    virtual std::string getThumnailImageCacheFilePath(const std::string& fileName);
    virtual void preparePathAndRemoveItem(const std::string& fileName);

    static void registerClass(plat::Runtime& runtime);

  private:
    void pictureFilesChanged();

    plat::Value settings_;
    std::string settingsSource_;
};

// The picture rows' names, in order.
const std::vector<std::string>& pictureRowNames();
// The reshaping shared by the pages that show picture rows.
void reshapePictureRows(const plat::SpecifierArrayPtr& specifiers, bool round);

}  // namespace velto
