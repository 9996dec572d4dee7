#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
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

namespace {

using namespace contracttest;
using plat::Value;
using velto::NVUtils;
using velto::VeltoUtils;
using VeltoUtilsTest = ContractTest;

// The version checks are the platform's comparison (DeviceFactsTest) and bite on the pages:
// the back button at 11, the lock screen row at 13. An iPod is no iPad only here.
TEST_F(VeltoUtilsTest, DeviceFamilyAndFaceTimeComeFromTheDevice) {
    // family, FaceTime -> iPad or iPod, iPad
    for (auto [family, faceTime, iPadOrIPod, iPad] : {std::tuple{"iPhone", true, false, false},
                                                      {"iPad", true, true, true},
                                                      {"iPod", false, true, false}}) {
        device.setProfile(family, 2, faceTime);
        EXPECT_EQ(VeltoUtils::isIPadOrIPod(), iPadOrIPod) << family;
        EXPECT_EQ(VeltoUtils::isIPad(), iPad) << family;
        EXPECT_EQ(VeltoUtils::isFaceTimeAvailable(), faceTime) << family;
    }
}

TEST_F(VeltoUtilsTest, MakerAppsAreFoundAsSystemOrUserApplications) {
    auto install = [&](const std::string& folder, const std::string& bundleIdentifier) {
        device.writePlist(folder + "/Info.plist",
                          Value::dictionary({{"CFBundleIdentifier", bundleIdentifier}}));
    };
    auto found = [] {
        return VeltoUtils::isRingLedgerInstalled() + VeltoUtils::isRecentsInstalled();
    };
    // Near misses: wrong case, a folder that is no application, another application.
    install("/Applications/RingLedgr.app", "com.norvale.ringledger10");
    install("/Applications/RingLedger", VeltoUtils::kRingLedgerIdentifier);
    install("/var/containers/Bundle/Application/0A1B/Other.app", "com.norvale.recents.widget");
    EXPECT_EQ(found(), 0);

    // Each app once preinstalled and once from the App Store.
    const std::string user = "/var/containers/Bundle/Application/5D2E-77", system = "/Applications";
    for (auto [ringLedger, recents] : {std::pair{system, user}, {user, system}}) {
        install(ringLedger + "/RingLedger.app", VeltoUtils::kRingLedgerIdentifier);
        install(recents + "/Recents.app", VeltoUtils::kRecentsIdentifier);
        EXPECT_EQ(found(), 2);
        EXPECT_EQ(
            velto::VeltoBaseSettingsController::getAppFolderPath(VeltoUtils::kRecentsIdentifier),
            recents + "/Recents.app");
        for (const std::string& app : {system + "/RingLedger.app", system + "/Recents.app", user})
            device.process().root().removeItem(app);
        EXPECT_EQ(found(), 0);
    }
}

TEST_F(VeltoUtilsTest, NavigationBarColourIsTheBundleSwatchWithTheSameColourAsFallback) {
    // A subclass without a bundle of its own lives in its ancestor's bundle. No bundle, or no
    // such image: still the product's colour, not some other tint.
    auto& runtime = plat::Runtime::shared();
    runtime.registerClass("ContractColourPage", "VeltoBaseSettingsController", {}, kBundle);
    runtime.registerClass("ContractColourSubpage", "ContractColourPage");
    runtime.registerClass("ContractBundlelessPage", "VeltoBaseSettingsController");
    for (auto [page, image] : {std::pair{"ContractColourPage", "nav"},
                               {"ContractColourSubpage", "nav"},
                               {"ContractBundlelessPage", "nav"},
                               {"ContractColourPage", "none"}})
        EXPECT_EQ(hexOf(VeltoUtils::navigationBarColor(page, image)), productHex())
            << page << image;

    // Transparent margins do not wash the colour out; an image with nothing opaque falls back.
    const std::string other = "/Library/ContractBundles/Margins.bundle";
    runtime.registerClass("ContractMarginsPage", "VeltoBaseSettingsController", {}, other);
    writePng(other + "/nav@3x.png", paint(60, 60, 3, {0, 0, 0, 0}, {1, 0.5, 0}, 20, 20, 20, 20));
    writePng(other + "/clear@3x.png", paint(60, 60, 3, {0, 0, 0, 0}));
    EXPECT_EQ(hexOf(VeltoUtils::navigationBarColor("ContractMarginsPage", "nav")), "#FF8000FF");
    // Every pixel counts once: a red first column in blue weighs a sixtieth.
    writePng(other + "/striped@3x.png", paint(60, 60, 3, {0, 0, 1}, {1, 0, 0}, 0, 0, 1, 60));
    EXPECT_EQ(hexOf(VeltoUtils::navigationBarColor("ContractMarginsPage", "striped")),
              hexOf(plat::Color::colorWithRGBA(1.0 / 60, 0, 59.0 / 60, 1)));
    // A single opaque pixel is the colour itself.
    writePng(other + "/dot@3x.png", paint(1, 1, 3, {0, 0.6, 1}));
    EXPECT_EQ(hexOf(VeltoUtils::navigationBarColor("ContractMarginsPage", "dot")), "#0099FFFF");
    EXPECT_EQ(hexOf(VeltoUtils::navigationBarColor("ContractMarginsPage", "clear")), productHex());
}

// The cuts are the platform's (ImageCuts) and the wiring shows on the Mail page's icons; a row
// without an icon asks for the cut of nothing.
TEST_F(VeltoUtilsTest, RoundAndSquarePicturesOfNothingAreNothing) {
    EXPECT_FALSE(VeltoUtils::roundedImage(nullptr) || VeltoUtils::squareImage(nullptr));
}

TEST_F(VeltoUtilsTest, LogMessagesAreJournaledAndFiledOnlyWhileLoggingIsOn) {
    VeltoUtils::logMessage("before logging");
    EXPECT_FALSE(device.exists(VeltoUtils::kLogFilePath));
    auto setLogging = [&](bool on) {
        device.writeSettings({{"VeltoEnableLogging", on}});
        velto::VeltoSettings::sharedSettings()->loadSettings();
    };
    setLogging(true);
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    const auto before =
        std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    VeltoUtils::logMessage("first kept");
    const auto after = std::chrono::system_clock::now();
    VeltoUtils::logMessage("second kept");
    setLogging(false);
    VeltoUtils::logMessage("after logging");

    std::ifstream in(device.host(VeltoUtils::kLogFilePath));
    std::string first, second, third;
    ASSERT_TRUE(std::getline(in, first) && std::getline(in, second));
    // "2026-11-25 22:19:57.123 [process] message", stamped when it was logged.
    std::tm tm{};
    int ms = -1;
    char process[64] = "";
    ASSERT_EQ(
        std::sscanf(first.c_str(), "%d-%d-%d %d:%d:%d.%3d [%63[^]]] first kept", &tm.tm_year,
                    &tm.tm_mon, &tm.tm_mday, &tm.tm_hour, &tm.tm_min, &tm.tm_sec, &ms, process),
        8)
        << first;
    tm.tm_year -= 1900;
    tm.tm_mon -= 1;
    const auto stamped =
        std::chrono::system_clock::from_time_t(::timegm(&tm)) + std::chrono::milliseconds(ms);
    EXPECT_TRUE(stamped >= before && stamped <= after) << first;
    EXPECT_EQ(process, device.process().name());
    EXPECT_TRUE(first.ends_with("] first kept")) << first;
    EXPECT_TRUE(second.ends_with("second kept")) << second;
    EXPECT_FALSE(std::getline(in, third)) << third;
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
    for (const char* absent : {"net.whatsapp.whatsapp", "com.example.none", ""})
        EXPECT_EQ(NVUtils::applicationDataContainerDirectory(absent), std::nullopt) << absent;
}

// Requests, replies and their journal are the platform's; here: which center is reached, and
// that the approach flag changes nothing.
TEST_F(VeltoUtilsTest, SpringBoardMessagesReachTheNamedCenterWhateverTheApproach) {
    std::vector<std::string> seen;
    device.process().messageCenters().setResponder(
        [&seen](const std::string& center, const std::string& message, const Value& userInfo) {
            seen.push_back(center + " " + message);
            return Value::dictionary({{"VeltoServiceMessageData", userInfo.str() + " answered"}});
        });
    for (bool ignoreApproach : {false, true}) {
        Value reply = NVUtils::sendMessageToSpringBoardAndReceiveReplyName(
            "com.norvale.velto.springboard", "com.norvale.velto.product", ignoreApproach,
            Value("product"));
        EXPECT_EQ(reply.objectForKey("VeltoServiceMessageData").str(), "product answered");
    }
    EXPECT_EQ(seen, std::vector<std::string>(
                        2, "com.norvale.velto.springboard com.norvale.velto.product"));
}

TEST_F(VeltoUtilsTest, IdentifierLookupsFindTheFirstExactMatchInTheGivenList) {
    auto list = std::make_shared<plat::SpecifierArray>();
    for (const char* id : {"MailGroup", "Mail", "mail", "Mail", "MailApp"}) {
        list->addObject(plat::Specifier::preferenceSpecifierNamed(id, nullptr, "", "", "",
                                                                  plat::PSSwitchCell, ""));
        list->objectAtIndex(list->count() - 1)->setIdentifier(id);
    }
    for (auto [id, index] : {std::pair{"MailGroup", 0},
                             {"Mail", 1},
                             {"mail", 2},
                             {"MailApp", 4},
                             {"MAIL", -1},
                             {"Mai", -1}}) {
        EXPECT_EQ(velto::nv__identifierIndex(list, id), index) << id;
        EXPECT_EQ(velto::nv__specifierByIdentifier(list, id),
                  index < 0 ? nullptr : list->objectAtIndex(index))
            << id;
    }
    EXPECT_EQ(velto::nv__identifierIndex(nullptr, "Mail"), -1);
    EXPECT_EQ(velto::nv__identifierIndex(std::make_shared<plat::SpecifierArray>(), "Mail"), -1);
    EXPECT_EQ(velto::nv__specifierByIdentifier(nullptr, "Mail"), nullptr);
}

}  // namespace
