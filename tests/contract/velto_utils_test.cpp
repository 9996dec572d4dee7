#include <fstream>
#include <string>
#include <vector>

#include "contract/list_categories.h"
#include "contract/nv_utils.h"
#include "contract/velto_base_settings_controller.h"
#include "contract/velto_settings.h"
#include "contract/velto_utils.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/specifier.h"
#include "tests/contract/contract_fixture.h"

using contracttest::kBundle;
using contracttest::kMainFile;
using plat::Value;
using velto::NVUtils;
using velto::VeltoUtils;

namespace {

class VeltoUtilsTest : public contracttest::ContractTest {
  protected:
    void installApp(const std::string& folder, const std::string& bundleIdentifier) {
        device.writePlist(folder + "/Info.plist",
                          Value::dictionary({{"CFBundleIdentifier", bundleIdentifier}}));
    }
    void writePng(const std::string& devicePath, const plat::ImagePtr& image) {
        auto png = plat::UIImagePNGRepresentation(image.get());
        ASSERT_TRUE(png);
        device.writeText(devicePath, std::string(png->begin(), png->end()));
    }
    std::vector<std::string> logFileLines() {
        std::vector<std::string> lines;
        std::ifstream in(device.host(VeltoUtils::kLogFilePath));
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }
};

TEST_F(VeltoUtilsTest, DeviceFamilyFaceTimeAndSystemVersionComeFromTheDevice) {
    struct Profile {
        const char* family;
        bool faceTime, iPadOrIPod, iPad;
    };
    for (const Profile& p :
         {Profile{"iPhone", true, false, false}, Profile{"iPad", true, true, true},
          Profile{"iPod", false, true, false}}) {
        device.setProfile(p.family, 2, p.faceTime);
        EXPECT_EQ(VeltoUtils::isIPadOrIPod(), p.iPadOrIPod) << p.family;
        EXPECT_EQ(VeltoUtils::isIPad(), p.iPad) << p.family;
        EXPECT_EQ(VeltoUtils::isFaceTimeAvailable(), p.faceTime) << p.family;
    }

    struct Version {
        const char* version;
        bool atLeast11, atLeast13;
    };
    // Compared as numbers: "9.3" is below 11 although it sorts above it as text.
    for (const Version& v : {Version{"9.3", false, false}, Version{"10.3", false, false},
                             Version{"11.0", true, false}, Version{"12.4", true, false},
                             Version{"13.0", true, true}, Version{"14.4.1", true, true}}) {
        device.setSystemVersion(v.version);
        EXPECT_EQ(VeltoUtils::isIOS11(), v.atLeast11) << v.version;
        EXPECT_EQ(VeltoUtils::isIOS13(), v.atLeast13) << v.version;
    }
}

TEST_F(VeltoUtilsTest, MakerAppsAreFoundAsSystemOrUserApplications) {
    EXPECT_FALSE(VeltoUtils::isRingLedgerInstalled());
    EXPECT_FALSE(VeltoUtils::isRecentsInstalled());

    // Near misses: wrong case, a folder that is no application, another application.
    installApp("/Applications/RingLedgr.app", "com.norvale.ringledger10");
    installApp("/Applications/RingLedger", VeltoUtils::kRingLedgerIdentifier);
    installApp("/var/containers/Bundle/Application/0A1B/Other.app", "com.norvale.recents.widget");
    EXPECT_FALSE(VeltoUtils::isRingLedgerInstalled());
    EXPECT_FALSE(VeltoUtils::isRecentsInstalled());

    installApp("/Applications/RingLedger.app", VeltoUtils::kRingLedgerIdentifier);
    installApp("/var/containers/Bundle/Application/5D2E-77/Recents.app",
               VeltoUtils::kRecentsIdentifier);
    EXPECT_TRUE(VeltoUtils::isRingLedgerInstalled());
    EXPECT_TRUE(VeltoUtils::isRecentsInstalled());
    EXPECT_EQ(velto::VeltoBaseSettingsController::getAppFolderPath(VeltoUtils::kRecentsIdentifier),
              "/var/containers/Bundle/Application/5D2E-77/Recents.app");

    // And the other way round: call log from the App Store, recents preinstalled.
    auto& root = device.process().root();
    root.removeItem("/Applications/RingLedger.app");
    root.removeItem("/var/containers/Bundle/Application/5D2E-77");
    EXPECT_FALSE(VeltoUtils::isRingLedgerInstalled());
    EXPECT_FALSE(VeltoUtils::isRecentsInstalled());
    installApp("/var/containers/Bundle/Application/9F00/RingLedger.app",
               VeltoUtils::kRingLedgerIdentifier);
    installApp("/Applications/Recents.app", VeltoUtils::kRecentsIdentifier);
    EXPECT_TRUE(VeltoUtils::isRingLedgerInstalled());
    EXPECT_TRUE(VeltoUtils::isRecentsInstalled());
}

TEST_F(VeltoUtilsTest, NavigationBarColourIsTheBundleSwatchWithTheSameColourAsFallback) {
    auto swatch = plat::Image::imageWithContentsOfFile(std::string(kBundle) + "/nav@3x.png");
    ASSERT_TRUE(swatch);
    const std::uint32_t swatchPixel = swatch->pixel(swatch->pixelWidth() / 2, 10);
    ASSERT_EQ(contracttest::alphaOf(swatchPixel), 255u);

    auto& runtime = plat::Runtime::shared();
    runtime.registerClass("ContractColourPage", "VeltoBaseSettingsController", {}, kBundle);
    runtime.registerClass("ContractColourSubpage", "ContractColourPage");
    runtime.registerClass("ContractBundlelessPage", "VeltoBaseSettingsController");
    EXPECT_TRUE(contracttest::sameColor(VeltoUtils::navigationBarColor("ContractColourPage", "nav"),
                                        swatchPixel));
    // A subclass without a bundle of its own lives in its ancestor's bundle.
    EXPECT_TRUE(contracttest::sameColor(
        VeltoUtils::navigationBarColor("ContractColourSubpage", "nav"), swatchPixel));
    // No bundle, or no such image: still the product's colour, not some other tint.
    EXPECT_TRUE(contracttest::sameColor(
        VeltoUtils::navigationBarColor("ContractBundlelessPage", "nav"), swatchPixel));
    EXPECT_TRUE(contracttest::sameColor(
        VeltoUtils::navigationBarColor("ContractColourPage", "no-such-image"), swatchPixel));

    // Transparent margins do not wash the colour out; an image with nothing opaque falls back.
    const std::string other = "/Library/ContractBundles/Margins.bundle";
    runtime.registerClass("ContractMarginsPage", "VeltoBaseSettingsController", {}, other);
    writePng(other + "/nav@3x.png",
             contracttest::paint(60, 60, 3, {0, 0, 0, 0}, {1, 0.5, 0}, 20, 20, 20, 20));
    writePng(other + "/clear@3x.png", contracttest::paint(60, 60, 3, {0, 0, 0, 0}));
    EXPECT_TRUE(contracttest::sameColor(
        VeltoUtils::navigationBarColor("ContractMarginsPage", "nav"), 0xffff8000));
    EXPECT_TRUE(contracttest::sameColor(
        VeltoUtils::navigationBarColor("ContractMarginsPage", "clear"), swatchPixel));
}

TEST_F(VeltoUtilsTest, RoundAndSquarePicturesKeepTheCentreAndTheScale) {
    EXPECT_EQ(VeltoUtils::roundedImage(nullptr), nullptr);
    EXPECT_EQ(VeltoUtils::squareImage(nullptr), nullptr);

    auto round = VeltoUtils::roundedImage(contracttest::paint(90, 90, 3, {1, 0, 0}));
    ASSERT_TRUE(round);
    EXPECT_EQ(round->pixelWidth(), 90);
    EXPECT_EQ(round->scale(), 3);
    for (auto [x, y] : {std::pair{0, 0}, {89, 0}, {0, 89}, {89, 89}, {8, 8}})
        EXPECT_EQ(contracttest::alphaOf(round->pixel(x, y)), 0u) << x << "," << y;
    for (auto [x, y] : {std::pair{45, 45}, {45, 2}, {2, 45}, {30, 60}})
        EXPECT_EQ(round->pixel(x, y), 0xffff0000u) << x << "," << y;

    // Wide: the middle 60 × 60 is blue, the sides red; only blue may remain.
    auto wide = contracttest::paint(120, 60, 2, {1, 0, 0}, {0, 0, 1}, 30, 0, 60, 60);
    auto square = VeltoUtils::squareImage(wide);
    ASSERT_TRUE(square);
    EXPECT_EQ(square->pixelWidth(), 60);
    EXPECT_EQ(square->pixelHeight(), 60);
    EXPECT_EQ(square->scale(), 2);
    for (auto [x, y] : {std::pair{0, 0}, {59, 0}, {0, 59}, {59, 59}, {30, 30}})
        EXPECT_EQ(square->pixel(x, y), 0xff0000ffu) << x << "," << y;
    // Round cut of a wide picture: the circle of the shorter side, centred.
    auto roundWide = VeltoUtils::roundedImage(wide);
    EXPECT_EQ(contracttest::alphaOf(roundWide->pixel(5, 30)), 0u);
    EXPECT_EQ(roundWide->pixel(60, 30), 0xff0000ffu);

    // Tall: the middle band is green.
    auto tall = VeltoUtils::squareImage(
        contracttest::paint(40, 100, 1, {1, 0, 0}, {0, 1, 0}, 0, 30, 40, 40));
    ASSERT_TRUE(tall);
    EXPECT_EQ(tall->pixelWidth(), 40);
    EXPECT_EQ(tall->pixelHeight(), 40);
    EXPECT_EQ(tall->pixel(0, 0), 0xff00ff00u);
    EXPECT_EQ(tall->pixel(39, 39), 0xff00ff00u);
}

TEST_F(VeltoUtilsTest, LogMessagesAreJournaledAndFiledOnlyWhileLoggingIsOn) {
    VeltoUtils::logMessage("before logging");
    EXPECT_FALSE(device.exists(VeltoUtils::kLogFilePath));

    auto setLogging = [&](bool on) {
        device.writePlist(kMainFile,
                          Value::dictionary({{"VeltoEnableLogging", Value::boolean(on)}}));
        velto::VeltoSettings::sharedSettings()->loadSettings();
    };
    setLogging(true);
    VeltoUtils::logMessage("first kept");
    VeltoUtils::logMessage("second kept");
    setLogging(false);
    VeltoUtils::logMessage("after logging");

    auto lines = logFileLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].ends_with("first kept")) << lines[0];
    EXPECT_TRUE(lines[1].ends_with("second kept")) << lines[1];
    EXPECT_EQ(device.logLines(), (std::vector<std::string>{"before logging", "first kept",
                                                           "second kept", "after logging"}));
}

