// The default avatar files the Mail page writes for the extension: real PNGs on a device
// root, read back pixel by pixel, with the log lines and the notification that go with them.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>

#include "platform/ui/alert_controller.h"
#include "tests/pages/mail_test_support.h"

using mailtest::kAvatarNotification;
using mailtest::kImagePath;
using mailtest::kStockPath;
using mailtest::kThumbnailPath;
using plat::JournalEntry;
using velto::MailAppSettingsController;

namespace {

const std::string kFolder = "/var/mobile/Library/Mail/Velto";
const std::string kUnableToStore = "com.norvale.Velto => Error: Unable to store the image..";

std::string removingLine(const std::string& path) {
    return "com.norvale.Velto => Infp: Removing item at path '" + path + "'..";
}
std::string removedLine(const std::string& path) {
    return "com.norvale.Velto => Error: While removing item at path '" + path + "' error => (null)";
}

class MailAvatarFilesTest : public ::testing::Test {
  protected:
    void SetUp() override { device.writeSettings({{"VeltoEnabledMail", true}}); }

    void pick(const plat::ImagePtr& picture) {
        mail.open();
        mail.tap("ChooseAvatar");
        const auto picker = MailAppSettingsController::imagePicker();
        ASSERT_TRUE(picker);
        ASSERT_TRUE(picker->pick(picture, nullptr));
    }

    void restore() {
        mail.open();
        mail.tap("RestoreAvatar");
        auto sheet =
            std::dynamic_pointer_cast<plat::AlertController>(mail.page->presentedViewController());
        ASSERT_TRUE(sheet);
        ASSERT_TRUE(sheet->tapAction("Default Avatar"));
    }

    // What the flows did, in order, leaving out the presenting and dismissing around them:
    // "log <text>", "reload", "notification <name>".
    std::vector<std::string> effectsSince(std::size_t mark) const {
        std::vector<std::string> out;
        for (const auto& e : device.journal().since(mark)) {
            switch (e.kind) {
                case JournalEntry::Kind::Log:
                    out.push_back("log " + e.text);
                    break;
                case JournalEntry::Kind::Reload:
                    out.push_back("reload");
                    break;
                case JournalEntry::Kind::Notification:
                    out.push_back("notification " + e.name);
                    break;
                default:
                    break;
            }
        }
        return out;
    }

