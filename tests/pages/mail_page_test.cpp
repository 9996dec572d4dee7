// The Mail page on a device with the bundle installed: its rows, the enable switch, the
// picture icons, the photo picker, the restore sheet, and the avatar files they write.

#include <cairo.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>

#include "pages/mail_app_settings_controller.h"
#include "platform/foundation/errors.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/image_context.h"
#include "tests/support/bundle_device.h"

using plat::Image;
using plat::Value;
using Mail = velto::MailAppSettingsController;

namespace {

using Ids = std::vector<std::string>;

const Ids kMailRows = {"MailGroup",          "MailEnabled",  "PicturesGroup",
                       "Default Avatar",     "My Avatar",    "Default Group Avatar",
                       "DefaultAvatarGroup", "ChooseAvatar", "RestoreAvatar"};
const Ids kMailHead = {"MailGroup", "MailEnabled"};
const Ids kPictures = {"Default Avatar", "My Avatar", "Default Group Avatar"};
const std::string kFolder = "/var/mobile/Library/Mail/Velto";
const std::string kImagePath = kFolder + "/default_avatar_mail@3x.png";
const std::string kThumbnailPath = kFolder + "/default_avatar_thumb_mail@3x.png";
const std::string kStockPath =
    "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png";
const std::string kReload = "reload MailAppSettingsController";
const std::string kPickerGone =
    "dismiss UIImagePickerController dismissViewControllerAnimated animated";
const std::string kSheetGone = "dismiss UIAlertController action animated";
const std::string kPosted = "notification com.norvale.veltoemailavatarsettingschanged";
const std::string kUnableToStore = "log com.norvale.Velto => Error: Unable to store the image..";
const std::string kSavedImage = "log Saved contact image at: " + kImagePath;
const std::string kSavedThumbnail = "log Saved contact thumb nail image at: " + kThumbnailPath;

// A removal that worked logs an error line, with (null) for the error, after the info line.
Ids removal(const std::string& path) {
    return {"log com.norvale.Velto => Infp: Removing item at path '" + path + "'..",
            "log com.norvale.Velto => Error: While removing item at path '" + path +
                "' error => (null)"};
}
Ids picked(const std::string& image, const std::string& thumbnail) {
    return {image, thumbnail, kReload, "log Posting notification....", kPosted, kPickerGone};
}

// Four by two blocks of ten pixels, twice as wide as high, block 5 fully transparent.
const std::uint32_t kBlocks[] = {0xffdc1e1e, 0xff1ec828, 0xff1428d2, 0xfff0dc14,
                                 0xff7814a0, 0,          0xfffafafa, 0xff0a0a0a};
plat::ImagePtr landscape() {
    auto picture = Image::blank(40, 20, 1);
    auto* pixels =
        reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(picture->surface()));
    for (int i = 0; i < 40 * 20; ++i)
        pixels[i] = kBlocks[i / 400 * 4 + i % 40 / 10];
    cairo_surface_mark_dirty(picture->surface());
    return picture;
}

// `out` shows `source` stretched over the whole of it (not cropped, letterboxed or drawn
// smaller): alike at the middle of each cell of a 4 × 4 raster and at the far corner.
void expectStretched(const Image& out, const Image& source) {
    std::vector<std::pair<double, double>> at = {{0.999, 0.999}};
    for (int i = 0; i < 16; ++i)
        at.emplace_back((i % 4 + 0.5) / 4, (i / 4 + 0.5) / 4);
    for (const auto& [fx, fy] : at) {
        const auto a = out.pixel(fx * out.pixelWidth(), fy * out.pixelHeight());
        const auto b = source.pixel(fx * source.pixelWidth(), fy * source.pixelHeight());
        for (int shift : {0, 8, 16, 24})
            EXPECT_NEAR(a >> shift & 0xff, b >> shift & 0xff, 3) << fx << ", " << fy;
    }
}

// Alpha of an icon's corner: 0 when cut round, opaque when square. Its middle stays opaque.
unsigned cornerAlpha(const plat::SpecifierPtr& row) {
    const auto icon = row->propertyForKey("iconImage").as<Image>();
    EXPECT_EQ(icon->pixel(icon->pixelWidth() / 2, icon->pixelHeight() / 2) >> 24, 0xffu);
    return icon->pixel(0, 0) >> 24;
}