TEST_F(VeltoUtilsTest, DataContainersAreFoundByTheirMetadata) {
    const std::string containers = "/var/mobile/Containers/Data/Application/";
    const std::string metadata = "/.com.apple.mobile_container_manager.metadata.plist";
    device.writePlist(containers + "1111" + metadata,
                      Value::dictionary({{"MCMMetadataIdentifier", "com.example.other"}}));
    device.writePlist(containers + "2222" + metadata,
                      Value::array({"MCMMetadataIdentifier", "net.whatsapp.WhatsApp"}));
    device.writeText(containers + "3333/Documents/file", "x");
    device.writePlist(containers + "4444" + metadata,
                      Value::dictionary({{"MCMMetadataIdentifier", "net.whatsapp.WhatsApp"}}),
                      true);

    EXPECT_EQ(NVUtils::applicationDataContainerDirectory("net.whatsapp.WhatsApp"),
              containers + "4444");
    EXPECT_EQ(NVUtils::applicationDataContainerDirectory("com.example.other"), containers + "1111");
    EXPECT_EQ(NVUtils::applicationDataContainerDirectory("net.whatsapp.whatsapp"), std::nullopt);
    EXPECT_EQ(NVUtils::applicationDataContainerDirectory("com.example.none"), std::nullopt);
    EXPECT_EQ(NVUtils::applicationDataContainerDirectory(""), std::nullopt);
}

