#pragma once

#include <memory>
#include <string>

#include "contract/velto_base_settings_controller.h"
#include "platform/foundation/value.h"
#include "platform/system/darwin_notify_center.h"
#include "platform/system/message_center.h"
#include "platform/system/notification_center.h"

namespace velto {

// The applications the extension stays out of: every installed application the extension's
// SpringBoard side reports, in a system and a user group, each with a switch that is on while
// the application is excluded. The exclusion list belongs to the shared settings object; the
// page only asks and tells it.
class VeltoDisabledAppsSettingsController : public VeltoBaseSettingsController {
  public:
    static constexpr const char* kClassName = "VeltoDisabledAppsSettingsController";
    std::string className() const override { return kClassName; }

    bool initForContentSize(plat::Size size) override;
    plat::SpecifierArrayPtr specifiers() override;
    // The application records of the extension's reply, sorted by display name (plain,
    // case-sensitive). Empty when there is no usable reply.
    plat::Value applications();
    plat::SpecifierArrayPtr addApplicationDataToSpecifiers(const plat::Value& applications);

    plat::TableCellPtr tableViewCellForRowAtIndexPath(std::size_t row,
                                                      std::size_t section) override;
    // The switch's value is ignored: the stored state is flipped, so a row whose state changed
    // elsewhere since it was shown ends up opposite to what is stored, not to what was shown.
    void setPreferenceValue(const plat::Value& value, const plat::SpecifierPtr& specifier) override;

    void viewDidLoad() override;
    // Runs on whichever thread delivered the notification.
    void veltoSettingsChanged(const plat::Notification& notification);

    bool hasCustomNavigationBarColor() override { return true; }
    plat::ColorPtr customNavigationBarColor() override;
    bool shouldShowImageAsTitle() override { return false; }
    std::string twitterMessage() override;
    plat::ImagePtr twitterImage() override;
    std::shared_ptr<plat::BarButtonItem> customBackButton() override;

    // This page's own process-wide tweak message center (null before the first page).
    static std::shared_ptr<plat::MessageCenter> tweakMessageCenter();
    // Bundle identifiers that never get a row; exact, case-sensitive membership.
    static bool isHiddenApplication(const std::string& bundleIdentifier);

    static void registerClass(plat::Runtime& runtime);
};

// The Darwin callback: re-posts the received name in-process, on the delivering thread.
void veltoSettingsChangedCallBack(plat::DarwinNotifyCenter* center, void* observer,
                                  const std::string& name, const void* object,
                                  const plat::Value& userInfo);

}  // namespace velto
