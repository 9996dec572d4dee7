// The Mail page: its rows, the enable switch, the picture icons, the photo picker and the
// restore sheet, on a device with the bundle installed.

#include <gtest/gtest.h>

#include "platform/foundation/errors.h"
#include "platform/ui/alert_controller.h"
#include "tests/pages/mail_test_support.h"

using mailtest::MailPageHarness;
using plat::JournalEntry;
using plat::Value;
using velto::MailAppSettingsController;

namespace {

using Ids = std::vector<std::string>;

const char* const kMailApp = "/System/Library/PreferenceBundles/VeltoSettings.bundle/MailApp.plist";

class MailPageTest : public ::testing::Test {
  protected:
    // The identifiers of the resource as installed, in file order.
    Ids resourceIds() const {
        Ids ids;
        const Value items = device.readPlist(kMailApp).objectForKey("items");
        for (std::size_t i = 0; i < items.count(); ++i)
            ids.push_back(items.objectAtIndex(i).objectForKey("id").str());
        return ids;
    }
    Ids firstTwo() const {
        Ids ids = resourceIds();
        ids.resize(2);
        return ids;
    }
    Ids shownIds() const { return testsupport::BundleDevice::ids(mail.page->specifiers()); }

    void flipSwitch(bool on) {
        const auto row = mail.row("MailEnabled");
        plat::Runtime::shared().perform(*mail.page, row->setter(),
                                        {Value::boolean(on), Value(row)});
    }

    std::vector<std::string> kindsSince(std::size_t mark) const {
        std::vector<std::string> kinds;
        for (const auto& e : device.journal().since(mark))
            kinds.push_back(plat::kindName(e.kind));
        return kinds;
    }

