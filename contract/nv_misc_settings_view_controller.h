#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/prefs/list_controller.h"
#include "platform/ui/bar_button_item.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"
#include "platform/ui/mail_compose_view_controller.h"

namespace plat {
class Runtime;
}

namespace velto {

// The maker's about-page base. It asks its subclass for the product's pieces through hook
// methods (the names, misspellings included, are the interface), builds the page from the
// resource the subclass names and puts the copyright footer on the row the subclass picks.
// Its rows' actions share the product (`share:`) and mail the extension's log to support
// (`emailLogFile:`).
class NVMiscSettingsViewController : public plat::ListController, public plat::MailComposeDelegate {
  public:
    static constexpr const char* kClassName = "NVMiscSettingsViewController";
    std::string className() const override { return kClassName; }

    // Hooks, with the base's neutral defaults.
    virtual std::string serviceName() { return ""; }
    virtual std::string productName() { return ""; }
    virtual std::string specifiersFileName() { return ""; }
    virtual std::string twitterMessage() { return ""; }
    virtual plat::ImagePtr twitterImage() { return nullptr; }
    virtual bool hasCustomNavigationBarColor() { return false; }
    virtual plat::ColorPtr customNavigationBarColor() { return nullptr; }
    virtual std::shared_ptr<plat::BarButtonItem> customBackButton() { return nullptr; }
    virtual plat::SpecifierPtr copyRightSpecifier() { return nullptr; }
    virtual std::string copryRightSpecifierText(std::int64_t year) {
        (void)year;
        return "";
    }

    // Loads specifiersFileName once; the copyright row gets the footer for the current year.
    plat::SpecifierArrayPtr specifiers() override;
    void viewDidLoad() override;

    // A share sheet with twitterMessage and twitterImage; on an iPad a popover at the row
    // (the sender) that asked for it.
    void share(const plat::ObjectPtr& sender);
    // A mail to support with the extension's log file attached, as it is on disk now. A
    // missing or unreadable log still opens the mail, without attachment, so the user can
    // describe the problem anyway.
    virtual void emailLogFile(const plat::ObjectPtr& sender);
    void mailComposeControllerDidFinishWithResult(plat::MailComposeViewController& controller,
                                                  int result) override;

    // Shows a message to the user in an alert with one "OK" action.
    void showError(const std::string& text);
    void backButtonAction(const plat::ObjectPtr& sender);

    static std::int64_t currentYear();
    static constexpr const char* kSupportAddress = "support@norvale.com";
    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
