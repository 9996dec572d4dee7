#include "contract/nv_misc_settings_view_controller.h"

#include <chrono>
#include <ctime>

#include "contract/appearance.h"
#include "contract/velto_utils.h"
#include "platform/foundation/strings.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/table_cell.h"
#include "platform/system/bundle.h"
#include "platform/system/process.h"
#include "platform/ui/activity_view_controller.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/navigation_controller.h"

namespace velto {

std::int64_t NVMiscSettingsViewController::currentYear() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm tm{};
    localtime_r(&now, &tm);
    return tm.tm_year + 1900;
}

plat::SpecifierArrayPtr NVMiscSettingsViewController::specifiers() {
    if (!heldSpecifiers()) {
        setHeldSpecifiers(loadSpecifiersFromPlistName(specifiersFileName(), shared_from_this()));
        if (auto footerRow = copyRightSpecifier())
            footerRow->setProperty(copryRightSpecifierText(currentYear()), "footerText");
    }
    return heldSpecifiers();
}

void NVMiscSettingsViewController::viewDidLoad() {
    ListController::viewDidLoad();
    Appearance appearance;
    appearance.backButton = customBackButton();
    if (hasCustomNavigationBarColor()) appearance.barTint = customNavigationBarColor();
    applyAppearance(*this, appearance);
}

namespace {

// The cell the Settings application made for a row: where a popover points on an iPad.
std::shared_ptr<plat::TableCell> cellOf(const plat::ObjectPtr& sender) {
    auto row = std::dynamic_pointer_cast<plat::Specifier>(sender);
    return row ? row->propertyForKey(plat::pskey::CellObject).as<plat::TableCell>() : nullptr;
}

std::string lastPathComponent(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// What support asks first: which device and which system the log comes from.
std::string deviceSummary() {
    const plat::DeviceFacts facts = plat::Process::current().deviceFacts();
    return std::string("Device: ") + plat::familyName(facts.family) +
           (facts.productType.empty() ? "" : " (" + facts.productType + ")") +
           "\nSystem version: " + facts.systemVersion + "\n";
}

}  // namespace

void NVMiscSettingsViewController::share(const plat::ObjectPtr& sender) {
    std::vector<plat::Value> items{plat::Value(twitterMessage())};
    if (auto image = twitterImage()) items.emplace_back(image);
    auto sheet = plat::ActivityViewController::make(std::move(items));
    if (auto* popover = sheet->popoverPresentationController()) {
        const auto cell = cellOf(sender);
        popover->setSourceView(cell);
        popover->setSourceRect(cell ? cell->bounds() : plat::Rect{});
    }
    presentViewController(sheet, true, {});
}

void NVMiscSettingsViewController::emailLogFile(const plat::ObjectPtr&) {
    auto mail = std::make_shared<plat::MailComposeViewController>();
    mail->setMailComposeDelegate(
        std::dynamic_pointer_cast<NVMiscSettingsViewController>(shared_from_this()));
    mail->setToRecipients({kSupportAddress});
    mail->setSubject(productName() + " log");
    mail->setMessageBody(deviceSummary(), false);
    const std::string logPath = VeltoUtils::kLogFilePath;
    if (auto log = plat::Process::current().root().readFile(logPath))
        mail->addAttachmentData(std::move(*log), "text/plain", lastPathComponent(logPath));
    presentViewController(mail, true, {});
}

void NVMiscSettingsViewController::mailComposeControllerDidFinishWithResult(
    plat::MailComposeViewController& controller, int) {
    controller.dismissViewControllerAnimated(true, {});
}

void NVMiscSettingsViewController::showError(const std::string& text) {
    auto alert = plat::AlertController::alertControllerWithTitle(productName(), text,
                                                                 plat::UIAlertControllerStyleAlert);
    alert->addAction(plat::AlertAction::actionWithTitle(plat::NSLocalizedString("OK"),
                                                        plat::UIAlertActionStyleDefault, {}));
    presentViewController(alert, true, {});
}

void NVMiscSettingsViewController::backButtonAction(const plat::ObjectPtr&) {
    if (auto navigation = navigationController()) navigation->popViewControllerAnimated(true);
}

void NVMiscSettingsViewController::registerClass(plat::Runtime& runtime) {
    runtime.registerClass(kClassName, plat::ListController::kClassName);
    runtime.addMethod("NVMiscSettingsViewController", "backButtonAction:",
                      plat::bindMethod<NVMiscSettingsViewController>(
                          [](NVMiscSettingsViewController& self, const plat::Arguments& args) {
                              self.backButtonAction(plat::argumentAt(args, 0).asObject());
                              return plat::Value();
                          }));
    runtime.addMethod("NVMiscSettingsViewController", "share:",
                      plat::bindMethod<NVMiscSettingsViewController>(
                          [](NVMiscSettingsViewController& self, const plat::Arguments& args) {
                              self.share(plat::argumentAt(args, 0).asObject());
                              return plat::Value();
                          }));
    runtime.addMethod("NVMiscSettingsViewController", "emailLogFile:",
                      plat::bindMethod<NVMiscSettingsViewController>(
                          [](NVMiscSettingsViewController& self, const plat::Arguments& args) {
                              self.emailLogFile(plat::argumentAt(args, 0).asObject());
                              return plat::Value();
                          }));
}

}  // namespace velto