    testsupport::BundleDevice device;
    MailPageHarness mail{device};
};

// --- Rows ------------------------------------------------------------------------------

TEST_F(MailPageTest, OnlyTheFirstTwoRowsWhileMailIsOffOrUnknown) {
    mail.open();  // no settings file at all
    EXPECT_EQ(shownIds(), firstTwo());

    device.writeSettings({{"VeltoEnabledMail", false}, {"VeltoEnabledRoundedPictures", true}});
    mail.open();
    EXPECT_EQ(shownIds(), firstTwo());

    // A settings file that is not a property list reads as nothing stored.
    device.writeText(testsupport::BundleDevice::kMainSettings, "VeltoEnabledMail = YES");
    mail.open();
    EXPECT_EQ(shownIds(), firstTwo());
}

TEST_F(MailPageTest, EveryRowOfTheResourceWhileMailIsOnAndTheListIsKept) {
    device.writeSettings({{"VeltoEnabledMail", true}});
    mail.open();
    EXPECT_EQ(shownIds(), resourceIds());

    // Built once: later asks answer the same list, whatever the file says by then.
    const auto first = mail.page->specifiers();
    device.writeSettings({{"VeltoEnabledMail", false}});
    EXPECT_EQ(mail.page->specifiers(), first);
    EXPECT_EQ(shownIds(), resourceIds());
    // A reload builds them again, from the file as it is now.
    mail.page->reloadSpecifiers();
    EXPECT_NE(mail.page->specifiers(), first);
    EXPECT_EQ(shownIds(), firstTwo());
}

TEST_F(MailPageTest, TheResourceProvidesWhatThePageReliesOn) {
    device.writeSettings({{"VeltoEnabledMail", true}});
    mail.open();
    const auto list = mail.page->specifiers();
    // The switch is among the rows that always stay and writes what the page reads.
    const auto toggle = mail.row("MailEnabled");
    EXPECT_LT(*list->indexOfObject(toggle), 2u);
    EXPECT_EQ(toggle->setter(), "mailAppEnabledOrDisabled:specifier:");
    EXPECT_EQ(toggle->propertyForKey("key").str(), "VeltoEnabledMail");
    EXPECT_EQ(toggle->propertyForKey("defaults").str(), "com.norvale.velto");
    for (const auto& name : mail.page->getImageCellSpecifierNames()) {
        int rows = 0;
        for (const auto& item : *list) {
            if (item->name() != name) continue;
            ++rows;
            EXPECT_TRUE(item->propertyForKey("iconImage").as<plat::Image>()) << name;
        }
        EXPECT_EQ(rows, 1) << "rows named " << name;
    }
    EXPECT_EQ(mail.row("ChooseAvatar")->action(), "selectDefaultAvatarMail:");
    EXPECT_EQ(mail.row("RestoreAvatar")->action(), "restoreAvatarsMail:");
    for (const auto& selector :
         {"mailAppEnabledOrDisabled:specifier:", "selectDefaultAvatarMail:", "restoreAvatarsMail:"})
        EXPECT_TRUE(
            plat::Runtime::shared().respondsToSelector("MailAppSettingsController", selector))
            << selector;
}

TEST_F(MailPageTest, AResourceWithoutRowsWrapsTheCountDownAndRaises) {
    device.writeResource("MailApp", Value::dictionary({{"items", Value::array()}}));
    auto page = device.open<MailAppSettingsController>("MailAppSettingsController");
    EXPECT_THROW(page->specifiers(), plat::RangeError);

    // Enabled, nothing is removed and the empty list stands.
    device.writeSettings({{"VeltoEnabledMail", true}});
    page = device.open<MailAppSettingsController>("MailAppSettingsController");
    ASSERT_TRUE(page->specifiers());
    EXPECT_EQ(page->specifiers()->count(), 0u);
}

// --- The enable switch -----------------------------------------------------------------

TEST_F(MailPageTest, SwitchingOnStoresSynchronizesThenInsertsFreshRowsAnimated) {
    mail.open();
    const std::size_t mark = device.journal().size();
    flipSwitch(true);

    EXPECT_TRUE(device.mainSettings().objectForKey("VeltoEnabledMail").boolValue());
    const auto kinds = kindsSince(mark);
    ASSERT_GE(kinds.size(), 3u);
    EXPECT_EQ(kinds[0], "preference-write");
    // The row's own notification, posted by the platform's store, comes with it.
    EXPECT_EQ(kinds[1], "notification");
    EXPECT_EQ(kinds[2], "synchronize");
    const Ids all = resourceIds();
    std::vector<std::string> inserts;
    for (std::size_t i = 2; i < all.size(); ++i)
        inserts.push_back("+" + std::to_string(i) + "a");
    EXPECT_EQ(device.listOperations(mark), inserts);
    EXPECT_EQ(shownIds(), all);
}

TEST_F(MailPageTest, SwitchingOnAgainInsertsTheRowsASecondTime) {
    device.writeSettings({{"VeltoEnabledMail", true}});
    mail.open();
    const auto before = mail.page->specifiers()->items();
    flipSwitch(true);

    // Fresh rows go in at 2, 3, ... in front of the ones already shown.
    const Ids all = resourceIds();
    Ids expected(all.begin(), all.begin() + 2);
    expected.insert(expected.end(), all.begin() + 2, all.end());
    expected.insert(expected.end(), all.begin() + 2, all.end());
    EXPECT_EQ(shownIds(), expected);
    const auto after = mail.page->specifiers();
    for (std::size_t i = 2; i < all.size(); ++i) {
        EXPECT_NE(after->objectAtIndex(i), before[i]) << "row " << i << " is not fresh";
        EXPECT_EQ(after->objectAtIndex(i + all.size() - 2), before[i]);
    }
}

TEST_F(MailPageTest, SwitchingOffRemovesFromTheLastRowDownToTwoAnimated) {
    device.writeSettings({{"VeltoEnabledMail", true}});
    mail.open();
    const std::size_t count = mail.page->specifiers()->count();
    const std::size_t mark = device.journal().size();
    flipSwitch(false);

    EXPECT_FALSE(device.mainSettings().objectForKey("VeltoEnabledMail").boolValue());
    std::vector<std::string> removals;
    for (std::size_t i = count - 1; i > 1; --i)
        removals.push_back("-" + std::to_string(i) + "a");
    EXPECT_EQ(device.listOperations(mark), removals);
    EXPECT_EQ(shownIds(), firstTwo());

    // Off again: nothing beyond row 1 is left, so nothing is removed.
    const std::size_t again = device.journal().size();
    flipSwitch(false);
    EXPECT_TRUE(device.listOperations(again).empty());
}

TEST_F(MailPageTest, TheSwitchOnAPageWithoutRowsOnlyStores) {
    auto page = device.open<MailAppSettingsController>("MailAppSettingsController");
    const auto switchRow = page->loadSpecifiersFromPlistName("MailApp", page)->objectAtIndex(1);
    const std::size_t mark = device.journal().size();
    page->mailAppEnabledOrDisabled(Value::boolean(true), switchRow);

    EXPECT_TRUE(device.mainSettings().objectForKey("VeltoEnabledMail").boolValue());
    EXPECT_TRUE(device.listOperations(mark).empty());
    EXPECT_FALSE(page->heldSpecifiers());
}

// --- Picture icons ---------------------------------------------------------------------

bool roundIcon(const plat::SpecifierPtr& row) {
    const auto icon = row->propertyForKey("iconImage").as<plat::Image>();
    if (!icon) return false;
    const auto corner = icon->pixel(0, 0) >> 24;
    const auto centre = icon->pixel(icon->pixelWidth() / 2, icon->pixelHeight() / 2) >> 24;
    EXPECT_EQ(centre, 0xffu) << "the middle of an icon stays opaque";
    return corner == 0;
}

TEST_F(MailPageTest, PictureRowIconsFollowTheRoundedPicturesOption) {
    const Ids pictures = {"Default Avatar", "My Avatar", "Default Group Avatar"};
    device.writeSettings({{"VeltoEnabledMail", true}, {"VeltoEnabledRoundedPictures", true}});
    mail.open();
    for (const auto& id : pictures)
        EXPECT_TRUE(roundIcon(mail.row(id))) << id;

    device.writeSettings({{"VeltoEnabledMail", true}, {"VeltoEnabledRoundedPictures", false}});
    // Read again at the next build, not before.
    EXPECT_TRUE(roundIcon(mail.row("My Avatar")));
    mail.page->reloadSpecifiers();
    for (const auto& id : pictures) {
        const auto row = mail.row(id);
        EXPECT_FALSE(roundIcon(row)) << id;
        // Square: the central square of the icon, corners as opaque as the stock icon's.
        const auto icon = row->propertyForKey("iconImage").as<plat::Image>();
        EXPECT_EQ(icon->pixelWidth(), icon->pixelHeight());
        EXPECT_EQ(icon->pixel(0, 0) >> 24, 0xffu) << id;
    }
}

TEST_F(MailPageTest, RowsInsertedBySwitchingOnAreReshapedFromTheFileAtThatMoment) {
    mail.open();
    device.writeSettings({{"VeltoEnabledRoundedPictures", true}});
    flipSwitch(true);
    for (const auto& id : {"Default Avatar", "My Avatar", "Default Group Avatar"})
        EXPECT_TRUE(roundIcon(mail.row(id))) << id;
}

TEST_F(MailPageTest, InsertionReshapesOnlyNamedPictureRowsThatHaveAnIcon) {
    device.writeSettings({{"VeltoEnabledRoundedPictures", true}});
    mail.open();
    const auto fresh = mail.page->loadSpecifiersFromPlistName("MailApp", mail.page);
    const auto icon = fresh->objectAtIndex(3)->propertyForKey("iconImage").as<plat::Image>();
    ASSERT_TRUE(icon);

    // A picture row's name but no icon: inserted as it is.
    auto bare = plat::Specifier::preferenceSpecifierNamed("My Avatar", mail.page, "", "", "",
                                                          plat::PSStaticTextCell, "");
    mail.page->insertSpecifier(bare, 2, false);
    EXPECT_TRUE(bare->propertyForKey("iconImage").isNil());

    // An icon on a row of another name: left square.
    auto other = plat::Specifier::preferenceSpecifierNamed("Signature", mail.page, "", "", "",
                                                           plat::PSStaticTextCell, "");
    other->setProperty(Value(icon), "iconImage");
    mail.page->insertSpecifier(other, 3, true);
    EXPECT_EQ(other->propertyForKey("iconImage").as<plat::Image>(), icon);

    // The named row with its icon: cut round, and inserted where it was asked to go.
    const auto group = fresh->objectAtIndex(3);
    const std::size_t mark = device.journal().size();
    mail.page->insertSpecifier(group, 4, true);
    EXPECT_TRUE(roundIcon(group));
    EXPECT_EQ(mail.page->specifiers()->objectAtIndex(4), group);
    EXPECT_EQ(device.listOperations(mark), std::vector<std::string>{"+4a"});
}

// --- The photo picker ------------------------------------------------------------------

class MailPickerTest : public MailPageTest {
  protected:
    void SetUp() override { device.writeSettings({{"VeltoEnabledMail", true}}); }

