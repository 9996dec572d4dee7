// The extension's answers to the bundle's requests, checked through the message center the
// bundle uses and by the root page that consumes them.

#include "device/extension_responder.h"

#include <gtest/gtest.h>

#include "core/velto_settings_controller.h"
#include "device/device_init.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/system/process.h"
#include "platform/ui/image.h"
#include "tests/support/bundle_device.h"

namespace velto::device {
namespace {

class ExtensionResponderTest : public ::testing::Test {
  protected:
    void init(DeviceOptions options) {
        initDevice(device_.root(), options, testsupport::sourceDir() / "resources");
        attachExtension(device_.process());
    }

    plat::Value request(const std::string& name, const plat::Value& userInfo = plat::Value()) {
        auto center = device_.process().messageCenters().centerNamed("com.norvale.velto");
        return center->sendMessageAndReceiveReplyName(name, userInfo);
    }

    // The reply's archived payload, unarchived.
    static plat::Value payload(const plat::Value& reply) {
        const plat::Bytes* data = reply.objectForKey("VeltoServiceMessageData").asData();
        return data ? plat::unarchiveObjectWithData(*data) : plat::Value();
    }

    static plat::Value iconRequest(const std::string& bundleIdentifier) {
        return plat::Value::dictionary({{"VeltoServiceMessageID", plat::Value::integer(6)},
                                        {"VeltoServiceMessageData", bundleIdentifier}});
    }

    testsupport::BundleDevice device_;
};

TEST_F(ExtensionResponderTest, AppIconRepliesCarryTheInstalledAppsIcon) {
    DeviceOptions options;
    options.scale = 2;
    options.apps = {whatsAppSpec()};
    init(options);

    auto icon = payload(request("com.norvale.velto.appicon", iconRequest("net.whatsapp.WhatsApp")))
                    .as<plat::Image>();
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 120);
    EXPECT_EQ(icon->scale(), 2);

    // An app that is not installed: an answer, but nothing in it.
    const plat::Value reply =
        request("com.norvale.velto.appicon", iconRequest("com.example.absent"));
    EXPECT_TRUE(reply.isDictionary());
    EXPECT_TRUE(payload(reply).isNil());
}

TEST_F(ExtensionResponderTest, TheAppListHasOneRecordPerAppWithSystemAppsMarked) {
    DeviceOptions options;
    options.apps = {whatsAppSpec(), biteSMSSpec(), {"com.example.Chat", "Chat", false}};
    init(options);

    const plat::Value records = payload(request("com.norvale.velto.apps"));
    ASSERT_TRUE(records.isArray());
    ASSERT_EQ(records.count(), 3u);
    std::map<std::string, plat::Value> byIdentifier;
    for (const plat::Value& record : *records.asArray())
        byIdentifier[record.objectForKey("VeltoBundleIdentifier").str()] = record;
    ASSERT_EQ(byIdentifier.size(), 3u);
    EXPECT_TRUE(byIdentifier["com.bitesms"].objectForKey("VeltoType").boolValue());
    EXPECT_FALSE(byIdentifier["net.whatsapp.WhatsApp"].objectForKey("VeltoType").boolValue());
    EXPECT_EQ(byIdentifier["com.example.Chat"].objectForKey("VeltoFolderDisplayName").str(),
              "Chat");
    for (const auto& [identifier, record] : byIdentifier) {
        auto image = record.objectForKey("VeltoFolderImage").as<plat::Image>();
        ASSERT_TRUE(image) << identifier;
        EXPECT_EQ(image->pixelWidth(), 180) << identifier;
    }
}

TEST_F(ExtensionResponderTest, TheProductReplyHasThePackagesVersion) {
    DeviceOptions options;
    options.packages = {{"com.norvale.velto2", "2.1.0-1"}};
    init(options);
    const plat::Value product = payload(request("com.norvale.velto.product"));
    EXPECT_EQ(product.objectForKey("Version").str(), "2.1.0-1");

    init(DeviceOptions{});
    EXPECT_TRUE(payload(request("com.norvale.velto.product")).isNil());
}

TEST_F(ExtensionResponderTest, UnknownRequestsAndOtherCentersGetNoReply) {
    init(DeviceOptions{});
    EXPECT_TRUE(request("com.norvale.velto.frobnicate").isNil());
    auto other = device_.process().messageCenters().centerNamed("com.example.other");
    EXPECT_TRUE(
        other->sendMessageAndReceiveReplyName("com.norvale.velto.apps", plat::Value()).isNil());
}

TEST_F(ExtensionResponderTest, ADeviceWithoutTheExtensionAnswersNothing) {
    DeviceOptions options;
    options.extensionAnswers = false;
    options.apps = {biteSMSSpec()};
    init(options);
    EXPECT_TRUE(request("com.norvale.velto.apps").isNil());
    const auto requests = device_.entries(plat::JournalEntry::Kind::Request);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_FALSE(requests[0].replied);
}

TEST_F(ExtensionResponderTest, TheRootPageShowsTheIconsTheExtensionGives) {
    DeviceOptions options;
    options.apps = {biteSMSSpec()};
    options.mainSettings = plat::Value::dictionary({{"VeltoEnabled", plat::Value::boolean(true)}});
    init(options);

    auto page = device_.open<VeltoSettingsController>("VeltoSettingsController");
    ASSERT_TRUE(page);
    const auto list = page->specifiers();
    plat::SpecifierPtr biteSMS;
    for (const auto& row : *list)
        if (row->identifier() == "biteSMS") biteSMS = row;
    ASSERT_TRUE(biteSMS);
    auto icon = biteSMS->propertyForKey("iconImage").as<plat::Image>();
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 180);
}

}  // namespace
}  // namespace velto::device