class MailPageTest : public ::testing::Test {
  protected:
    void SetUp() override { device.writeSettings({{"VeltoEnabledMail", true}}); }

    auto open() { return page = device.openBuilt<Mail>("MailAppSettingsController"); }
    Ids ids() const { return device.ids(page->specifiers()); }
    void flip(bool on) { device.flip(*page, "MailEnabled", on); }
    std::shared_ptr<plat::ImagePickerController> choose() {
        device.tap(*page, "ChooseAvatar");
        return Mail::imagePicker();
    }
    std::shared_ptr<plat::AlertController> restoreSheet() {
        device.tap(*page, "RestoreAvatar");
        return std::dynamic_pointer_cast<plat::AlertController>(page->presentedViewController());
    }
    // The whole flows on a page opened afresh; what they journaled from the user's choice on.
    Ids pick(const plat::ImagePtr& picture) {
        open();
        const auto picker = choose();
        const auto at = device.mark();
        EXPECT_TRUE(picker && picker->pick(picture, nullptr));
        return device.journalLines(at);
    }
    Ids restore() {
        open();
        const auto sheet = restoreSheet();
        const auto at = device.mark();
        EXPECT_TRUE(sheet && sheet->tapAction("Default Avatar"));
        return device.journalLines(at);
    }
    // A shown controller put by hand into the popover slot, which nothing fills.
    std::shared_ptr<plat::ViewController> fillPopoverSlot() {
        auto shown = std::make_shared<plat::ViewController>();
        host->presentViewController(shown, false, nullptr);
        device.process().slots().set(Mail::kPopoverSlot, shown);
        return shown;
    }

    testsupport::BundleDevice device;
    std::shared_ptr<Mail> page;
    std::shared_ptr<plat::ViewController> host = std::make_shared<plat::ViewController>();
};

// --- Rows, the enable switch and the picture icons ---------------------------------------

TEST_F(MailPageTest, TheRowsFollowTheEnableStateAndTheSwitchEditsThemWithoutLooking) {
    std::filesystem::remove(device.host(device.kMainSettings));
    open();
    EXPECT_EQ(ids(), kMailHead);
    // Flipped before the rows are built: stored, and nothing else.
    page = device.open<Mail>("MailAppSettingsController");
    auto at = device.mark();
    page->mailAppEnabledOrDisabled(
        Value::boolean(true), page->loadSpecifiersFromPlistName("MailApp", page)->objectAtIndex(1));
    EXPECT_TRUE(device.listOperations(at).empty());
    EXPECT_FALSE(page->heldSpecifiers());
    const auto built = page->specifiers();
    EXPECT_EQ(ids(), kMailRows);
    // Kept until reloaded, then built from the file as it is by then.
    device.writeSettings({{"VeltoEnabledMail", false}, {"VeltoEnabledRoundedPictures", true}});
    EXPECT_EQ(page->specifiers(), built);
    page->reloadSpecifiers();
    EXPECT_EQ(ids(), kMailHead);

    // Off with nothing past row 1: nothing to remove.
    at = device.mark();
    flip(false);
    EXPECT_TRUE(device.listOperations(at).empty());
    at = device.mark();
    flip(true);
    EXPECT_EQ(device.firstLines(at, 3), device.storedAndAnnounced("VeltoEnabledMail"));
    EXPECT_EQ(device.listOperations(at), device.animated('+', 2, 8));
    // On again: fresh rows go in at 2, 3, ... in front of those shown.
    const auto shown = page->specifiers()->items();
    flip(true);
    Ids twice = kMailRows;
    twice.insert(twice.begin() + 2, kMailRows.begin() + 2, kMailRows.end());
    EXPECT_EQ(ids(), twice);
    EXPECT_NE(page->specifierAtIndex(2), shown[2]);
    EXPECT_EQ(page->specifierAtIndex(9), shown[2]);
    // Off: every row from the last down to 2.
    at = device.mark();
    flip(false);
    EXPECT_FALSE(device.mainSettings().objectForKey("VeltoEnabledMail").boolValue());
    EXPECT_EQ(device.listOperations(at), device.animated('-', 15, 2));

    // Without rows the count down from count - 1 wraps and fails out of range.
    device.writeResource("MailApp", Value::dictionary({{"items", Value::array()}}));
    EXPECT_THROW(open(), plat::RangeError);
}