    std::shared_ptr<plat::ImagePickerController> openPicker() {
        mail.open();
        mail.tap("ChooseAvatar");
        return MailAppSettingsController::imagePicker();
    }
};

TEST_F(MailPickerTest, OnAnIPhoneThePickerIsPresentedFullScreenForEditingFromTheLibrary) {
    device.setProfile("iPhone", 3);
    const auto picker = openPicker();
    ASSERT_TRUE(picker);
    EXPECT_EQ(mail.page->presentedViewController(), picker);
    EXPECT_TRUE(picker->allowsEditing());
    EXPECT_EQ(picker->sourceType(), plat::UIImagePickerControllerSourceTypePhotoLibrary);
    EXPECT_EQ(picker->delegate(), std::dynamic_pointer_cast<plat::ImagePickerDelegate>(mail.page));
    EXPECT_EQ(picker->modalPresentationStyle(), plat::UIModalPresentationFullScreen);
    EXPECT_FALSE(picker->popoverPresentationController().hasAnchor());
    const auto presents = device.entries(JournalEntry::Kind::Present);
    ASSERT_EQ(presents.size(), 1u);
    EXPECT_EQ(presents[0].name, "UIImagePickerController");
    EXPECT_TRUE(presents[0].animated);
}

TEST_F(MailPickerTest, OnAnIPadThePickerIsAPopoverAtTheButtonsCell) {
    device.setProfile("iPad", 2);
    mail.open();
    const auto cell = mail.showCell("ChooseAvatar");
    ASSERT_TRUE(cell);
    cell->setBounds({{0, 0}, {703, 52}});
    mail.tap("ChooseAvatar");
    const auto picker = MailAppSettingsController::imagePicker();
    ASSERT_TRUE(picker);
    EXPECT_EQ(picker->modalPresentationStyle(), plat::UIModalPresentationPopover);
    EXPECT_EQ(picker->popoverPresentationController().sourceView(), cell);
    EXPECT_EQ(picker->popoverPresentationController().sourceRect(), cell->bounds());
    EXPECT_EQ(mail.page->presentedViewController(), picker);
}

TEST_F(MailPickerTest, ChoosingAgainReplacesTheHeldPicker) {
    const auto first = openPicker();
    first->cancel();
    mail.tap("ChooseAvatar");
    const auto second = MailAppSettingsController::imagePicker();
    ASSERT_TRUE(second);
    EXPECT_NE(second, first);
}

TEST_F(MailPickerTest, AFinishedPickIsDismissedAndTheSlotEmptied) {
    const auto picker = openPicker();
    ASSERT_TRUE(picker->pick(mailtest::landscapeGrid().picture(), nullptr));
    EXPECT_FALSE(MailAppSettingsController::imagePicker());
    EXPECT_FALSE(mail.page->presentedViewController());
    const auto dismissals = device.entries(JournalEntry::Kind::Dismiss);
    ASSERT_EQ(dismissals.size(), 1u);
    EXPECT_EQ(dismissals[0].name, "UIImagePickerController");
    EXPECT_EQ(dismissals[0].text, "dismissViewControllerAnimated");
    EXPECT_TRUE(dismissals[0].animated);
}

TEST_F(MailPickerTest, CancellingUsesTheOlderModalDismissalAndTouchesNothing) {
    const auto picker = openPicker();
    const std::size_t mark = device.journal().size();
    ASSERT_TRUE(picker->cancel());
    EXPECT_FALSE(MailAppSettingsController::imagePicker());
    EXPECT_FALSE(mail.page->presentedViewController());
    const auto entries = device.journal().since(mark);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].kind, JournalEntry::Kind::Dismiss);
    EXPECT_EQ(entries[0].text, "dismissModalViewControllerAnimated");
    EXPECT_TRUE(entries[0].animated);
    EXPECT_FALSE(device.exists("/var/mobile/Library/Mail"));
}

