#pragma once

#include <string>

#include "contract/velto_base_messages_settings_controller.h"

namespace velto {

// Contact pictures in the maker's call-log application. The page keeps the whatsapp settings
// file, the one the call-log and recents applications share, as its settings; it never
// writes it.
class VeltoRingLedgerSettingsController : public VeltoBaseMessagesSettingsController {
  public:
    static constexpr const char* kClassName = "VeltoRingLedgerSettingsController";
    std::string className() const override { return kClassName; }

    bool initForContentSize(plat::Size size) override;
    plat::SpecifierArrayPtr specifiers() override;
    // The page's own title, not the product glyph.
    bool shouldShowImageAsTitle() override { return false; }

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