TEST_F(MailPageTest, PictureIconsFollowTheRoundedOptionWhenBuiltOrInserted) {
    device.writeSettings({{"VeltoEnabledMail", true}, {"VeltoEnabledRoundedPictures", true}});
    open();
    for (const auto& id : kPictures)
        EXPECT_EQ(cornerAlpha(device.row(page->specifiers(), id)), 0u) << id;

    // Changed elsewhere: read again at the next build, not before.
    device.writeSettings({{"VeltoEnabledMail", true}});
    EXPECT_EQ(cornerAlpha(device.row(page->specifiers(), "My Avatar")), 0u);
    page->reloadSpecifiers();
    for (const auto& id : kPictures)
        EXPECT_EQ(cornerAlpha(device.row(page->specifiers(), id)), 0xffu) << id;

    // The rows the switch inserts (found first) are reshaped from the file at that moment.
    device.writeSettings({{"VeltoEnabledMail", true}, {"VeltoEnabledRoundedPictures", true}});
    flip(true);
    for (const auto& id : kPictures)
        EXPECT_EQ(cornerAlpha(device.row(page->specifiers(), id)), 0u) << id;

    // Any insertion: only a row with a picture row's name and an icon is reshaped.
    const auto named = page->loadSpecifiersFromPlistName("MailApp", page)->objectAtIndex(3);
    const auto icon = named->propertyForKey("iconImage");
    auto bare = plat::Specifier::preferenceSpecifierNamed("My Avatar", page, "", "", "",
                                                          plat::PSStaticTextCell, "");
    auto other = plat::Specifier::preferenceSpecifierNamed("Signature", page, "", "", "",
                                                           plat::PSStaticTextCell, "");
    other->setProperty(icon, "iconImage");
    const auto at = device.mark();
    page->insertSpecifier(bare, 2, false);
    page->insertSpecifier(other, 3, true);
    page->insertSpecifier(named, 4, true);
    EXPECT_EQ(device.listOperations(at), (Ids{"+2", "+3a", "+4a"}));
    EXPECT_TRUE(bare->propertyForKey("iconImage").isNil());
    EXPECT_EQ(other->propertyForKey("iconImage").as<Image>(), icon.as<Image>());
    EXPECT_EQ(cornerAlpha(named), 0u);
    // Reshaping the whole list offers the bare row too, which still gets no icon.
    page->setPicturesForSpecifiers(page->specifiers(), true);
    EXPECT_TRUE(bare->propertyForKey("iconImage").isNil());
}

// --- The photo picker and the restore sheet ----------------------------------------------

TEST_F(MailPageTest, OnAnIPhoneThePickerIsFullScreenAndTheSheetOffersRestoreThenCancel) {
    device.setProfile("iPhone", 3);
    const auto inSlot = fillPopoverSlot();
    open();
    const auto first = choose();
    ASSERT_TRUE(first);
    EXPECT_EQ(page->presentedViewController(), first);
    EXPECT_TRUE(first->allowsEditing());
    EXPECT_EQ(first->sourceType(), plat::UIImagePickerControllerSourceTypePhotoLibrary);
    EXPECT_EQ(first->delegate(), std::dynamic_pointer_cast<plat::ImagePickerDelegate>(page));
    EXPECT_EQ(first->modalPresentationStyle(), plat::UIModalPresentationFullScreen);

    // Cancelled with the older modal dismissal; a new picker each time; without an edited
    // picture (the original is never used) dismissed the newer way. Nothing is stored.
    auto at = device.mark();
    ASSERT_TRUE(first->cancel());
    const auto second = choose();
    EXPECT_NE(second, first);
    ASSERT_TRUE(second->pick(nullptr, landscape()));
    EXPECT_EQ(device.journalLines(at),
              (Ids{"dismiss UIImagePickerController dismissModalViewControllerAnimated animated",
                   "present UIImagePickerController animated", kPickerGone}));
    EXPECT_FALSE(Mail::imagePicker());

    // A stored pick leaves the popover slot alone here.
    pick(landscape());
    EXPECT_EQ(Mail::popover(), inSlot);
    at = device.mark();
    auto sheet = restoreSheet();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(device.journalLines(at), Ids{"present UIAlertController animated"});
    EXPECT_FALSE(sheet->title() || sheet->message());
    EXPECT_EQ(sheet->preferredStyle(), plat::UIAlertControllerStyleActionSheet);
    EXPECT_FALSE(sheet->presentsAsPopover());
    at = device.mark();
    EXPECT_TRUE(sheet->tapAction("Cancel"));
    EXPECT_EQ(device.journalLines(at), Ids{kSheetGone});
}

