// The Messages page on a device with the bundle installed: its rows and switch, and where its
// hooks put and take away the default contact picture. The pick and restore flows are driven
// through velto-settings in messages_simulator_test.cpp.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "pages/messages_app_settings_controller.h"
#include "platform/ui/image.h"
#include "tests/support/bundle_device.h"

using plat::Value;
using Messages = velto::MessagesAppSettingsController;

namespace {

using Ids = std::vector<std::string>;

const Ids kMessagesRows = {"MessagesGroup",  "MessagesEnabled",      "PicturesGroup",
                           "Default Avatar", "Default Group Avatar", "DefaultAvatarGroup",
                           "ChooseAvatar",   "RestoreAvatar"};
const Ids kMessagesHead = {"MessagesGroup", "MessagesEnabled"};
const std::string kCache = "/var/mobile/Library/Preferences/Velto";

class MessagesPageTest : public ::testing::Test {
  protected:
    void open() { page = device.openBuilt<Messages>("MessagesAppSettingsController"); }
    Ids ids() const { return device.ids(page->specifiers()); }
    void flip(bool on) { device.flip(*page, "MessagesEnabled", on); }

    Ids logSince(std::size_t mark) const {
        Ids lines;
        for (const auto& e : device.journal().since(mark))
            if (const auto* log = std::get_if<plat::journal::Log>(&e)) lines.push_back(log->text);
        return lines;
    }

