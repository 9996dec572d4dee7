// The About page's own answers: the version footer, the header cell, and the guard in front of
// log mailing, on a device with the bundle's resources.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>

#include "about/velto_package_header_cell.h"
#include "contract/velto_utils.h"
#include "platform/ui/activity_view_controller.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/attributed_string.h"
#include "platform/ui/font.h"
#include "platform/ui/mail_compose_view_controller.h"
#include "platform/ui/paragraph_style.h"
#include "tests/about/about_fixture.h"

namespace {

using abouttest::AboutDevice;

TEST(AboutPageTest, FooterCarriesVersionAndYear) {
    AboutDevice device;
    device.installPackage("com.norvale.velto2", "2.0");
    auto page = device.page();
    EXPECT_EQ(page->copryRightSpecifierText(2020),
              "Version 2.0, © 2020 Norvale, Inc. All rights reserved,");
    // The base puts this year's text on the copyright group. The year is the calendar's, in
    // the device's time zone, here the one every clock agrees on.
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    const auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    EXPECT_EQ(velto::NVMiscSettingsViewController::currentYear(),
              static_cast<int>(std::chrono::year_month_day(today).year()));
    EXPECT_EQ(page->copyRightSpecifier()->propertyForKey("footerText").str(),
              page->copryRightSpecifierText(velto::NVMiscSettingsViewController::currentYear()));

    AboutDevice unknown;  // neither the package manager nor SpringBoard knows a version
    EXPECT_EQ(unknown.page()->copryRightSpecifierText(-1),
              "Version (null), © -1 Norvale, Inc. All rights reserved,");
}

TEST(AboutPageTest, OnlySystemsBeforeElevenGetThePagesOwnBackButton) {
    AboutDevice device;
    device.setSystemVersion("10.3");
    EXPECT_NE(device.page()->customBackButton(), nullptr);
    device.setSystemVersion("11.0");
    EXPECT_EQ(device.page()->customBackButton(), nullptr);
}

TEST(AboutPageTest, HeaderCellTextAndLook) {
    AboutDevice device;
    velto::VeltoPackageHeaderCell cell;
    ASSERT_TRUE(cell.initWithSpecifier(nullptr));
    const auto text = cell.textLabel().attributedText();
    ASSERT_TRUE(text);
    EXPECT_EQ(text->string(), "Velto 2\nContact pictures everywhere and anywhere!!");
    ASSERT_EQ(text->runs().size(), 2u);

    EXPECT_EQ(text->runs()[0].range, (plat::AttributedString::Range{0, 7}));
    EXPECT_EQ(text->runs()[1].range, (plat::AttributedString::Range{7, 43}));
    const auto fontOf = [](const plat::AttributedString::Run& run) {
        return *run.attributes.at(plat::NSFontAttributeName).as<plat::Font>();
    };
    EXPECT_EQ(fontOf(text->runs()[0]), *plat::Font::systemFontOfSize(26));
    EXPECT_EQ(fontOf(text->runs()[1]), *plat::Font::fontWithName("HelveticaNeue-Light", 14));
    const auto styleOf = [](const plat::AttributedString::Run& run) {
        return run.attributes.at(plat::NSParagraphStyleAttributeName).as<plat::ParagraphStyle>();
    };
    EXPECT_EQ(styleOf(text->runs()[0]), styleOf(text->runs()[1]));  // one shared object
    EXPECT_EQ(styleOf(text->runs()[0])->lineSpacing(), 4.0);
    EXPECT_EQ(styleOf(text->runs()[0])->alignment(), plat::NSTextAlignmentCenter);
    for (const auto& run : text->runs())
        EXPECT_TRUE(run.attributes.at(plat::NSKernAttributeName).isNull());

    EXPECT_EQ(cell.textLabel().numberOfLines(), 0);
    EXPECT_EQ(cell.textLabel().textAlignment(), plat::NSTextAlignmentCenter);
    EXPECT_EQ(cell.backgroundColor()->alpha(), 0.0);
    EXPECT_EQ(cell.backgroundView(), nullptr);
    for (double width : {0.0, 320.0, 1024.0})
        EXPECT_EQ(cell.preferredHeightForWidth(width), 104.0);
}

TEST(AboutPageTest, TheShareSheetPointsAtTheShareRowsCell) {
    AboutDevice device;
    auto page = device.page();
    const auto cell = device.cell(*page, "Share");
    ASSERT_TRUE(cell);
    cell->setBounds({{0, 0}, {343, 44}});
    const auto at = device.mark();
    device.tap(*page, "Share");
    EXPECT_EQ(device.journalLines(at),
              std::vector<std::string>{"present UIActivityViewController animated"});
    const auto sheet =
        std::dynamic_pointer_cast<plat::ActivityViewController>(page->presentedViewController());
    ASSERT_TRUE(sheet);
    ASSERT_TRUE(sheet->popoverPresentationController());
    EXPECT_EQ(sheet->popoverPresentationController()->sourceView(), cell);
    EXPECT_EQ(sheet->popoverPresentationController()->sourceRect(), cell->bounds());
}

class LogMailingTest : public ::testing::Test {
  protected:
    // Taps the log-mailing row as the Settings application would.
    std::shared_ptr<plat::ViewController> tapMailLog() {
        page = device.page();
        device.tap(*page, "MailLog");
        return page->presentedViewController();
    }
    AboutDevice device;
    std::shared_ptr<velto::VeltoMiscController> page;
};

TEST_F(LogMailingTest, LoggingOffRefusesWithoutComposer) {
    device.writeSettings({{"VeltoEnableLogging", false}});
    const auto at = device.mark();
    auto alert = std::dynamic_pointer_cast<plat::AlertController>(tapMailLog());
    ASSERT_TRUE(alert);
    EXPECT_EQ(device.journalLines(at).back(), "present UIAlertController Velto 2 animated");
    EXPECT_EQ(alert->message(),
              "Please turn on 'Enable Logging' and try. Before sharing the log file, please "
              "ensure that the problem is reproducible on your device. This helps the Velto 2 "
              "to log the necessary information identifying the problem.");
}

TEST_F(LogMailingTest, LoggingOnComposesWithTheLogAttachedIfThereIsOne) {
    device.writeSettings({{"VeltoEnableLogging", true}});
    auto mail = std::dynamic_pointer_cast<plat::MailComposeViewController>(tapMailLog());
    ASSERT_TRUE(mail);
    EXPECT_TRUE(mail->attachments().empty());

    device.writeText(velto::VeltoUtils::kLogFilePath, "one line\n");
    mail = std::dynamic_pointer_cast<plat::MailComposeViewController>(tapMailLog());
    ASSERT_TRUE(mail);
    EXPECT_EQ(mail->toRecipients(), std::vector<std::string>{"support@norvale.com"});
    EXPECT_EQ(mail->subject(), "Velto 2 log");
    // Support's first question: which device and system the log comes from.
    const auto facts = device.process().deviceFacts();
    EXPECT_TRUE(mail->messageBody().starts_with("Device: iPhone (" + facts.productType +
                                                ")\nSystem version: " + facts.systemVersion + "\n"))
        << mail->messageBody();
    EXPECT_FALSE(mail->isHTML());
    ASSERT_EQ(mail->attachments().size(), 1u);
    EXPECT_EQ(mail->attachments()[0].fileName, "Velto.log");
    EXPECT_EQ(mail->attachments()[0].data.size(), 9u);
    // Cancelled, the page takes the composer away, animated.
    const auto at = device.mark();
    EXPECT_TRUE(mail->cancel());
    EXPECT_EQ(device.journalLines(at),
              std::vector<std::string>{
                  "dismiss MFMailComposeViewController dismissViewControllerAnimated animated"});
    EXPECT_EQ(page->presentedViewController(), nullptr);
}

}  // namespace