TEST_F(MailPageTest, OnAnIPadThePickerAndTheSheetArePopoversAtTheirButtons) {
    device.setProfile("iPad", 2);
    fillPopoverSlot();
    open();
    // The buttons' cells, rows 0 and 1 of the third group; showing one records it on its row.
    const auto chooseCell = page->tableViewCellForRowAtIndexPath(0, 2);
    chooseCell->setBounds({{0, 0}, {703, 52}});
    const auto picker = choose();
    ASSERT_TRUE(picker);
    EXPECT_EQ(picker->modalPresentationStyle(), plat::UIModalPresentationPopover);
    ASSERT_TRUE(picker->popoverPresentationController());
    EXPECT_EQ(picker->popoverPresentationController()->sourceView(), chooseCell);
    EXPECT_EQ(picker->popoverPresentationController()->sourceRect(), chooseCell->bounds());
    // A pick dismisses a popover held in the slot first, animated, and empties the slot.
    const auto at = device.mark();
    ASSERT_TRUE(picker->pick(landscape(), nullptr));
    EXPECT_EQ(device.journalLines(at).front(),
              "dismiss UIViewController dismissViewControllerAnimated animated");
    EXPECT_FALSE(Mail::popover());
    EXPECT_FALSE(host->presentedViewController());

    const auto restoreCell = page->tableViewCellForRowAtIndexPath(1, 2);
    restoreCell->setBounds({{0, 0}, {540, 48}});
    auto sheet = restoreSheet();
    ASSERT_TRUE(sheet);
    EXPECT_TRUE(sheet->presentsAsPopover());
    EXPECT_EQ(sheet->popoverPresentationController()->sourceView(), restoreCell);
    EXPECT_EQ(sheet->popoverPresentationController()->sourceRect(), restoreCell->bounds());
    // Tapped outside: gone, nothing restored.
    const auto before = device.mark();
    EXPECT_TRUE(sheet->dismissByTappingOutside());
    EXPECT_EQ(device.journalLines(before), Ids{"dismiss UIAlertController tap-outside animated"});

    // A controller in the slot that is not on screen stays there; an empty slot is no trouble.
    const auto offScreen = std::make_shared<plat::ViewController>();
    device.process().slots().set(Mail::kPopoverSlot, offScreen);
    pick(landscape());
    EXPECT_EQ(Mail::popover(), offScreen);
    device.process().slots().set<plat::ViewController>(Mail::kPopoverSlot, nullptr);
    EXPECT_EQ(pick(landscape()).back(), kPickerGone);
}

// --- The avatar files --------------------------------------------------------------------

