// Device roots as `device init` writes them, read back by the platform and the bundle's own
// lookups, the way the Settings application will read them.

#include "device/device_init.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "contract/installed_apps.h"
#include "device/bundle_install.h"
#include "device/demo_device.h"
#include "device/device_profile.h"
#include "device/installed_app_list.h"
#include "device/package_database.h"
#include "platform/foundation/plist_file.h"
#include "platform/system/device_facts.h"
#include "tests/support/test_device.h"

namespace velto::device {
namespace {

class DeviceInitTest : public ::testing::Test {
  protected:
    void init(const DeviceOptions& options) { initDevice(device_.root(), options, resources()); }
    static std::filesystem::path resources() { return testsupport::sourceDir() / "resources"; }
    plat::DeviceRoot& root() { return device_.process().root(); }

    testsupport::TestDevice device_;
};

TEST_F(DeviceInitTest, TheProfileAndSystemVersionAreTheFactsThePlatformReads) {
    DeviceOptions options;
    options.family = plat::DeviceFamily::iPod;
    options.systemVersion = "12.5.1";
    options.scale = 2;
    options.faceTime = false;
    options.extensionAnswers = false;
    init(options);

    const plat::DeviceFacts facts = device_.process().deviceFacts();
    EXPECT_EQ(facts.family, plat::DeviceFamily::iPod);
    EXPECT_EQ(facts.systemVersion, "12.5.1");
    EXPECT_EQ(facts.screenScale, 2);
    EXPECT_FALSE(facts.faceTime);
    EXPECT_EQ(facts.productType, "iPod9,1");
    EXPECT_FALSE(extensionAnswers(root()));

    init(DeviceOptions{});
    EXPECT_TRUE(extensionAnswers(root()));
    EXPECT_EQ(device_.process().deviceFacts().family, plat::DeviceFamily::iPhone);
}

TEST_F(DeviceInitTest, AppsAreWhereTheBundleLooksForThem) {
    DeviceOptions options;
    options.apps = {whatsAppSpec(), biteSMSSpec(), {"com.example.Notes", "Daily Notes", true}};
    init(options);

    // A user app: a bundle container and a data container that names it.
    const auto whatsApp = findAppFolder("net.whatsapp.WhatsApp");
    ASSERT_TRUE(whatsApp);
    EXPECT_EQ(whatsApp->rfind("/var/containers/Bundle/Application/", 0), 0u) << *whatsApp;
    EXPECT_TRUE(findDataContainer("net.whatsapp.WhatsApp"));
    // biteSMS is probed by a fixed relative path.
    EXPECT_TRUE(root().fileExists("Applications/biteSMS.app"));
    EXPECT_EQ(findAppFolder("com.example.Notes"), "/Applications/DailyNotes.app");
    EXPECT_FALSE(findDataContainer("com.example.Notes"));

    const plat::Value info = plat::dictionaryWithContentsOfFile(*whatsApp + "/Info.plist");
    EXPECT_EQ(info.objectForKey("CFBundleDisplayName").str(), "WhatsApp");
}

TEST_F(DeviceInitTest, IconsFollowTheFamilyAndScale) {
    DeviceOptions phone;
    phone.apps = {biteSMSSpec()};
    init(phone);
    const auto phoneApps = installedApps(root());
    ASSERT_EQ(phoneApps.size(), 1u);
    auto icon = largestIcon(root(), phoneApps[0]);
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 180);
    EXPECT_EQ(icon->scale(), 3);

    testsupport::TestDevice pad;
    DeviceOptions options;
    options.family = plat::DeviceFamily::iPad;
    options.scale = 2;
    options.apps = {biteSMSSpec()};
    initDevice(pad.root(), options, resources());
    icon = largestIcon(pad.process().root(), installedApps(pad.process().root()).at(0));
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 152);
    EXPECT_EQ(icon->scale(), 2);
}

TEST_F(DeviceInitTest, InitialisingAgainOverwritesInsteadOfDuplicating) {
    DeviceOptions options;
    options.apps = {whatsAppSpec(), {"com.example.Chat", "Chat", false}};
    init(options);
    init(options);
    EXPECT_EQ(installedApps(root()).size(), 2u);
}

TEST_F(DeviceInitTest, TheBundleIsInstalledAndOnlyChangedFilesAreRewritten) {
    init(DeviceOptions{});
    EXPECT_TRUE(root().fileExists(std::string(kInstalledBundle) + "/Velto.plist"));
    EXPECT_EQ(installBundle(root(), resources()), 0u);

    // A stale file on the device is replaced by the bundle's own.
    ASSERT_TRUE(root().writeFile(std::string(kInstalledBundle) + "/Velto.plist", {'x'}, false));
    EXPECT_EQ(installBundle(root(), resources()), 1u);
    EXPECT_NE(root().readFile(std::string(kInstalledBundle) + "/Velto.plist"), plat::Bytes{'x'});

    EXPECT_THROW(installBundle(root(), device_.root() / "no-such-folder"), std::runtime_error);
}

TEST_F(DeviceInitTest, MainSettingsArePresentOnlyWhenChosen) {
    init(DeviceOptions{});
    EXPECT_FALSE(root().fileExists(kMainSettingsFile));
    // The folder is there for the bundle's first write.
    EXPECT_TRUE(root().fileExists("/var/mobile/Library/Preferences"));
}

TEST_F(DeviceInitTest, TheDemoHasAboutThirtyAppsTheProductAndTheMasterSwitchOn) {
    DeviceOptions options;
    addDemoContent(options);
    init(options);

    const auto apps = installedApps(root());
    EXPECT_GE(apps.size(), 28u);
    EXPECT_LE(apps.size(), 34u);
    for (const char* id : {"net.whatsapp.WhatsApp", "com.bitesms", "com.norvale.RingLedger10",
                           "com.apple.mobilephone"})
        EXPECT_TRUE(findInstalledApp(apps, id)) << id;
    EXPECT_EQ(installedPackageVersion(root(), "com.norvale.velto2"), "2.1.0-1");
    const plat::Value settings = plat::dictionaryWithContentsOfFile(kMainSettingsFile);
    EXPECT_TRUE(settings.objectForKey("VeltoEnabled").boolValue());
}

TEST(DemoDevice, TabletsHaveNoPhoneAppAndExplicitChoicesWin) {
    const auto padApps = demoApps(plat::DeviceFamily::iPad);
    EXPECT_TRUE(std::none_of(padApps.begin(), padApps.end(), [](const AppSpec& app) {
        return app.bundleIdentifier == "com.apple.mobilephone";
    }));

    DeviceOptions options;
    options.apps = {{"net.whatsapp.WhatsApp", "My WhatsApp", true}};
    options.packages = {{"com.norvale.velto2", "3.0"}};
    addDemoContent(options);
    EXPECT_EQ(std::count_if(options.apps.begin(), options.apps.end(),
                            [](const AppSpec& app) {
                                return app.bundleIdentifier == "net.whatsapp.WhatsApp";
                            }),
              1);
    EXPECT_EQ(options.apps.front().name, "My WhatsApp");
    ASSERT_EQ(
        std::count_if(options.packages.begin(), options.packages.end(),
                      [](const PackageSpec& p) { return p.identifier == "com.norvale.velto2"; }),
        1);
    EXPECT_EQ(options.packages.front().version, "3.0");
}

}  // namespace
}  // namespace velto::device