TEST_F(MailPickerTest, APickWithoutAnEditedPictureWritesAndPostsNothing) {
    const auto picker = openPicker();
    const std::size_t mark = device.journal().size();
    // Only the original comes back: it is never used.
    ASSERT_TRUE(picker->pick(nullptr, mailtest::landscapeGrid().picture()));
    const auto entries = device.journal().since(mark);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].kind, JournalEntry::Kind::Dismiss);
    EXPECT_EQ(entries[0].text, "dismissViewControllerAnimated");
    EXPECT_FALSE(device.exists("/var/mobile/Library/Mail"));
    EXPECT_FALSE(MailAppSettingsController::imagePicker());
}

TEST_F(MailPickerTest, ThePopoverSlotIsNeverFilledAndOnlyAnIPadPickEmptiesIt) {
    // The flows themselves leave it empty.
    auto picker = openPicker();
    picker->pick(mailtest::landscapeGrid().picture(), nullptr);
    EXPECT_FALSE(MailAppSettingsController::popover());

    // Something that is shown, put there by hand: an iPhone pick leaves it be.
    auto& slots = device.process().slots();
    auto host = std::make_shared<plat::ViewController>();
    auto shown = std::make_shared<plat::ViewController>();
    host->presentViewController(shown, false, nullptr);
    slots.set<plat::ViewController>(MailAppSettingsController::kPopoverSlot, shown);
    openPicker()->pick(mailtest::landscapeGrid().picture(), nullptr);
    EXPECT_EQ(MailAppSettingsController::popover(), shown);
    EXPECT_EQ(host->presentedViewController(), shown);

    // An iPad pick dismisses it, animated, and empties the slot.
    device.setProfile("iPad", 2);
    const std::size_t mark = device.journal().size();
    openPicker()->pick(mailtest::landscapeGrid().picture(), nullptr);
    EXPECT_FALSE(MailAppSettingsController::popover());
    EXPECT_FALSE(host->presentedViewController());
    const auto entries = device.journal().since(mark);
    ASSERT_FALSE(entries.empty());
    std::size_t firstDismiss = entries.size();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].kind == JournalEntry::Kind::Dismiss) {
            firstDismiss = i;
            break;
        }
    }
    ASSERT_LT(firstDismiss, entries.size());
    EXPECT_EQ(entries[firstDismiss].name, "UIViewController");
    EXPECT_TRUE(entries[firstDismiss].animated);
    // It goes before anything is written.
    for (std::size_t i = 0; i < firstDismiss; ++i)
        EXPECT_NE(entries[i].kind, JournalEntry::Kind::Log) << entries[i].text;
}

