#include "about/velto_misc_controller.h"
#include "apps/velto_disabled_apps_settings_controller.h"
#include "contract/appearance.h"
#include "contract/list_categories.h"
#include "contract/nv_control_table_cell.h"
#include "contract/nv_misc_settings_view_controller.h"
#include "contract/velto_base_settings_controller.h"
#include "contract/velto_utils.h"
#include "core/velto_settings_controller.h"
#include "core/velto_switch_cell.h"
#include "platform/prefs/runtime.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/navigation_controller.h"
#include "tests/contract/contract_fixture.h"

namespace {

using namespace contracttest;
using plat::Value;

// A page that answers the hooks as a test sets them.
class HookedPage : public velto::VeltoBaseSettingsController {
  public:
    explicit HookedPage(bool customColor = false, bool imageTitle = true)
        : customColor(customColor), imageTitle(imageTitle) {}
    std::string className() const override { return "ContractHookedPage"; }
    bool hasCustomNavigationBarColor() override { return customColor; }
    bool shouldShowImageAsTitle() override { return imageTitle; }
    const bool customColor, imageTitle;
};

// An about page on the maker's base, with a footer row named by identifier.
class AboutPage : public velto::NVMiscSettingsViewController {
  public:
    std::string className() const override { return "ContractAboutPage"; }
    std::string specifiersFileName() override { return "ContractAbout"; }
    bool hasCustomNavigationBarColor() override { return true; }
    plat::ColorPtr customNavigationBarColor() override {
        return velto::VeltoUtils::navigationBarColor(className(), "nav");
    }
    std::shared_ptr<plat::BarButtonItem> customBackButton() override {
        return velto::makeBackButton(shared_from_this(), className());
    }
    plat::SpecifierPtr copyRightSpecifier() override {
        return velto::nv__specifierByIdentifier(heldSpecifiers(), "CopyrightGroup");
    }
    std::string copryRightSpecifierText(std::int64_t year) override {
        return "Copyright " + std::to_string(year) + " Norvale";
    }
};

class TintedCell : public velto::NVControlTableCell {
  public:
    std::string className() const override { return "ContractTintedCell"; }
    plat::ColorPtr switchCellOnTintColor() override {
        return plat::Color::colorWithRGBA(0.1, 0.6, 0.3, 1);
    }
};

class PageAppearanceTest : public ContractTest {
  protected:
    void SetUp() override {
        auto& runtime = plat::Runtime::shared();
        runtime.registerClass("ContractHookedPage", "VeltoBaseSettingsController", {}, kBundle);
        runtime.registerClass("ContractAboutPage", "NVMiscSettingsViewController", {}, kBundle);
        runtime.registerClass("ContractTintedCell", "NVControlTableCell",
                              [] { return std::make_shared<TintedCell>(); });
        navigation->setRootViewController(std::make_shared<plat::ViewController>());
    }
    // Pushing loads the page's view, which applies its appearance.
    template <class Page>
    std::shared_ptr<Page> push(std::shared_ptr<Page> page = std::make_shared<Page>()) {
        EXPECT_TRUE(page->initForContentSize({320, 480}));
        navigation->pushViewController(page, true);
        return page;
    }
    const plat::ImagePtr glyph =
        plat::Image::imageWithContentsOfFile(std::string(kBundle) + "/Velto@3x.png");
    std::shared_ptr<plat::NavigationController> navigation =
        std::make_shared<plat::NavigationController>();
};

TEST_F(PageAppearanceTest, OldSystemsGetTheProductBackButtonWhichLeavesThePage) {
    device.setSystemVersion("10.3");
    std::vector<std::shared_ptr<plat::ListController>> pages = {push<HookedPage>(),
                                                                push<AboutPage>()};
    for (auto shown = pages.rbegin(); shown != pages.rend(); ++shown) {
        auto button = (*shown)->navigationItem().leftBarButtonItem();
        ASSERT_TRUE(button && button->image());
        EXPECT_EQ(button->style(), plat::UIBarButtonItemStylePlain);
        const int x = glyph->pixelWidth() / 2, y = glyph->pixelHeight() / 2;
        EXPECT_EQ(button->image()->pixelWidth(), glyph->pixelWidth());
        EXPECT_EQ(button->image()->pixel(x, y), glyph->pixel(x, y));
        // Tapping it sends the action to its target through the runtime.
        ASSERT_EQ(button->target(), *shown);
        ASSERT_EQ(navigation->topViewController(), *shown);
        plat::Runtime::shared().perform(*button->target(), button->action(), {Value(button)});
        EXPECT_NE(navigation->topViewController(), *shown);
    }
    EXPECT_EQ(navigation->viewControllers().size(), 1u);
    EXPECT_EQ(device.entries<plat::journal::Navigation>().back().action, "pop");

    // From 11 on the system's own back button stays.
    device.setSystemVersion("11.0");
    EXPECT_FALSE(push<HookedPage>()->navigationItem().leftBarButtonItem());
    EXPECT_FALSE(push<AboutPage>()->navigationItem().leftBarButtonItem());
}

TEST_F(PageAppearanceTest, BarTintAndTitleImageOnlyWhenThePageAsks) {
    auto plain = push(std::make_shared<HookedPage>(false, false))->navigationItem();
    EXPECT_FALSE(plain.barTintColor() || plain.titleImage());
    auto tinted = push(std::make_shared<HookedPage>(true, true))->navigationItem();
    EXPECT_EQ(hexOf(tinted.barTintColor()), productHex());
    ASSERT_TRUE(tinted.titleImage());
    EXPECT_EQ(tinted.titleImage()->pixelWidth(), glyph->pixelWidth());
    auto about = push<AboutPage>()->navigationItem();
    EXPECT_EQ(hexOf(about.barTintColor()), productHex());
    EXPECT_FALSE(about.titleImage());
}

TEST_F(PageAppearanceTest, AboutPageBuildsFromItsResourceWithThisYearsFooterAndShowsErrors) {
    auto item = [](const char* cell, const char* id) {
        return Value::dictionary({{"cell", cell}, {"id", id}, {"label", id}});
    };
    device.writeResource(
        "ContractAbout",
        Value::dictionary({{"items", Value::array({item("PSGroupCell", "LinksGroup"),
                                                   item("PSButtonCell", "Mail"),
                                                   item("PSGroupCell", "CopyrightGroup")})}}));
    auto page = push<AboutPage>();
    auto rows = page->specifiers();
    EXPECT_EQ(device.ids(rows), (std::vector<std::string>{"LinksGroup", "Mail", "CopyrightGroup"}));
    EXPECT_EQ(page->specifiers(), rows);  // built once

    // The year itself is the About page's test; here, that the base puts the text in place.
    const std::string footer = rows->objectAtIndex(2)->propertyForKey("footerText").str();
    EXPECT_TRUE(footer.starts_with("Copyright 20")) << footer;
    EXPECT_TRUE(rows->objectAtIndex(0)->propertyForKey("footerText").isNil());
    // A rebuilt list is new rows, and the new footer row gets the text again.
    page->reloadSpecifiers();
    ASSERT_NE(page->specifiers(), rows);
    EXPECT_EQ(page->specifiers()->objectAtIndex(2)->propertyForKey("footerText").str(), footer);

    page->showError("You have no mail account.");
    auto alert = std::dynamic_pointer_cast<plat::AlertController>(page->presentedViewController());
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->message(), "You have no mail account.");
    EXPECT_EQ(alert->preferredStyle(), plat::UIAlertControllerStyleAlert);
    EXPECT_EQ(alert->actions().size(), 1u);
    EXPECT_EQ(device.entries<plat::journal::Present>().size(), 1u);
    EXPECT_TRUE(alert->tapAction("OK"));
    EXPECT_FALSE(page->presentedViewController());
}

