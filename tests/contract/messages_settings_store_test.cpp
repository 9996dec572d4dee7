#include "contract/velto_base_messages_settings_controller.h"
#include "contract/velto_settings.h"
#include "platform/prefs/runtime.h"
#include "tests/contract/contract_fixture.h"

using contracttest::kChanged;
using contracttest::kMainFile;
using contracttest::kPreferences;
using plat::JournalEntry;
using plat::Value;
using velto::VeltoBaseMessagesSettingsController;
using velto::VeltoSettings;

namespace {

// A page keeping its own dictionary, read from a file at creation as the pages do; its
// picture cache lives in folders the test chooses.
class StorePage : public VeltoBaseMessagesSettingsController {
  public:
    std::string className() const override { return "ContractStorePage"; }
    std::string getImageCacheFilePath(const std::string& fileName) override {
        return "/var/mobile/Library/ContractCache/Pictures/" + fileName;
    }
    std::string getThumnailImageCacheFilePath(const std::string& fileName) override {
        return "/var/mobile/Library/ContractCache/Thumbnails/" + fileName;
    }
};

class MessagesSettingsStoreTest : public contracttest::ContractTest {
  protected:
    void SetUp() override {
        ContractTest::SetUp();
        plat::Runtime::shared().registerClass(
            "ContractStorePage", "VeltoBaseMessagesSettingsController",
            [] { return std::make_shared<StorePage>(); }, contracttest::kBundle);
    }

    std::shared_ptr<StorePage> openPage(const std::string& settingsFile = kMainFile) {
        auto page = std::make_shared<StorePage>();
        EXPECT_TRUE(page->initForContentSize({320, 480}));
        page->loadSettingsFromFile(settingsFile);
        return page;
    }

    // A switch row of a specifier list: a key, maybe a defaults domain, a notification.
    static plat::SpecifierPtr switchRow(const char* key, const char* defaults = "") {
        auto row = plat::Specifier::preferenceSpecifierNamed(key, nullptr, "", "", "",
                                                             plat::PSSwitchCell, "");
        row->setProperty(key, "key");
        if (*defaults) row->setProperty(defaults, "defaults");
        row->setProperty(kChanged, "PostNotification");
        return row;
    }

    std::size_t changedPosts() {
        std::size_t n = 0;
        for (auto& name : device.notifications())
            n += name == kChanged;
        return n;
    }

    plat::ImagePtr pngAt(const std::string& devicePath) {
        auto bytes = device.process().root().readFile(devicePath);
        return bytes ? plat::Image::imageWithData(*bytes) : nullptr;
    }

