#pragma once

#include <string>

#include "contract/velto_base_messages_settings_controller.h"

namespace velto {

// Contact pictures in the maker's recents application, Recents 2: its row and the page title
// carry the version the root list leaves out. Like the call-log page it keeps the whatsapp
// settings file as its settings and never writes it.
class VeltoNVRecentsSettingsController : public VeltoBaseMessagesSettingsController {
  public:
    // The resource's row that names the application.
    static constexpr const char* kRecentsRow = "Recents";

    static constexpr const char* kClassName = "VeltoNVRecentsSettingsController";

    std::string className() const override { return kClassName; }

    bool initForContentSize(plat::Size size) override;
    plat::SpecifierArrayPtr specifiers() override;
    bool shouldShowImageAsTitle() override { return false; }
    void viewDidLoad() override;

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