TEST_F(PageAppearanceTest, ControlCellsTintTheSwitchWithTheSubclassColour) {
    auto page = std::make_shared<plat::ListController>();
    auto list = std::make_shared<plat::SpecifierArray>();
    list->addObject(plat::Specifier::groupSpecifierWithName("Group"));
    for (auto [cell, cellClass] : {std::pair{plat::PSSwitchCell, "ContractTintedCell"},
                                   {plat::PSSwitchCell, "NVControlTableCell"},
                                   {plat::PSStaticTextCell, "ContractTintedCell"}}) {
        auto row =
            plat::Specifier::preferenceSpecifierNamed(cellClass, nullptr, "", "", "", cell, "");
        row->setProperty(cellClass, "cellClass");
        row->setProperty(Value::boolean(true), "default");
        list->addObject(row);
    }
    page->setHeldSpecifiers(list);

    auto tinted = page->tableViewCellForRowAtIndexPath(0, 0);
    // Cells made from "cellClass" and kept on their row are the platform's (PrefsTest).
    ASSERT_TRUE(tinted && tinted->control() && tinted->control()->onTintColor());
    EXPECT_TRUE(tinted->control()->isOn());
    EXPECT_EQ(*tinted->control()->onTintColor(), *plat::Color::colorWithRGBA(0.1, 0.6, 0.3, 1));
    // The base cell keeps the system colour; a row without a switch has nothing to tint.
    auto base = page->tableViewCellForRowAtIndexPath(1, 0);
    ASSERT_TRUE(base && base->control());
    EXPECT_FALSE(base->control()->onTintColor());
    auto text = page->tableViewCellForRowAtIndexPath(2, 0);
    ASSERT_TRUE(text);
    EXPECT_FALSE(text->control());
}

// Every page class and the switch cell ask for the bundle's swatch by name; its colour, not
// the one the code falls back on, is what they show.
TEST_F(PageAppearanceTest, BundlePagesAndSwitchesTakeTheSwatchsColour) {
    writePng(std::string(kBundle) + "/nav@3x.png", paint(120, 120, 3, {1, 0, 0}));
    for (auto color : {device.open<velto::VeltoSettingsController>("VeltoSettingsController")
                           ->customNavigationBarColor(),
                       device
                           .open<velto::VeltoDisabledAppsSettingsController>(
                               "VeltoDisabledAppsSettingsController")
                           ->customNavigationBarColor(),
                       device.open<velto::VeltoMiscController>("VeltoMiscController")
                           ->customNavigationBarColor()})
        EXPECT_EQ(hexOf(color), "#FF0000FF");
    EXPECT_EQ(hexOf(velto::VeltoSwitchCell().switchCellOnTintColor()), "#FF0000FF");
    // The picture a page would share is the bundle's own.
    const auto shared =
        device.open<velto::VeltoSettingsController>("VeltoSettingsController")->twitterImage();
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->size().width, 300);
}

}  // namespace
