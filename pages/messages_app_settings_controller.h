#pragma once

#include <optional>
#include <string>

#include "contract/catalogue.h"
#include "contract/velto_base_messages_settings_controller.h"

namespace velto {

// Contact pictures in Messages: the enable switch and, while it is on, the picture rows (icons
// cut round or square as the rounded-pictures option says) and the buttons of the default
// contact picture. The base chooses, stores and removes that picture; this page says where
// the files go: the extension's picture folder, and a second copy inside the Messages
// application's own data container, where its process may read without leaving its sandbox.
class MessagesAppSettingsController : public VeltoBaseMessagesSettingsController {
  public:
    static constexpr const char* kMessagesBundleIdentifier = appids::kMessages;

    static constexpr const char* kClassName = "MessagesAppSettingsController";

    std::string className() const override { return kClassName; }

    plat::SpecifierArrayPtr specifiers() override;
    bool isMessagesAppEnabled();
    void messagesAppEnabledOrDisabled(const plat::Value& value,
                                      const plat::SpecifierPtr& specifier);
    bool shouldShowImageAsTitle() override { return false; }

    // "/var/mobile/Library/Preferences/Velto/<name>", for the picture and its thumbnail alike.
    std::string getImageCacheFilePath(const std::string& fileName) override;
    std::string getThumnailImageCacheFilePath(const std::string& fileName) override;
    // The base's save, then the same files into the Messages container.
    void saveDefaultContactImage(const plat::ImagePtr& image) override;
    using VeltoBaseMessagesSettingsController::saveDefaultContactImage;
    // The picture folder's file first, then the container's.
    void preparePathAndRemoveItem(const std::string& fileName) override;

    // The Messages container's picture folder: its data container joined with
    // "Library/Preferences/Velto"; nil when Messages has no data container.
    static std::optional<std::string> messagesContainerFolder();

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
