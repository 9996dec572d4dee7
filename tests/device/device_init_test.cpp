// Devices as `device init` writes them, read back by the platform, by the bundle's own lookups
// and by the extension that answers the bundle's requests.

#include "device/device_init.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "contract/installed_apps.h"
#include "device/bundle_install.h"
#include "device/demo_device.h"
#include "device/extension_responder.h"
#include "device/installed_app_list.h"
#include "device/package_database.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/system/process.h"
#include "platform/ui/image.h"
#include "tests/support/test_device.h"

namespace velto::device {
namespace {

using plat::Value;

class DeviceInitTest : public ::testing::Test {
  protected:
    void init(const DeviceOptions& options) {
        initDevice(device_.root(), options, resources());
        attachExtension(device_.process());
    }
    static std::filesystem::path resources() { return testsupport::sourceDir() / "resources"; }
    plat::DeviceRoot& root() { return device_.process().root(); }

    // Asks the extension; answers the reply's archived payload, unarchived.
    Value ask(const std::string& name, const Value& userInfo = Value(),
              const std::string& center = "com.norvale.velto") {
        const Value reply =
            device_.process().messageCenters().centerNamed(center)->sendMessageAndReceiveReplyName(
                name, userInfo);
        const plat::Bytes* data = reply.objectForKey("VeltoServiceMessageData").asData();
        return data ? plat::unarchiveObjectWithData(*data) : Value();
    }
    bool lastRequestReplied() const {
        return device_.entries<plat::journal::Request>().back().replied();
    }

