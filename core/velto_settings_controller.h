#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "contract/velto_base_messages_settings_controller.h"
#include "platform/system/message_center.h"

namespace velto {

// The bundle's entry page: the master switch and, while it is on, one row per supported
// application that is installed and a few general rows. It fetches each application row's
// icon from the extension every time it is asked for its rows.
class VeltoSettingsController : public VeltoBaseMessagesSettingsController {
  public:
    static constexpr const char* kClassName = "VeltoSettingsController";
    std::string className() const override { return kClassName; }

    bool initForContentSize(plat::Size size) override;
    plat::SpecifierArrayPtr specifiers() override;

    // The master switch's setter.
    void veltoEnabledOrDisabled(const plat::Value& value, const plat::SpecifierPtr& specifier);
    // Removes the middle of a list: rows 0, 1 and the last two stay. Answers the same list.
    plat::SpecifierArrayPtr hideOtherSpecifiers(const plat::SpecifierArrayPtr& specifiers);

    bool isBiteSMSInstalled();
    bool isWhatsAppInstalled();

    // The process-wide tweak message center (null until the first `specifiers`).
    static std::shared_ptr<plat::MessageCenter> tweakMessageCenter();

    static void registerClass(plat::Runtime& runtime);

  private:
    std::string resourceName() const;
    plat::SpecifierArrayPtr buildEnabledList();
    void fetchIcons(const plat::SpecifierArrayPtr& specifiers);
};

}  // namespace velto
