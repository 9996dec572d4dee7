#include <gtest/gtest.h>

#include "platform/ui/alert_controller.h"
#include "platform/ui/bar_button_item.h"
#include "platform/ui/image_picker_controller.h"
#include "tests/platform/ui/pictures.h"
#include "tests/support/test_device.h"

namespace {

using plat::AlertAction;
using plat::AlertController;
using plat::ViewController;

class Presentation : public ::testing::Test {
  protected:
    // The journal's present and dismiss lines ("present UIAlertController Sure? animated"), to
    // compare whole journals at a glance.
    std::vector<std::string> presentations() {
        std::vector<std::string> out;
        for (const std::string& line : device.journalLines(0))
            if (line.starts_with("present ") || line.starts_with("dismiss ")) out.push_back(line);
        return out;
    }
    static std::shared_ptr<AlertController> alert(std::optional<std::string> title, int style) {
        return AlertController::alertControllerWithTitle(title, std::nullopt, style);
    }
    testsupport::TestDevice device;
    std::shared_ptr<ViewController> page = std::make_shared<ViewController>();
};

TEST_F(Presentation, PresentAndBothWaysOfDismissingAreJournaled) {
    auto first = std::make_shared<ViewController>();
    first->navigationItem().setTitle("Details");
    bool presented = false;
    page->presentViewController(first, true, [&] { presented = true; });
    EXPECT_TRUE(presented);
    EXPECT_EQ(page->presentedViewController(), first);
    EXPECT_EQ(first->presentingViewController(), page);

    // Already presenting: refused, nothing journaled, the completion never runs.
    page->presentViewController(std::make_shared<ViewController>(), true, [] { FAIL(); });
    EXPECT_EQ(page->presentedViewController(), first);

    // The completion runs after the dismissal is done.
    std::size_t entriesAtCompletion = 0;
    first->dismissViewControllerAnimated(true, [&] {
        entriesAtCompletion = device.journal().size();
        EXPECT_FALSE(page->presentedViewController());
    });
    EXPECT_EQ(entriesAtCompletion, device.journal().size());
    EXPECT_FALSE(first->presentingViewController());

    page->presentViewController(std::make_shared<ViewController>(), false, nullptr);
    page->dismissModalViewControllerAnimated(true);
    page->dismissViewControllerAnimated(true, [] { FAIL() << "nothing left to dismiss"; });
    EXPECT_EQ(presentations(),
              (std::vector<std::string>{
                  "present UIViewController Details animated",
                  "dismiss UIViewController dismissViewControllerAnimated animated",
                  "present UIViewController",
                  "dismiss UIViewController dismissModalViewControllerAnimated animated"}));
}

TEST_F(Presentation, TappingAnActionDismissesTheSheetThenRunsItsHandler) {
    auto sheet = alert(std::nullopt, plat::UIAlertControllerStyleActionSheet);
    std::vector<std::string> ran;
    std::weak_ptr<AlertController> weakSheet = sheet;
    sheet->addAction(
        AlertAction::actionWithTitle("Default Picture", plat::UIAlertActionStyleDestructive,
                                     [&](AlertAction& a) { ran.push_back(a.title()); }));
    sheet->addAction(
        AlertAction::actionWithTitle("Cancel", plat::UIAlertActionStyleCancel, [&](AlertAction& a) {
            // By now UIKit has taken the sheet down; dismissing again does nothing.
            EXPECT_FALSE(page->presentedViewController());
            weakSheet.lock()->dismissViewControllerAnimated(true, nullptr);
            ran.push_back(a.title());
        }));
    ASSERT_EQ(sheet->actions().size(), 2u);
    EXPECT_EQ(sheet->actions()[0]->style(), plat::UIAlertActionStyleDestructive);

    page->presentViewController(sheet, true, nullptr);
    sheet.reset();  // only the page holds it now
    EXPECT_FALSE(weakSheet.lock()->tapAction("Missing"));
    EXPECT_TRUE(weakSheet.lock()->tapAction("Cancel"));
    EXPECT_EQ(ran, (std::vector<std::string>{"Cancel"}));
    EXPECT_TRUE(weakSheet.expired());

    // An action without a handler still dismisses; the journal shows the alert's title.
    auto titled = alert("Sure?", plat::UIAlertControllerStyleAlert);
    titled->addAction(AlertAction::actionWithTitle("Quiet", plat::UIAlertActionStyleDefault, {}));
    page->presentViewController(titled, true, nullptr);
    EXPECT_TRUE(titled->tapAction("Quiet"));
    EXPECT_EQ(presentations(),
              (std::vector<std::string>{"present UIAlertController animated",
                                        "dismiss UIAlertController action animated",
                                        "present UIAlertController Sure? animated",
                                        "dismiss UIAlertController action animated"}));
}

// An anchored sheet on an iPad, a popover a tap outside closes, is the Mail page's to show with
// its journal; here, what makes a sheet a popover and when a tap outside can reach it.
TEST_F(Presentation, OnlyAnAnchoredSheetOnAnIPadIsAPopoverAndOnlyOnScreenATapOutsideCloses) {
    auto cell = std::make_shared<plat::View>();
    auto makeSheet = [&](int style, bool anchored) {
        auto sheet = alert(std::nullopt, style);
        sheet->addAction(AlertAction::actionWithTitle(
            "Default Picture", plat::UIAlertActionStyleDestructive,
            [](AlertAction&) { FAIL() << "a tap outside runs no handler"; }));
        // An alert has no popover controller to anchor.
        if (auto* popover = sheet->popoverPresentationController(); anchored && popover)
            popover->setSourceView(cell);
        return sheet;
    };
    device.setProfile("iPhone", 3);
    EXPECT_FALSE(makeSheet(plat::UIAlertControllerStyleActionSheet, true)->presentsAsPopover());
    device.setProfile("iPad", 2);
    EXPECT_FALSE(makeSheet(plat::UIAlertControllerStyleActionSheet, false)->presentsAsPopover());
    EXPECT_FALSE(makeSheet(plat::UIAlertControllerStyleAlert, true)->presentsAsPopover());
    auto padSheet = makeSheet(plat::UIAlertControllerStyleActionSheet, true);
    EXPECT_TRUE(padSheet->presentsAsPopover());
    EXPECT_FALSE(padSheet->dismissByTappingOutside());  // not on screen yet
    page->presentViewController(padSheet, true, nullptr);
    EXPECT_TRUE(padSheet->dismissByTappingOutside());
    EXPECT_FALSE(page->presentedViewController());
}

// A page that is the picker's delegate, dismissing it the two ways pages do. How those
// dismissals are journaled is the first test's; the Mail page's tests hold a real delegate's.
class PickingPage : public ViewController, public plat::ImagePickerDelegate {
  public:
    void imagePickerControllerDidFinishPickingMediaWithInfo(plat::ImagePickerController& picker,
                                                            plat::Value info) override {
        infos.push_back(info);
        picker.dismissViewControllerAnimated(true, nullptr);
    }
    void imagePickerControllerDidCancel(plat::ImagePickerController& picker) override {
        infos.push_back(plat::Value("cancelled"));
        picker.dismissModalViewControllerAnimated(true);
    }
    std::vector<plat::Value> infos;
};

TEST_F(Presentation, PickerHandsThePicturesToItsDelegateWhileItLives) {
    auto delegate = std::make_shared<PickingPage>();
    auto edited = uitest::picture(2, 2, 1, {}), original = uitest::picture(4, 4, 1, {});
    auto picker = std::make_shared<plat::ImagePickerController>();
    picker->setDelegate(delegate);
    picker->setModalPresentationStyle(plat::UIModalPresentationPopover);
    EXPECT_TRUE(picker->presentsAsPopover());
    delegate->presentViewController(picker, true, nullptr);
    EXPECT_TRUE(picker->pick(edited, original));
    delegate->presentViewController(picker, true, nullptr);
    EXPECT_TRUE(picker->cancel());

    using plat::UIImagePickerControllerEditedImage, plat::UIImagePickerControllerOriginalImage;
    ASSERT_EQ(delegate->infos.size(), 2u);
    EXPECT_EQ(delegate->infos[0].objectForKey(UIImagePickerControllerEditedImage).asObject(),
              edited);
    EXPECT_EQ(delegate->infos[0].objectForKey(UIImagePickerControllerOriginalImage).asObject(),
              original);
    EXPECT_EQ(delegate->infos[1].str(), "cancelled");

    // The delegate is weak: once the page is gone the user's pick reaches no one.
    delegate.reset();
    EXPECT_FALSE(picker->pick(edited, original) || picker->cancel());
}

TEST(BarButtonItem, HoldsItsTargetWeakly) {
    auto target = std::make_shared<ViewController>();
    auto item = plat::BarButtonItem::initWithImage(
        uitest::picture(2, 2, 2, {}), plat::UIBarButtonItemStylePlain, target, "back:");
    EXPECT_EQ(item->target(), target);
    target.reset();
    EXPECT_FALSE(item->target());
}

}  // namespace