    testsupport::TestDevice device_;
};

TEST_F(DeviceInitTest, TheProfileIsWhatThePlatformReadsAndTheExtensionMayStaySilent) {
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
    EXPECT_TRUE(ask("com.norvale.velto.apps").isNil());
    EXPECT_FALSE(lastRequestReplied());
    // No main settings unless chosen, but their folder is there for the bundle's first write.
    EXPECT_FALSE(root().fileExists(kMainSettingsFile));
    EXPECT_TRUE(root().fileExists("/var/mobile/Library/Preferences"));
}

TEST_F(DeviceInitTest, AppsAreWhereTheBundleLooksAndTheExtensionListsEachOnce) {
    DeviceOptions options;
    options.apps = {whatsAppChoice(), biteSMSChoice(), {"com.example.Notes", "Daily Notes", true}};
    init(options);
    init(options);  // again: overwritten, not duplicated

    // A user app: a bundle container and a data container that names it.
    const auto whatsApp = findAppFolder("net.whatsapp.WhatsApp");
    ASSERT_TRUE(whatsApp);
    EXPECT_EQ(whatsApp->rfind("/var/containers/Bundle/Application/", 0), 0u) << *whatsApp;
    EXPECT_TRUE(findDataContainer("net.whatsapp.WhatsApp"));
    // biteSMS is probed by a fixed relative path.
    EXPECT_TRUE(root().fileExists("Applications/biteSMS.app"));
    EXPECT_EQ(findAppFolder("com.example.Notes"), "/Applications/DailyNotes.app");
    EXPECT_FALSE(findDataContainer("com.example.Notes"));

    const Value records = ask("com.norvale.velto.apps");
    ASSERT_EQ(records.count(), 3u);
    std::map<std::string, Value> byIdentifier;
    for (const Value& record : *records.asArray())
        byIdentifier[record.objectForKey("VeltoBundleIdentifier").str()] = record;
    EXPECT_TRUE(byIdentifier["com.bitesms"].objectForKey("VeltoType").boolValue());
    EXPECT_FALSE(byIdentifier["net.whatsapp.WhatsApp"].objectForKey("VeltoType").boolValue());
    // Names come from each app's Info.plist.
    EXPECT_EQ(byIdentifier["com.example.Notes"].objectForKey("VeltoFolderDisplayName").str(),
              "Daily Notes");
    for (const auto& [identifier, record] : byIdentifier) {
        auto image = record.objectForKey("VeltoFolderImage").as<plat::Image>();
        ASSERT_TRUE(image) << identifier;
        EXPECT_EQ(image->pixelWidth(), 180) << identifier;  // 60 points at the default 3x
    }
}

TEST_F(DeviceInitTest, IconRepliesCarryTheAppsIconAtTheFamilysSizeAndScale) {
    DeviceOptions options;
    options.family = plat::DeviceFamily::iPad;
    options.scale = 2;
    options.apps = {whatsAppChoice()};
    init(options);
    const auto iconOf = [&](const std::string& bundleIdentifier, Value kind = Value::integer(6)) {
        return ask("com.norvale.velto.appicon",
                   Value::dictionary({{"VeltoServiceMessageID", kind},
                                      {"VeltoServiceMessageData", bundleIdentifier}}))
            .as<plat::Image>();
    };
    const auto icon = iconOf("net.whatsapp.WhatsApp");
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 152);  // 76 points on a tablet
    EXPECT_EQ(icon->scale(), 2);
    // An app that is not installed, or a request of another kind: an answer, but nothing in it.
    for (auto [app, kind] : {std::pair{"com.example.absent", Value::integer(6)},
                             {"net.whatsapp.WhatsApp", Value::integer(7)},
                             {"net.whatsapp.WhatsApp", Value("6")}}) {
        EXPECT_FALSE(iconOf(app, kind)) << app << " " << kind.description();
        EXPECT_TRUE(lastRequestReplied());
    }
}

TEST_F(DeviceInitTest, TheProductReplyHasThePackagesVersionUnknownRequestsGetNoReply) {
    init(DeviceOptions{});
    EXPECT_TRUE(ask("com.norvale.velto.product").isNil());
    EXPECT_TRUE(lastRequestReplied());
    EXPECT_TRUE(ask("com.norvale.velto.frobnicate").isNil());
    EXPECT_FALSE(lastRequestReplied());
    EXPECT_TRUE(ask("com.norvale.velto.apps", Value(), "com.example.other").isNil());
    EXPECT_FALSE(lastRequestReplied());
    DeviceOptions options;
    options.packages = {{"com.norvale.velto2", "2.1.0-1"}};
    init(options);
    EXPECT_EQ(ask("com.norvale.velto.product").objectForKey("Version").str(), "2.1.0-1");
}

TEST_F(DeviceInitTest, TheBundleIsInstalledAndOnlyChangedFilesAreRewritten) {
    init(DeviceOptions{});
    const std::string list = std::string(kInstalledBundle) + "/Velto.plist";
    EXPECT_TRUE(root().fileExists(list));
    EXPECT_EQ(installBundle(root(), resources()), 0u);
    // A stale file on the device is replaced by the bundle's own.
    ASSERT_TRUE(root().writeFile(list, {'x'}, false));
    EXPECT_EQ(installBundle(root(), resources()), 1u);
    EXPECT_NE(root().readFile(list), plat::Bytes{'x'});
    EXPECT_THROW(installBundle(root(), device_.root() / "no-such-folder"), std::runtime_error);
}

TEST_F(DeviceInitTest, TheDemoHasAboutThirtyAppsTheProductAndTheSwitchOnChoicesWin) {
    const auto count = [](const auto& items, auto field, const std::string& value) {
        return std::count_if(items.begin(), items.end(),
                             [&](const auto& item) { return item.*field == value; });
    };
    DeviceOptions options;
    addDemoContent(options);
    EXPECT_EQ(count(options.packages, &PackageChoice::identifier, kProductPackage), 1);
    options = DeviceOptions{};
    options.apps = {{"net.whatsapp.WhatsApp", "My WhatsApp", true}};
    options.packages = {{"com.norvale.velto2", "3.0"}};
    addDemoContent(options);
    init(options);

    const auto apps = installedApps(root());
    EXPECT_GE(apps.size(), 28u);
    EXPECT_LE(apps.size(), 34u);
    for (const char* id : {"com.bitesms", "com.norvale.RingLedger10", "com.apple.mobilephone"})
        EXPECT_TRUE(findInstalledApp(apps, id)) << id;
    EXPECT_EQ(count(apps, &InstalledApp::bundleIdentifier, "net.whatsapp.WhatsApp"), 1);
    EXPECT_EQ(findInstalledApp(apps, "net.whatsapp.WhatsApp")->displayName, "My WhatsApp");
    EXPECT_EQ(count(options.packages, &PackageChoice::identifier, kProductPackage), 1);
    EXPECT_EQ(installedPackageVersion(root(), kProductPackage), "3.0");
    EXPECT_TRUE(device_.readPlist(kMainSettingsFile).objectForKey("VeltoEnabled").boolValue());
    for (const AppChoice& app : demoApps(plat::DeviceFamily::iPad))
        EXPECT_NE(app.bundleIdentifier, "com.apple.mobilephone");  // no Phone app on tablets
}

}  // namespace
}  // namespace velto::device