TEST_F(VeltoUtilsTest, MessageCentersReachTheResponderAndEveryRequestIsJournaled) {
    auto center = NVUtils::messageCenter("com.norvale.velto");
    ASSERT_TRUE(center);
    std::string error;
    EXPECT_TRUE(
        center->sendMessageAndReceiveReplyName("com.norvale.velto.apps", Value(), &error).isNil());
    EXPECT_FALSE(error.empty());

    std::vector<std::string> seen;
    device.process().messageCenters().setResponder([&seen](const std::string& centerName,
                                                           const std::string& messageName,
                                                           const Value& userInfo) {
        seen.push_back(centerName + " " + messageName);
        return Value::dictionary(
            {{"VeltoServiceMessageData",
              userInfo.objectForKey("VeltoServiceMessageData").str() + " answered"}});
    });
    Value reply = center->sendMessageAndReceiveReplyName(
        "com.norvale.velto.appicon",
        Value::dictionary({{"VeltoServiceMessageID", Value::integer(1)},
                           {"VeltoServiceMessageData", "com.apple.mobilemail"}}));
    EXPECT_EQ(reply.objectForKey("VeltoServiceMessageData").str(), "com.apple.mobilemail answered");

    for (bool ignoreApproach : {false, true}) {
        Value product = NVUtils::sendMessageToSpringBoardAndReceiveReplyName(
            "com.norvale.velto.springboard", "com.norvale.velto.product", ignoreApproach,
            Value::dictionary({{"VeltoServiceMessageData", "product"}}));
        EXPECT_EQ(product.objectForKey("VeltoServiceMessageData").str(), "product answered");
    }
    EXPECT_EQ(seen, (std::vector<std::string>{
                        "com.norvale.velto com.norvale.velto.appicon",
                        "com.norvale.velto.springboard com.norvale.velto.product",
                        "com.norvale.velto.springboard com.norvale.velto.product"}));

    auto requests = device.entries(plat::JournalEntry::Kind::Request);
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[0].name, "com.norvale.velto.apps");
    EXPECT_FALSE(requests[0].replied);
    EXPECT_EQ(requests[1].name, "com.norvale.velto.appicon");
    EXPECT_EQ(requests[1].text, "com.norvale.velto");
    EXPECT_TRUE(requests[1].replied);
    EXPECT_EQ(requests[3].name, "com.norvale.velto.product");
    EXPECT_EQ(requests[3].text, "com.norvale.velto.springboard");
    EXPECT_TRUE(requests[3].replied);
}