    testsupport::BundleDevice device;
    mailtest::MailPageHarness mail{device};
};

// Every pixel of `out` whose place in `source` lies inside a patch of (nearly) one colour has
// that colour: the source was stretched over the whole of `out`.
void expectStretchedFrom(const plat::Image& out, const plat::Image& source) {
    const double fx = static_cast<double>(source.pixelWidth()) / out.pixelWidth();
    const double fy = static_cast<double>(source.pixelHeight()) / out.pixelHeight();
    int checked = 0, wrong = 0;
    for (int y = 0; y < out.pixelHeight(); ++y) {
        for (int x = 0; x < out.pixelWidth(); ++x) {
            const int sx = static_cast<int>((x + 0.5) * fx), sy = static_cast<int>((y + 0.5) * fy);
            const std::uint32_t expected = source.pixel(sx, sy);
            bool uniform = true;
            for (int dy = -2; dy <= 2 && uniform; ++dy)
                for (int dx = -2; dx <= 2 && uniform; ++dx) {
                    const int px = std::clamp(sx + dx, 0, source.pixelWidth() - 1);
                    const int py = std::clamp(sy + dy, 0, source.pixelHeight() - 1);
                    uniform = mailtest::near(source.pixel(px, py), expected, 2);
                }
            if (!uniform) continue;
            ++checked;
            if (!mailtest::near(out.pixel(x, y), expected, 3) && wrong++ < 5)
                ADD_FAILURE() << "pixel (" << x << ", " << y << ") is " << std::hex
                              << out.pixel(x, y) << ", the source has " << expected;
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(checked, out.pixelWidth() * out.pixelHeight() / 2);
}

// --- Storing a chosen picture ------------------------------------------------------------

TEST_F(MailAvatarFilesTest, ANonSquarePictureIsStretchedOverBothCanvasesAtTheScreenScale) {
    const auto grid = mailtest::landscapeGrid();
    for (const auto& [family, scale] :
         {std::pair{"iPhone", 2.0}, std::pair{"iPhone", 3.0}, std::pair{"iPad", 2.0}}) {
        SCOPED_TRACE(std::string(family) + " @" + std::to_string(scale));
        device.setProfile(family, scale);
        pick(grid.picture());

        // Named "@3x" whatever the scale; nothing else in the folder.
        EXPECT_EQ(device.process().root().contentsOfDirectory(kFolder),
                  (std::vector<std::string>{"default_avatar_mail@3x.png",
                                            "default_avatar_thumb_mail@3x.png"}));
        const auto image = mailtest::readPng(device, kImagePath);
        const auto thumbnail = mailtest::readPng(device, kThumbnailPath);
        ASSERT_TRUE(image && thumbnail);
        const auto imageSize = mailtest::imagePixels(scale);
        const auto thumbnailSize = mailtest::thumbnailPixels(scale);
        EXPECT_EQ(image->pixelWidth(), imageSize.width);
        EXPECT_EQ(image->pixelHeight(), imageSize.height);
        EXPECT_EQ(thumbnail->pixelWidth(), thumbnailSize.width);
        EXPECT_EQ(thumbnail->pixelHeight(), thumbnailSize.height);
        // The thumbnail is the larger of the two, by 8 points each way.
        EXPECT_EQ(thumbnail->pixelWidth() - image->pixelWidth(), static_cast<int>(8 * scale));
        EXPECT_EQ(thumbnail->pixelHeight() - image->pixelHeight(), static_cast<int>(8 * scale));

        // Neither cropped nor letterboxed, and the transparent block stays transparent: the
        // canvas is not opaque.
        mailtest::expectStretchedGrid(*image, grid);
        mailtest::expectStretchedGrid(*thumbnail, grid);
        EXPECT_EQ(image->pixel(0, 0), grid.colourAt(0, 0));
        EXPECT_EQ(image->pixel(image->pixelWidth() - 1, image->pixelHeight() - 1),
                  grid.colourAt(3, 1));
    }
}

TEST_F(MailAvatarFilesTest, BothFilesAreFinishedBeforeTheExtensionIsTold) {
    std::atomic<int> heard{0};
    std::atomic<bool> bothThere{false};
    auto& root = device.process().root();
    const auto token = device.process().darwin().addObserver(
        nullptr,
        [&](plat::DarwinNotifyCenter*, void*, const std::string&, const void*, const plat::Value&) {
            bothThere = root.fileExists(kImagePath) && root.fileExists(kThumbnailPath);
            ++heard;
        },
        kAvatarNotification, plat::SuspensionBehavior::DeliverImmediately);

    const std::size_t mark = device.journal().size();
    pick(mailtest::landscapeGrid().picture());
    device.process().darwin().waitUntilDelivered();
    device.process().darwin().removeObserver(token);
    EXPECT_EQ(heard, 1);
    EXPECT_TRUE(bothThere);

    EXPECT_EQ(effectsSince(mark), (std::vector<std::string>{
                                      "log Saved contact image at: " + kImagePath,
                                      "log Saved contact thumb nail image at: " + kThumbnailPath,
                                      "reload",
                                      "log Posting notification....",
                                      "notification " + kAvatarNotification,
                                  }));
    // Only the avatar notification: the general settings one is not for this.
    EXPECT_EQ(device.notifications(), std::vector<std::string>{kAvatarNotification});
}

TEST_F(MailAvatarFilesTest, ARepeatedPickReplacesTheFilesWithoutWritingIntoTheOldOnes) {
    const auto red = mailtest::Grid{1, 1, 4, 4, {mailtest::argb(255, 200, 0, 0)}};
    const auto blue = mailtest::Grid{1, 1, 4, 4, {mailtest::argb(255, 0, 0, 200)}};
    pick(red.picture());
    // A reader that still holds the old file keeps reading the old picture: the new one is
    // written beside it and renamed over, never into it.
    const auto held = device.root() / "held.png";
    std::filesystem::create_hard_link(device.host(kImagePath), held);
    pick(blue.picture());

    const auto current = mailtest::readPng(device, kImagePath);
    const auto old = mailtest::readPng(device, "/held.png");
    ASSERT_TRUE(current && old);
    EXPECT_EQ(current->pixel(10, 10), blue.colourAt(0, 0));
    EXPECT_EQ(old->pixel(10, 10), red.colourAt(0, 0));
    EXPECT_EQ(device.process().root().contentsOfDirectory(kFolder).size(), 2u);
}

TEST_F(MailAvatarFilesTest, AFolderThatCannotBeMadeLogsTwiceWritesNothingAndStillPosts) {
    device.writeText("/var/mobile/Library/Mail", "a file where the Mail folder belongs");
    const std::size_t mark = device.journal().size();
    pick(mailtest::landscapeGrid().picture());
    EXPECT_EQ(effectsSince(mark), (std::vector<std::string>{
                                      "log " + kUnableToStore,
                                      "log " + kUnableToStore,
                                      "reload",
                                      "log Posting notification....",
                                      "notification " + kAvatarNotification,
                                  }));
    EXPECT_FALSE(device.exists(kFolder));
}

TEST_F(MailAvatarFilesTest, SomethingInTheFoldersPlaceCountsAsTheFolderAndTheWritesFailQuietly) {
    device.writeText(kFolder, "not a folder");
    const std::size_t mark = device.journal().size();
    pick(mailtest::landscapeGrid().picture());
    // Only existence is asked, and the write's outcome is not: the "Saved" lines still come.
    EXPECT_EQ(effectsSince(mark), (std::vector<std::string>{
                                      "log Saved contact image at: " + kImagePath,
                                      "log Saved contact thumb nail image at: " + kThumbnailPath,
                                      "reload",
                                      "log Posting notification....",
                                      "notification " + kAvatarNotification,
                                  }));
    EXPECT_FALSE(device.exists(kImagePath));
    EXPECT_FALSE(device.exists(kThumbnailPath));
}

// --- Restoring the stock avatar ----------------------------------------------------------

TEST_F(MailAvatarFilesTest, RestoringTwiceLeavesOnlyAThumbnailOfTheStockPicture) {
    device.setProfile("iPhone", 2);
    pick(mailtest::landscapeGrid().picture());

    std::size_t mark = device.journal().size();
    restore();
    // A removal that worked says "Error" with a (null) description; and no "Posting" line.
    EXPECT_EQ(effectsSince(mark), (std::vector<std::string>{
                                      "log " + removingLine(kImagePath),
                                      "log " + removedLine(kImagePath),
                                      "log " + removingLine(kThumbnailPath),
                                      "log " + removedLine(kThumbnailPath),
                                      "log Saved contact thumb nail image at: " + kThumbnailPath,
                                      "reload",
                                      "notification " + kAvatarNotification,
                                  }));
    EXPECT_FALSE(device.exists(kImagePath));
    const auto stock = plat::Image::imageWithContentsOfFile(kStockPath);
    ASSERT_TRUE(stock);
    auto thumbnail = mailtest::readPng(device, kThumbnailPath);
    ASSERT_TRUE(thumbnail);
    EXPECT_EQ(thumbnail->pixelWidth(), mailtest::thumbnailPixels(2).width);
    EXPECT_EQ(thumbnail->pixelHeight(), mailtest::thumbnailPixels(2).height);
    expectStretchedFrom(*thumbnail, *stock);

    // Again: the image is already gone and is skipped without a word.
    mark = device.journal().size();
    restore();
    EXPECT_EQ(effectsSince(mark), (std::vector<std::string>{
                                      "log " + removingLine(kThumbnailPath),
                                      "log " + removedLine(kThumbnailPath),
                                      "log Saved contact thumb nail image at: " + kThumbnailPath,
                                      "reload",
                                      "notification " + kAvatarNotification,
                                  }));
    EXPECT_FALSE(device.exists(kImagePath));
    thumbnail = mailtest::readPng(device, kThumbnailPath);
    ASSERT_TRUE(thumbnail);
    expectStretchedFrom(*thumbnail, *stock);
}

TEST_F(MailAvatarFilesTest, WithoutTheStockPictureTheThumbnailComesBackFullyTransparent) {
    std::filesystem::remove(device.host(kStockPath));
    device.setProfile("iPhone", 3);
    restore();
    const auto thumbnail = mailtest::readPng(device, kThumbnailPath);
    ASSERT_TRUE(thumbnail);
    EXPECT_EQ(thumbnail->pixelWidth(), mailtest::thumbnailPixels(3).width);
    EXPECT_EQ(thumbnail->pixelHeight(), mailtest::thumbnailPixels(3).height);
    int opaque = 0;
    for (int y = 0; y < thumbnail->pixelHeight(); ++y)
        for (int x = 0; x < thumbnail->pixelWidth(); ++x)
            opaque += thumbnail->pixel(x, y) != 0;
    EXPECT_EQ(opaque, 0);
    EXPECT_EQ(device.notifications(), std::vector<std::string>{kAvatarNotification});
}

TEST_F(MailAvatarFilesTest, RestoringIntoAFolderThatCannotBeMadeStillReloadsAndPosts) {
    device.writeText("/var/mobile/Library/Mail", "a file where the Mail folder belongs");
    const std::size_t mark = device.journal().size();
    restore();
    EXPECT_EQ(effectsSince(mark), (std::vector<std::string>{
                                      "log " + kUnableToStore,
                                      "reload",
                                      "notification " + kAvatarNotification,
                                  }));
}

TEST_F(MailAvatarFilesTest, RemovingTakesWholeEntriesAndSkipsMissingOnesSilently) {
    mail.open();
    device.writeText(kFolder + "/inner/left.png", "x");
    const std::size_t mark = device.journal().size();
    mail.page->preparePathAndRemoveItem(kFolder + "/inner");
    mail.page->removeItemAtPath(kFolder + "/nothing-here.png");
    EXPECT_EQ(effectsSince(mark), (std::vector<std::string>{
                                      "log " + removingLine(kFolder + "/inner"),
                                      "log " + removedLine(kFolder + "/inner"),
                                  }));
    EXPECT_FALSE(device.exists(kFolder + "/inner"));
    EXPECT_TRUE(device.exists(kFolder));
}

}  // namespace