// --- The restore sheet -----------------------------------------------------------------

class MailRestoreSheetTest : public MailPickerTest {
  protected:
    std::shared_ptr<plat::AlertController> openSheet() {
        mail.tap("RestoreAvatar");
        return std::dynamic_pointer_cast<plat::AlertController>(
            mail.page->presentedViewController());
    }
    void pickSomething() { openPicker()->pick(mailtest::landscapeGrid().picture(), nullptr); }
};

TEST_F(MailRestoreSheetTest, OnAnIPhoneTheSheetOffersRestoreThenCancel) {
    device.setProfile("iPhone", 3);
    pickSomething();
    const auto sheet = openSheet();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->title(), std::nullopt);
    EXPECT_EQ(sheet->message(), std::nullopt);
    EXPECT_EQ(sheet->preferredStyle(), plat::UIAlertControllerStyleActionSheet);
    EXPECT_FALSE(sheet->presentsAsPopover());
    ASSERT_EQ(sheet->actions().size(), 2u);
    EXPECT_EQ(sheet->actions()[0]->title(), "Default Avatar");
    EXPECT_EQ(sheet->actions()[0]->style(), plat::UIAlertActionStyleDestructive);
    EXPECT_EQ(sheet->actions()[1]->title(), "Cancel");
    EXPECT_EQ(sheet->actions()[1]->style(), plat::UIAlertActionStyleCancel);
    const auto presents = device.entries(JournalEntry::Kind::Present);
    EXPECT_EQ(presents.back().name, "UIAlertController");
    EXPECT_TRUE(presents.back().animated);

    // Cancel: the sheet goes, the files stay, nobody is told.
    const std::size_t mark = device.journal().size();
    EXPECT_TRUE(sheet->tapAction("Cancel"));
    EXPECT_FALSE(mail.page->presentedViewController());
    for (const auto& e : device.journal().since(mark))
        EXPECT_EQ(e.kind, JournalEntry::Kind::Dismiss);
    EXPECT_TRUE(device.exists(mailtest::kImagePath));
    EXPECT_TRUE(device.exists(mailtest::kThumbnailPath));

    // Default Avatar: the restore runs.
    EXPECT_TRUE(openSheet()->tapAction("Default Avatar"));
    EXPECT_FALSE(device.exists(mailtest::kImagePath));
    EXPECT_TRUE(device.exists(mailtest::kThumbnailPath));
    EXPECT_EQ(device.notifications().back(), mailtest::kAvatarNotification);
}