    testsupport::BundleDevice device;
    std::shared_ptr<Messages> page;
};

TEST_F(MessagesPageTest, TwoRowsWhileOffAndTheSwitchBringsTheRestInAndOut) {
    open();
    EXPECT_EQ(ids(), kMessagesHead);
    flip(true);
    EXPECT_EQ(ids(), kMessagesRows);
    EXPECT_TRUE(device.mainSettings().objectForKey("VeltoEnabledMessages").boolValue());
    const auto at = device.mark();
    flip(false);
    EXPECT_EQ(ids(), kMessagesHead);
    EXPECT_EQ(device.listOperations(at), device.animated('-', 7, 2));
}

TEST_F(MessagesPageTest, PicturesGoToTheirFolderFirstThenToTheMessagesContainerIfThereIsOne) {
    device.writeSettings({{"VeltoEnabledMessages", true}});
    open();
    // Both files of a name share one folder.
    for (const std::string name : {Messages::kDefaultImageName, Messages::kDefaultThumbnailName})
        EXPECT_EQ(page->getThumnailImageCacheFilePath(name), page->getImageCacheFilePath(name));
    EXPECT_EQ(page->getImageCacheFilePath("N.png"), kCache + "/N.png");
    EXPECT_FALSE(page->shouldShowImageAsTitle());
    const auto picture = plat::Image::blank(40, 20, 1);
    const auto saved = [](const std::string& path) {
        return "Saved the default contact picture at '" + path + "'";
    };
    const std::string image = kCache + "/" + Messages::kDefaultImageName;
    const std::string thumbnail = kCache + "/" + Messages::kDefaultThumbnailName;

    // Without a Messages container the copy has nowhere to go: the log says so, nothing breaks,
    // and the copy is announced with a nil folder and not made.
    EXPECT_EQ(Messages::messagesContainerFolder(), std::nullopt);
    device.writeText(kCache + "/N.png", "x");
    auto at = device.mark();
    page->preparePathAndRemoveItem("N.png");
    EXPECT_EQ(logSince(at), (Ids{"Removed '" + kCache + "/N.png'",
                                 "Removing Image to messages directory '(null)' too..."}));
    at = device.mark();
    page->saveDefaultContactImage(picture);
    EXPECT_EQ(logSince(at), (Ids{saved(image), saved(thumbnail),
                                 "Saving Default Image to messages directory '(null)' too..."}));

    const std::string container = "/var/mobile/Containers/Data/Application/SMS";
    device.writePlist(container + "/.com.apple.mobile_container_manager.metadata.plist",
                      Value::dictionary({{"MCMMetadataIdentifier", "com.apple.MobileSMS"}}));
    const std::string copies = container + "/Library/Preferences/Velto";
    EXPECT_EQ(Messages::messagesContainerFolder(), copies);
    device.writeText(kCache + "/N.png", "x");
    device.writeText(copies + "/N.png", "x");
    at = device.mark();
    page->preparePathAndRemoveItem("N.png");
    EXPECT_EQ(logSince(at),
              (Ids{"Removed '" + kCache + "/N.png'",
                   "Removing Image to messages directory '" + copies + "/N.png' too...",
                   "Removed '" + copies + "/N.png'"}));
    EXPECT_FALSE(device.exists(kCache + "/N.png") || device.exists(copies + "/N.png"));
    at = device.mark();
    page->saveDefaultContactImage(picture);
    EXPECT_EQ(logSince(at),
              (Ids{saved(image), saved(thumbnail),
                   "Saving Default Image to messages directory '" + copies + "' too...",
                   saved(copies + "/" + Messages::kDefaultImageName),
                   saved(copies + "/" + Messages::kDefaultThumbnailName)}));
}

TEST_F(MessagesPageTest, PictureIconsFollowTheRoundedOptionBuiltOrInserted) {
    for (const bool round : {true, false}) {
        device.writeSettings(
            {{"VeltoEnabledMessages", true}, {"VeltoEnabledRoundedPictures", round}});
        open();
        // Built rows, then rows the switch inserts, are reshaped as they go in.
        for (const bool inserted : {false, true}) {
            if (inserted) {
                flip(false);
                flip(true);
            }
            ASSERT_EQ(ids(), kMessagesRows);
            for (const char* id : {"Default Avatar", "Default Group Avatar"}) {
                const auto icon = device.row(page->specifiers(), id)->propertyForKey("iconImage");
                ASSERT_TRUE(icon.as<plat::Image>()) << id;
                // A round cut leaves the corner transparent; a square one keeps it opaque.
                EXPECT_EQ(icon.as<plat::Image>()->pixel(0, 0) >> 24, round ? 0u : 0xffu)
                    << id << (inserted ? " inserted" : " built");
            }
        }
    }
    // "My Avatar" names a picture row on every page of the family, though Messages has none.
    device.writeSettings({{"VeltoEnabledMessages", true}, {"VeltoEnabledRoundedPictures", true}});
    auto mine = plat::Specifier::preferenceSpecifierNamed("My Avatar", page, "", "", "",
                                                          plat::PSStaticTextCell, "");
    mine->setProperty(device.row(page->specifiers(), "Default Avatar")->propertyForKey("iconImage"),
                      "iconImage");
    page->insertSpecifier(mine, 2, false);
    EXPECT_EQ(mine->propertyForKey("iconImage").as<plat::Image>()->pixel(0, 0) >> 24, 0u);
}

TEST_F(MessagesPageTest, APickDismissesThePickerAnimatedAndForgetsIt) {
    device.writeSettings({{"VeltoEnabledMessages", true}});
    open();
    page->selectDefaultContactImage(page->specifierAtIndex(6));
    const auto picker = Messages::imagePicker();
    ASSERT_TRUE(picker);
    const auto at = device.mark();
    ASSERT_TRUE(picker->pick(plat::Image::blank(40, 20, 1), nullptr));
    const Ids lines = device.journalLines(at);
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "dismiss UIImagePickerController dismissViewControllerAnimated animated"),
              1);
    // The extension is told once the pictures are there.
    const auto told = std::find(lines.begin(), lines.end(),
                                "notification com.norvale.veltomessagesavatarsettingschanged");
    ASSERT_NE(told, lines.end());
    EXPECT_EQ(std::count_if(told, lines.end(),
                            [](const std::string& line) { return line.starts_with("log Saved"); }),
              0);
    EXPECT_GT(std::count_if(lines.begin(), told,
                            [](const std::string& line) { return line.starts_with("log Saved"); }),
              0);
    EXPECT_FALSE(Messages::imagePicker());
}

TEST_F(MessagesPageTest, ACancelDismissesAnimatedAndAFailedSaveSaysWhere) {
    device.writeSettings({{"VeltoEnabledMessages", true}});
    open();
    page->selectDefaultContactImage(page->specifierAtIndex(6));
    ASSERT_TRUE(Messages::imagePicker());
    EXPECT_TRUE(Messages::imagePicker()->allowsEditing());
    auto at = device.mark();
    ASSERT_TRUE(Messages::imagePicker()->cancel());
    EXPECT_EQ(device.journalLines(at),
              Ids{"dismiss UIImagePickerController dismissViewControllerAnimated animated"});
    EXPECT_FALSE(Messages::imagePicker());

    // A file where the folder belongs: each picture says where it could not go.
    device.writeText(kCache, "not a folder");
    at = device.mark();
    page->saveDefaultContactImage(plat::Image::blank(40, 20, 1));
    const std::string unable = "Unable to save the default contact picture at '" + kCache + "/";
    EXPECT_EQ(logSince(at), (Ids{unable + Messages::kDefaultImageName + "'",
                                 unable + Messages::kDefaultThumbnailName + "'",
                                 "Saving Default Image to messages directory '(null)' too..."}));
}

}  // namespace