TEST_F(MailPageTest, APickWritesBothFilesStretchedAtTheScreenScaleThenTellsTheExtension) {
    std::atomic<int> heard{0}, bothThere{0};
    auto& root = device.process().root();
    const auto token = device.process().darwin().addObserver(
        nullptr,
        [&](plat::DarwinNotifyCenter*, void*, const std::string&, const void*, const Value&) {
            ++heard;
            bothThere += root.fileExists(kImagePath) && root.fileExists(kThumbnailPath);
        },
        "com.norvale.veltoemailavatarsettingschanged",
        plat::SuspensionBehavior::DeliverImmediately);
    // 2 × 60 points for the picture, 8 more each way for the thumbnail, times the scale.
    for (const auto& [scale, image, thumbnail] : {std::tuple{2.0, 240, 256}, {3.0, 360, 384}}) {
        SCOPED_TRACE(scale);
        device.setProfile("iPhone", scale);
        EXPECT_EQ(pick(landscape()), picked(kSavedImage, kSavedThumbnail));
        EXPECT_FALSE(Mail::imagePicker());
        EXPECT_EQ(plat::UIGraphicsGetCurrentContext(), nullptr);  // every drawing context ended
        EXPECT_EQ(root.contentsOfDirectory(kFolder),
                  (Ids{"default_avatar_mail@3x.png", "default_avatar_thumb_mail@3x.png"}));
        for (const auto& [path, pixels] :
             {std::pair{kImagePath, image}, {kThumbnailPath, thumbnail}}) {
            const auto file = Image::imageWithContentsOfFile(path);
            ASSERT_TRUE(file) << path;
            EXPECT_EQ(file->pixelWidth(), pixels);
            EXPECT_EQ(file->pixelHeight(), pixels);
            // Block 5 stays transparent: a canvas that is not opaque, kept in a PNG.
            expectStretched(*file, *landscape());
        }
        if (scale == 2)
            std::filesystem::create_hard_link(device.host(kImagePath), device.root() / "held.png");
    }
    device.process().darwin().waitUntilDelivered();
    device.process().darwin().removeObserver(token);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(bothThere, 2);
    // Not the general settings notification.
    EXPECT_EQ(device.notifications(), Ids(2, "com.norvale.veltoemailavatarsettingschanged"));
    // The second pick was written beside the first file and renamed over it, not into it.
    EXPECT_EQ(Image::imageWithContentsOfFile("/held.png")->pixelWidth(), 240);
}

TEST_F(MailPageTest, OnlyAFailedFolderCreationStopsTheWritesAndTheExtensionIsToldAnyway) {
    device.writeText("/var/mobile/Library/Mail", "a file where the Mail folder belongs");
    EXPECT_EQ(pick(landscape()), picked(kUnableToStore, kUnableToStore));
    EXPECT_EQ(restore(), (Ids{kSheetGone, kUnableToStore, kReload, kPosted}));
    EXPECT_FALSE(device.exists(kFolder));

    // Only existence is asked: a file in the folder's place passes, and the writes' failure
    // goes unnoticed.
    std::filesystem::remove(device.host("/var/mobile/Library/Mail"));
    device.writeText(kFolder, "not a folder");
    EXPECT_EQ(pick(landscape()), picked(kSavedImage, kSavedThumbnail));
    EXPECT_FALSE(device.exists(kImagePath) || device.exists(kThumbnailPath));
}

TEST_F(MailPageTest, RestoringLeavesOnlyAThumbnailOfTheStockPicture) {
    device.setProfile("iPhone", 2);
    pick(landscape());
    const Ids image = removal(kImagePath), thumbnail = removal(kThumbnailPath);
    EXPECT_EQ(restore(), (Ids{kSheetGone, image[0], image[1], thumbnail[0], thumbnail[1],
                              kSavedThumbnail, kReload, kPosted}));
    // The second time the image is already gone and skipped without a word.
    EXPECT_EQ(restore(),
              (Ids{kSheetGone, thumbnail[0], thumbnail[1], kSavedThumbnail, kReload, kPosted}));
    EXPECT_FALSE(device.exists(kImagePath));
    auto file = Image::imageWithContentsOfFile(kThumbnailPath);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->pixelWidth(), 256);
    expectStretched(*file, *Image::imageWithContentsOfFile(kStockPath));

    // Without the stock picture it comes back fully transparent.
    std::filesystem::remove(device.host(kStockPath));
    restore();
    file = Image::imageWithContentsOfFile(kThumbnailPath);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->pixelWidth(), 256);
    expectStretched(*file, *Image::blank(1, 1, 1));
}

}  // namespace