TEST_F(MailRestoreSheetTest, OnAnIPadTheSheetIsAPopoverAtTheButtonWithoutCancel) {
    device.setProfile("iPad", 2);
    pickSomething();
    const auto cell = mail.showCell("RestoreAvatar");
    ASSERT_TRUE(cell);
    cell->setBounds({{0, 0}, {540, 48}});
    const auto sheet = openSheet();
    ASSERT_TRUE(sheet);
    ASSERT_EQ(sheet->actions().size(), 1u);
    EXPECT_EQ(sheet->actions()[0]->title(), "Default Avatar");
    EXPECT_EQ(sheet->actions()[0]->style(), plat::UIAlertActionStyleDestructive);
    EXPECT_EQ(sheet->popoverPresentationController().sourceView(), cell);
    EXPECT_EQ(sheet->popoverPresentationController().sourceRect(), cell->bounds());
    EXPECT_TRUE(sheet->presentsAsPopover());

    // Tapping outside: gone, files untouched.
    const std::size_t before = device.notifications().size();
    EXPECT_TRUE(sheet->dismissByTappingOutside());
    EXPECT_TRUE(device.exists(mailtest::kImagePath));
    EXPECT_EQ(device.notifications().size(), before);

    EXPECT_TRUE(openSheet()->tapAction("Default Avatar"));
    EXPECT_FALSE(device.exists(mailtest::kImagePath));
    EXPECT_EQ(device.notifications().size(), before + 1);
}

TEST_F(MailRestoreSheetTest, ASheetOutlivingItsPageRestoresNothing) {
    pickSomething();
    const auto sheet = openSheet();
    ASSERT_TRUE(sheet);
    const auto restore = sheet->actions()[0];
    mail.page->dismissViewControllerAnimated(false, nullptr);
    mail.page.reset();
    restore->handler()(*restore);
    EXPECT_TRUE(device.exists(mailtest::kImagePath));
}

}  // namespace