TEST_F(VeltoUtilsTest, IdentifierLookupsFindTheFirstExactMatchInTheGivenList) {
    auto row = [](const char* name, const char* id) {
        auto s = plat::Specifier::preferenceSpecifierNamed(name, nullptr, "", "", "",
                                                           plat::PSSwitchCell, "");
        s->setIdentifier(id);
        return s;
    };
    auto list = std::make_shared<plat::SpecifierArray>(std::vector<plat::SpecifierPtr>{
        row("Group", "MailGroup"), row("Mail", "Mail"), row("Lower", "mail"), row("Again", "Mail"),
        row("Prefix", "MailApp")});

    EXPECT_EQ(velto::nv__identifierIndex(list, "MailGroup"), 0);
    EXPECT_EQ(velto::nv__identifierIndex(list, "Mail"), 1);
    EXPECT_EQ(velto::nv__identifierIndex(list, "mail"), 2);
    EXPECT_EQ(velto::nv__identifierIndex(list, "MailApp"), 4);
    EXPECT_EQ(velto::nv__identifierIndex(list, "MAIL"), -1);
    EXPECT_EQ(velto::nv__identifierIndex(list, "Mai"), -1);
    EXPECT_EQ(velto::nv__identifierIndex(nullptr, "Mail"), -1);
    EXPECT_EQ(velto::nv__identifierIndex(std::make_shared<plat::SpecifierArray>(), "Mail"), -1);

    EXPECT_EQ(velto::nv__specifierByIdentifier(list, "Mail"), list->objectAtIndex(1));
    EXPECT_EQ(velto::nv__specifierByIdentifier(list, "mail"), list->objectAtIndex(2));
    EXPECT_EQ(velto::nv__specifierByIdentifier(list, "Absent"), nullptr);
    EXPECT_EQ(velto::nv__specifierByIdentifier(nullptr, "Mail"), nullptr);
}

}  // namespace