    const std::string whatsapp = std::string(kPreferences) + "/com.norvale.whatsapp.plist";
};

TEST_F(MessagesSettingsStoreTest, UpdatesRewriteTheWholeFileInBinaryAndRefreshTheSharedCopy) {
    device.writePlist(kMainFile,
                      Value::dictionary({{"VeltoEnabled", Value::boolean(false)},
                                         {"VeltoEnabledMail", Value::boolean(true)},
                                         {"Extra", "kept"}}),
                      true);
    auto shared = VeltoSettings::sharedSettings();
    auto page = openPage();
    ASSERT_FALSE(isBinaryPlist(kMainFile));

    page->updateSettingsDict(Value::boolean(true), "VeltoEnabled");
    EXPECT_TRUE(isBinaryPlist(kMainFile));
    EXPECT_EQ(device.readPlist(kMainFile),
              Value::dictionary({{"VeltoEnabled", Value::boolean(true)},
                                 {"VeltoEnabledMail", Value::boolean(true)},
                                 {"Extra", "kept"}}));
    EXPECT_TRUE(shared->isVeltoEnabled());
    EXPECT_TRUE(page->isEnabledForKey("VeltoEnabledMail", "com.norvale.velto.plist"));

    // nil removes the key from the dictionary and from the file.
    page->updateSettingsDict(Value(), "VeltoEnabledMail");
    EXPECT_TRUE(device.readPlist(kMainFile).objectForKey("VeltoEnabledMail").isNil());
    EXPECT_TRUE(page->settings().objectForKey("VeltoEnabledMail").isNil());
    EXPECT_FALSE(page->isEnabledForKey("VeltoEnabledMail", "com.norvale.velto.plist"));
    EXPECT_EQ(device.readPlist(kMainFile).count(), 2u);

    // The held dictionary is not re-read: a page made earlier keeps its copy, while its
    // queries read the disk.
    auto older = openPage();
    page->updateSettingsDict(Value::boolean(true), "VeltoEnabledRoundedPictures");
    EXPECT_TRUE(older->settings().objectForKey("VeltoEnabledRoundedPictures").isNil());
    EXPECT_TRUE(older->isRoundPicsEnabled("com.norvale.velto.plist"));
    EXPECT_FALSE(older->isRoundPicsEnabled("com.norvale.whatsapp.plist"));
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(MessagesSettingsStoreTest, MissingFileLosesUpdatesButStillRefreshesTheSharedCopy) {
    auto shared = VeltoSettings::sharedSettings();
    auto page = openPage();
    EXPECT_TRUE(page->settings().isNil());
    page->updateSettingsDict(Value::boolean(true), "VeltoEnabled");
    EXPECT_FALSE(device.exists(kMainFile));
    EXPECT_TRUE(page->settings().isNil());

    // Written by the extension meanwhile: the page's update is lost, the reload is not (the
    // file is changed so that only a re-read can notice).
    device.writePlist(kMainFile, Value::dictionary({{"VeltoEnabled", Value::boolean(true)},
                                                    {"PhoneAppEnabled", Value::boolean(false)}}));
    ASSERT_FALSE(shared->isVeltoEnabled_Phone());
    rewriteKeepingStamp(kMainFile, Value::dictionary({{"VeltoEnabled", Value::boolean(false)},
                                                      {"PhoneAppEnabled", Value::boolean(true)}}));
    const std::string before = fileText(kMainFile);
    page->updateSettingsDict(Value::boolean(true), "VeltoEnabled");
    EXPECT_EQ(fileText(kMainFile), before);
    EXPECT_TRUE(shared->isVeltoEnabled_Phone());
    EXPECT_FALSE(shared->isVeltoEnabled());
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(MessagesSettingsStoreTest, WriteFailureLogsThePathAndTheDictionaryAndGoesOn) {
    device.writePlist(kMainFile, Value::dictionary({{"VeltoEnabled", Value::boolean(true)}}));
    auto page = openPage();
    auto& root = device.process().root();
    ASSERT_TRUE(root.removeItem(kMainFile));
    ASSERT_TRUE(root.createDirectory(kMainFile, false));

    page->updateSettingsDict(Value::boolean(true), "VeltoEnabledMessages");
    const Value expected = Value::dictionary(
        {{"VeltoEnabled", Value::boolean(true)}, {"VeltoEnabledMessages", Value::boolean(true)}});
    EXPECT_EQ(device.logLines(),
              std::vector<std::string>{"com.norvale.Velto: Error => Unable to save settings to " +
                                       std::string(kMainFile) +
                                       " and settings: " + expected.description()});
    EXPECT_EQ(page->settings(), expected);
    bool isFolder = false;
    EXPECT_TRUE(root.fileExists(kMainFile, &isFolder) && isFolder);
}

TEST_F(MessagesSettingsStoreTest, RowsWithoutDefaultsGoToThePagesOwnFileOnly) {
    device.writePlist(kMainFile, Value::dictionary({{"VeltoEnabled", Value::boolean(true)}}));
    device.writePlist(whatsapp, Value::dictionary({{"WhatsAppOption", Value::boolean(false)}}));
    auto page = openPage();

    // No defaults domain: the value goes into the page's dictionary and file, announced.
    page->setPreferenceValue(Value::boolean(true), switchRow("VeltoEnabledLS"));
    EXPECT_EQ(device.readPlist(kMainFile).objectForKey("VeltoEnabledLS"), Value::boolean(true));
    EXPECT_EQ(page->settings().objectForKey("VeltoEnabledLS"), Value::boolean(true));
    EXPECT_TRUE(isBinaryPlist(kMainFile));
    EXPECT_EQ(changedPosts(), 1u);

    // A defaults domain: the platform's path, into that domain's file.
    page->setPreferenceValue(Value::boolean(true),
                             switchRow("VeltoEnabledNC", "com.norvale.velto"));
    EXPECT_EQ(device.readPlist(kMainFile).objectForKey("VeltoEnabledNC"), Value::boolean(true));
    EXPECT_TRUE(page->settings().objectForKey("VeltoEnabledNC").isNil());
    EXPECT_EQ(device.entries(JournalEntry::Kind::PreferenceWrite).size(), 1u);
    EXPECT_EQ(changedPosts(), 2u);

    // Pages holding the whatsapp file never write it, nor anything else in its place.
    const std::string mainBefore = fileText(kMainFile);
    const std::string whatsappBefore = fileText(whatsapp);
    auto reader = openPage(whatsapp);
    ASSERT_EQ(reader->settings().objectForKey("WhatsAppOption"), Value::boolean(false));
    reader->setPreferenceValue(Value::boolean(true), switchRow("WhatsAppOption"));
    EXPECT_EQ(reader->settings().objectForKey("WhatsAppOption"), Value::boolean(false));
    EXPECT_EQ(changedPosts(), 3u);
    reader->updateSettingsDict(Value::boolean(true), "WhatsAppOption");
    reader->writeSettings();
    EXPECT_EQ(fileText(whatsapp), whatsappBefore);
    EXPECT_EQ(fileText(kMainFile), mainBefore);

    // A page whose file was missing has no dictionary to put the value in.
    ASSERT_TRUE(device.process().root().removeItem(kMainFile));
    auto empty = openPage();
    empty->setPreferenceValue(Value::boolean(true), switchRow("VeltoEnabled"));
    EXPECT_FALSE(device.exists(kMainFile));
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(MessagesSettingsStoreTest, DefaultPictureFilesHaveTheCanvasSizesAtTheScreenScale) {
    auto settings = VeltoSettings::sharedSettings();
    const double width = settings->defaultWidth();
    const double height = settings->defaultHeight();
    ASSERT_GT(width, 0);
    ASSERT_GT(height, 0);
    const std::string picture =
        "/var/mobile/Library/ContractCache/Pictures/" + std::string(StorePage::kDefaultImageName);
    const std::string thumbnail = "/var/mobile/Library/ContractCache/Thumbnails/" +
                                  std::string(StorePage::kDefaultThumbnailName);

    for (int scale : {2, 3}) {
        device.setProfile("iPhone", scale);
        auto page = openPage();
        page->saveDefaultContactImage(contracttest::paint(50, 50, 1, {0, 0.5, 1}));
        auto big = pngAt(picture);
        auto small = pngAt(thumbnail);
        ASSERT_TRUE(big && small) << scale;
        EXPECT_EQ(big->pixelWidth(), static_cast<int>(2 * width * scale));
        EXPECT_EQ(big->pixelHeight(), static_cast<int>(2 * height * scale));
        EXPECT_EQ(small->pixelWidth(), static_cast<int>((2 * width + 8) * scale));
        EXPECT_EQ(small->pixelHeight(), static_cast<int>((2 * height + 8) * scale));
        // The picture is stretched over the whole canvas.
        EXPECT_EQ(contracttest::alphaOf(big->pixel(1, 1)), 255u);
        EXPECT_EQ(contracttest::blueOf(big->pixel(big->pixelWidth() / 2, big->pixelHeight() / 2)),
                  255u);

        // A copy into a folder that does not exist yet.
        const std::string folder = "/var/mobile/Library/ContractCache/Copy" + std::to_string(scale);
        page->saveDefaultContactImage(contracttest::paint(10, 20, 1, {1, 0, 0}), folder);
        auto copy = pngAt(folder + "/" + StorePage::kDefaultImageName);
        auto copyThumb = pngAt(folder + "/" + StorePage::kDefaultThumbnailName);
        ASSERT_TRUE(copy && copyThumb);
        EXPECT_EQ(copy->pixelWidth(), big->pixelWidth());
        EXPECT_EQ(copyThumb->pixelHeight(), small->pixelHeight());
        EXPECT_EQ(copy->pixel(copy->pixelWidth() / 2, 1), 0xffff0000u);

        page->removeDefaultContactImage();
        EXPECT_FALSE(device.exists(picture));
        EXPECT_FALSE(device.exists(thumbnail));
        EXPECT_TRUE(device.exists(folder + "/" + StorePage::kDefaultImageName));
    }

    // Removing what is not there is silent; removing a file leaves its folder alone.
    auto page = openPage();
    const std::size_t logged = device.logLines().size();
    page->removeItemAtPath("/var/mobile/Library/ContractCache/none.png");
    page->removeDefaultContactImage();
    EXPECT_EQ(device.logLines().size(), logged);
    page->removeItemAtPath("/var/mobile/Library/ContractCache/Copy2/" +
                           std::string(StorePage::kDefaultImageName));
    EXPECT_FALSE(device.exists("/var/mobile/Library/ContractCache/Copy2/" +
                               std::string(StorePage::kDefaultImageName)));
    EXPECT_TRUE(device.exists("/var/mobile/Library/ContractCache/Copy2/" +
                              std::string(StorePage::kDefaultThumbnailName)));
}

}  // namespace
