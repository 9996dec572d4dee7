#include "contract/velto_base_messages_settings_controller.h"
#include "contract/velto_settings.h"
#include "tests/contract/contract_fixture.h"

namespace {

using namespace contracttest;
using plat::Value;
using velto::VeltoSettings;

const std::string kCache = "/var/mobile/Library/ContractCache/";

// A page keeping its own dictionary, read from a file at creation as the pages do; its
// picture cache lives in folders of the test.
class StorePage : public velto::VeltoBaseMessagesSettingsController {
  public:
    std::string className() const override { return "ContractStorePage"; }
    std::string getImageCacheFilePath(const std::string& name) override {
        return kCache + "Pictures/" + name;
    }
    std::string getThumnailImageCacheFilePath(const std::string& name) override {
        return kCache + "Thumbnails/" + name;
    }
};

class MessagesSettingsStoreTest : public ContractTest {
  protected:
    std::shared_ptr<StorePage> openPage(const std::string& settingsFile = kMainFile) {
        auto page = std::make_shared<StorePage>();
        EXPECT_TRUE(page->initForContentSize({320, 480}));
        page->loadSettingsFromFile(settingsFile);
        return page;
    }
    // A switch row: a key, maybe a defaults domain, the settings-changed notification.
    static plat::SpecifierPtr switchRow(const char* key, const char* defaults = "") {
        auto row = plat::Specifier::preferenceSpecifierNamed(key, nullptr, "", "", "",
                                                             plat::PSSwitchCell, "");
        row->setProperty(key, "key");
        if (*defaults) row->setProperty(defaults, "defaults");
        row->setProperty(kChanged, "PostNotification");
        return row;
    }
};

TEST_F(MessagesSettingsStoreTest, UpdatesRewriteTheWholeFileInBinaryAndRefreshTheSharedCopy) {
    Value settings = bools({{"VeltoEnabled", false}, {"VeltoEnabledMail", true}});
    settings.setValueForKey("Extra", "kept");
    device.writePlist(kMainFile, settings, true);
    auto page = openPage();
    // In place, never a new file renamed over the old one: the extension keeps the file it
    // watches, so the same inode must carry the new contents.
    const auto watched = device.process().root().status(kMainFile);
    page->updateSettingsDict(Value::boolean(true), "VeltoEnabled");
    EXPECT_EQ(device.process().root().status(kMainFile)->version.inode, watched->version.inode);
    EXPECT_TRUE(fileText(kMainFile).starts_with("bplist00"));
    settings.setValueForKey("VeltoEnabled", Value::boolean(true));
    EXPECT_EQ(device.mainSettings(), settings);
    EXPECT_TRUE(VeltoSettings::sharedSettings()->isVeltoEnabled());

    // nil removes the key from the dictionary and from the file.
    page->updateSettingsDict(Value(), "VeltoEnabledMail");
    EXPECT_EQ(device.mainSettings(), page->settings());
    EXPECT_EQ(page->settings().count(), 2u);

    // The held dictionary is not re-read: a page made earlier keeps its copy, while its
    // queries read the disk.
    auto older = openPage();
    page->updateSettingsDict(Value::boolean(true), "VeltoEnabledRoundedPictures");
    EXPECT_TRUE(older->settings().objectForKey("VeltoEnabledRoundedPictures").isNil());
    EXPECT_TRUE(older->isRoundPicsEnabled("com.norvale.velto.plist"));
    EXPECT_FALSE(older->isRoundPicsEnabled("com.norvale.whatsapp.plist"));
    EXPECT_FALSE(older->isEnabledForKey("VeltoEnabledMail", "com.norvale.velto.plist"));
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(MessagesSettingsStoreTest, FailedWritesLoseTheUpdateButNotTheReload) {
    // No file when the page opened: nothing is written, even once the file exists, but the
    // shared copy still reloads (the file is changed so that only a re-read can notice).
    auto shared = VeltoSettings::sharedSettings();
    auto page = openPage();
    page->updateSettingsDict(Value::boolean(true), "VeltoEnabled");
    EXPECT_FALSE(device.exists(kMainFile));
    EXPECT_TRUE(page->settings().isNil());
    device.writeSettings({{"VeltoEnabled", true}, {"PhoneAppEnabled", false}});
    ASSERT_FALSE(shared->isVeltoEnabled_Phone());
    rewriteKeepingStamp(kMainFile, bools({{"VeltoEnabled", false}, {"PhoneAppEnabled", true}}));
    const std::string before = fileText(kMainFile);
    page->updateSettingsDict(Value::boolean(true), "VeltoEnabled");
    EXPECT_EQ(fileText(kMainFile), before);
    EXPECT_EQ(shared->isVeltoEnabled_Phone() - shared->isVeltoEnabled(), 1);
    EXPECT_TRUE(device.logLines().empty());

    // A file that cannot be written: the path and the dictionary are logged, the page goes on.
    auto opened = openPage();
    auto& root = device.process().root();
    // A folder where the file belongs would be moved aside; a file where its folder belongs
    // leaves nowhere to write.
    const std::string folder = "/var/mobile/Library/Preferences";
    const plat::Bytes blocker{'x'};
    ASSERT_TRUE(root.removeItem(folder) && root.writeFile(folder, blocker, true));
    opened->updateSettingsDict(Value::boolean(true), "VeltoEnabledMessages");
    const Value expected =
        bools({{"VeltoEnabled", false}, {"PhoneAppEnabled", true}, {"VeltoEnabledMessages", true}});
    EXPECT_EQ(opened->settings(), expected);
    EXPECT_EQ(device.logLines(),
              std::vector<std::string>{"com.norvale.Velto: Error => Unable to save settings to " +
                                       std::string(kMainFile) +
                                       " and settings: " + expected.description()});
    EXPECT_EQ(root.readFile(folder), blocker);
}

TEST_F(MessagesSettingsStoreTest, RowsWithoutDefaultsGoToThePagesOwnFileOnly) {
    const std::string whatsapp = "/var/mobile/Library/Preferences/com.norvale.whatsapp.plist";
    device.writeSettings({{"VeltoEnabled", false}});
    device.writePlist(whatsapp, bools({{"WhatsAppOption", false}}));
    auto page = openPage();

    // A defaults domain (the master switch): the platform's path, into that domain's file,
    // behind the page's back.
    page->setPreferenceValue(Value::boolean(true), switchRow("VeltoEnabled", "com.norvale.velto"));
    EXPECT_EQ(device.entries<plat::journal::PreferenceWrite>().size(), 1u);
    EXPECT_EQ(page->settings().objectForKey("VeltoEnabled"), Value::boolean(false));
    EXPECT_EQ(changedPosts(), 1u);

    // No defaults domain: the value goes into the page's file, announced, without putting
    // back what the page's old copy held.
    page->setPreferenceValue(Value::boolean(true), switchRow("VeltoEnabledLS"));
    EXPECT_EQ(device.mainSettings(), bools({{"VeltoEnabled", true}, {"VeltoEnabledLS", true}}));
    EXPECT_EQ(page->settings(), device.mainSettings());
    EXPECT_EQ(changedPosts(), 2u);

    // Pages holding the whatsapp file never write it, nor anything else in its place.
    const std::string mainBefore = fileText(kMainFile), whatsappBefore = fileText(whatsapp);
    auto reader = openPage(whatsapp);
    reader->setPreferenceValue(Value::boolean(true), switchRow("WhatsAppOption"));
    EXPECT_EQ(reader->settings(), bools({{"WhatsAppOption", false}}));
    EXPECT_EQ(changedPosts(), 3u);
    reader->updateSettingsDict(Value::boolean(true), "WhatsAppOption");
    EXPECT_EQ(fileText(whatsapp), whatsappBefore);
    EXPECT_EQ(fileText(kMainFile), mainBefore);

    // A page whose file was missing has no dictionary to put the value in.
    ASSERT_TRUE(device.process().root().removeItem(kMainFile));
    openPage()->setPreferenceValue(Value::boolean(true), switchRow("VeltoEnabled"));
    EXPECT_FALSE(device.exists(kMainFile));
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(MessagesSettingsStoreTest, DefaultPictureFilesHaveTheCanvasSizesAtTheScreenScale) {
    auto settings = VeltoSettings::sharedSettings();
    const double width = 2 * settings->defaultWidth(), height = 2 * settings->defaultHeight();
    ASSERT_GT(width * height, 0);
    const std::string picture = kCache + "Pictures/" + StorePage::kDefaultImageName;
    const std::string thumbnail = kCache + "Thumbnails/" + StorePage::kDefaultThumbnailName;
    // Read back at the screen scale, so that their size in points tells the pixel size.
    auto png = [&](const std::string& path, int scale) {
        auto bytes = device.process().root().readFile(path);
        return bytes ? plat::Image::imageWithData(*bytes, scale) : nullptr;
    };

    // One scale: the canvases at both scales are the shared picture writer's, checked on
    // the Mail page.
    const int scale = 3;
    device.setProfile("iPhone", scale);
    auto page = openPage();
    // Into the page's folders, and a copy into a folder that does not exist yet; the picture
    // is stretched over the whole canvas.
    const std::string copy = kCache + "Copy/";
    page->saveDefaultContactImage(paint(50, 50, 1, {0, 0.5, 1}));
    page->saveDefaultContactImage(paint(10, 20, 1, {1, 0, 0}), copy);
    for (auto [big, small, argb] : {std::tuple{picture, thumbnail, 0xff0080ffu},
                                    {copy + StorePage::kDefaultImageName,
                                     copy + StorePage::kDefaultThumbnailName, 0xffff0000u}}) {
        auto image = png(big, scale), thumb = png(small, scale);
        ASSERT_TRUE(image && thumb) << big;
        EXPECT_EQ(image->size(), (plat::Size{width, height}));
        EXPECT_EQ(thumb->size(), (plat::Size{width + 8, height + 8}));
        EXPECT_EQ(image->pixel(1, 1), argb);
        EXPECT_EQ(image->pixel(image->pixelWidth() / 2, image->pixelHeight() / 2), argb);
    }
    page->removeDefaultContactImage();
    EXPECT_FALSE(device.exists(picture) || device.exists(thumbnail));
    EXPECT_TRUE(device.exists(copy + StorePage::kDefaultImageName));

    // Removing what is not there is silent; removing a file leaves its folder alone.
    const std::size_t logged = device.logLines().size();
    page->removeItemAtPath(kCache + "none.png");
    page->removeDefaultContactImage();
    EXPECT_EQ(device.logLines().size(), logged);
    page->removeItemAtPath(copy + StorePage::kDefaultImageName);
    EXPECT_FALSE(device.exists(copy + StorePage::kDefaultImageName));
    EXPECT_TRUE(device.exists(copy + StorePage::kDefaultThumbnailName));
}

}  // namespace
