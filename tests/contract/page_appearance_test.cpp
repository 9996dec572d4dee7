#include <chrono>
#include <ctime>

#include "contract/appearance.h"
#include "contract/list_categories.h"
#include "contract/nv_control_table_cell.h"
#include "contract/nv_misc_settings_view_controller.h"
#include "contract/velto_base_settings_controller.h"
#include "contract/velto_utils.h"
#include "platform/prefs/runtime.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/navigation_controller.h"
#include "tests/contract/contract_fixture.h"

using contracttest::kBundle;
using plat::JournalEntry;
using plat::Value;

namespace {

// A page that answers the hooks as a test sets them.
class HookedPage : public velto::VeltoBaseSettingsController {
  public:
    std::string className() const override { return "ContractHookedPage"; }
    bool hasCustomNavigationBarColor() override { return customColor; }
    bool shouldShowImageAsTitle() override { return imageTitle; }
    bool customColor = false;
    bool imageTitle = true;
};

// An about page on the maker's base, with a footer row named by identifier.
class AboutPage : public velto::NVMiscSettingsViewController {
  public:
    std::string className() const override { return "ContractAboutPage"; }
    std::string productName() override { return "Velto"; }
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

class PageAppearanceTest : public contracttest::ContractTest {
  protected:
    void SetUp() override {
        ContractTest::SetUp();
        auto& runtime = plat::Runtime::shared();
        runtime.registerClass(
            "ContractHookedPage", "VeltoBaseSettingsController",
            [] { return std::make_shared<HookedPage>(); }, kBundle);
        runtime.registerClass(
            "ContractAboutPage", "NVMiscSettingsViewController",
            [] { return std::make_shared<AboutPage>(); }, kBundle);
        runtime.registerClass("ContractTintedCell", "NVControlTableCell",
                              [] { return std::make_shared<TintedCell>(); });
        navigation->setRootViewController(std::make_shared<plat::ViewController>());
    }

    // Pushing loads the page's view, which applies its appearance.
    template <class Page>
    std::shared_ptr<Page> push(const std::function<void(Page&)>& configure = {}) {
        auto page = std::dynamic_pointer_cast<Page>(
            plat::Runtime::shared().instantiate(Page().className()));
        EXPECT_TRUE(page && page->initForContentSize({320, 480}));
        if (configure) configure(*page);
        navigation->pushViewController(page, true);
        return page;
    }

    std::size_t pops() {
        std::size_t n = 0;
        for (auto& e : device.entries(JournalEntry::Kind::Navigation))
            n += e.text == "pop";
        return n;
    }

    plat::ImagePtr bundleFile(const std::string& name) {
        return plat::Image::imageWithContentsOfFile(std::string(kBundle) + "/" + name);
    }

    std::shared_ptr<plat::NavigationController> navigation =
        std::make_shared<plat::NavigationController>();
};

TEST_F(PageAppearanceTest, OldSystemsGetTheProductBackButtonWhichLeavesThePage) {
    device.setSystemVersion("10.3");
    auto page = push<HookedPage>();
    auto button = page->navigationItem().leftBarButtonItem();
    ASSERT_TRUE(button);
    EXPECT_EQ(button->style(), plat::UIBarButtonItemStylePlain);
    EXPECT_EQ(button->action(), "backButtonAction:");
    EXPECT_EQ(button->target(), page);
    auto glyph = bundleFile("Velto@3x.png");
    ASSERT_TRUE(button->image());
    EXPECT_EQ(button->image()->pixelWidth(), glyph->pixelWidth());
    EXPECT_EQ(button->image()->pixel(glyph->pixelWidth() / 2, glyph->pixelHeight() / 2),
              glyph->pixel(glyph->pixelWidth() / 2, glyph->pixelHeight() / 2));

    // Tapping it sends the action to its target through the runtime.
    ASSERT_EQ(navigation->topViewController(), page);
    plat::Runtime::shared().perform(*button->target(), button->action(), {Value(button)});
    EXPECT_NE(navigation->topViewController(), page);
    EXPECT_EQ(navigation->viewControllers().size(), 1u);
    EXPECT_EQ(pops(), 1u);

    // The about page's base answers the same action the same way.
    auto about = push<AboutPage>();
    auto aboutButton = about->navigationItem().leftBarButtonItem();
    ASSERT_TRUE(aboutButton);
    EXPECT_EQ(aboutButton->target(), about);
    plat::Runtime::shared().perform(*about, "backButtonAction:", {Value(aboutButton)});
    EXPECT_EQ(navigation->viewControllers().size(), 1u);
    EXPECT_EQ(pops(), 2u);

    // From 11 on the system's own back button stays.
    for (const char* version : {"11.0", "12.4", "13.0"}) {
        device.setSystemVersion(version);
        EXPECT_FALSE(push<HookedPage>()->navigationItem().leftBarButtonItem()) << version;
        EXPECT_FALSE(push<AboutPage>()->navigationItem().leftBarButtonItem()) << version;
    }
}

TEST_F(PageAppearanceTest, BarTintAndTitleImageOnlyWhenThePageAsks) {
    auto swatch = bundleFile("nav@3x.png");
    const std::uint32_t swatchPixel = swatch->pixel(swatch->pixelWidth() / 2, 10);

    auto plain = push<HookedPage>([](HookedPage& p) { p.imageTitle = false; });
    EXPECT_FALSE(plain->navigationItem().barTintColor());
    EXPECT_FALSE(plain->navigationItem().titleImage());

    auto tinted = push<HookedPage>([](HookedPage& p) { p.customColor = true; });
    EXPECT_TRUE(contracttest::sameColor(tinted->navigationItem().barTintColor(), swatchPixel));
    auto title = tinted->navigationItem().titleImage();
    ASSERT_TRUE(title);
    EXPECT_EQ(title->pixelWidth(), bundleFile("Velto@3x.png")->pixelWidth());

    auto about = push<AboutPage>();
    EXPECT_TRUE(contracttest::sameColor(about->navigationItem().barTintColor(), swatchPixel));
    EXPECT_FALSE(about->navigationItem().titleImage());
}

TEST_F(PageAppearanceTest, AboutPageBuildsFromItsResourceWithThisYearsFooter) {
    device.writePlist(
        std::string(kBundle) + "/ContractAbout.plist",
        Value::dictionary(
            {{"title", "About"},
             {"items", Value::array({
                           Value::dictionary({{"cell", "PSGroupCell"}, {"id", "LinksGroup"}}),
                           Value::dictionary(
                               {{"cell", "PSButtonCell"}, {"id", "Mail"}, {"label", "Mail us"}}),
                           Value::dictionary({{"cell", "PSGroupCell"}, {"id", "CopyrightGroup"}}),
                       })}}),
        true);
    auto page = push<AboutPage>();
    auto rows = page->specifiers();
    ASSERT_TRUE(rows);
    ASSERT_EQ(rows->count(), 3u);
    EXPECT_EQ(rows->objectAtIndex(1)->name(), "Mail us");
    EXPECT_EQ(page->specifiers(), rows);  // built once

    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    const std::string footer = "Copyright " + std::to_string(local.tm_year + 1900) + " Norvale";
    EXPECT_EQ(rows->objectAtIndex(2)->propertyForKey("footerText").str(), footer);
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
    ASSERT_EQ(alert->actions().size(), 1u);
    EXPECT_EQ(alert->actions()[0]->title(), "OK");
    auto presented = device.entries(JournalEntry::Kind::Present);
    ASSERT_EQ(presented.size(), 1u);
    EXPECT_EQ(presented[0].name, "UIAlertController");
    EXPECT_TRUE(alert->tapAction("OK"));
    EXPECT_FALSE(page->presentedViewController());
}

TEST_F(PageAppearanceTest, ControlCellsTintTheSwitchWithTheSubclassColour) {
    auto row = [](const char* name, int cell, const char* cellClass) {
        auto s = plat::Specifier::preferenceSpecifierNamed(name, nullptr, "", "", "", cell, "");
        if (*cellClass) s->setProperty(cellClass, "cellClass");
        s->setProperty(Value::boolean(true), "default");
        return s;
    };
    auto page = std::make_shared<plat::ListController>();
    page->setHeldSpecifiers(std::make_shared<plat::SpecifierArray>(std::vector<plat::SpecifierPtr>{
        plat::Specifier::groupSpecifierWithName("Group"),
        row("Tinted", plat::PSSwitchCell, "ContractTintedCell"),
        row("Base", plat::PSSwitchCell, "NVControlTableCell"),
        row("Text", plat::PSStaticTextCell, "ContractTintedCell")}));

    auto tinted = page->tableViewCellForRowAtIndexPath(0, 0);
    ASSERT_TRUE(tinted && tinted->control());
    EXPECT_EQ(tinted->className(), "ContractTintedCell");
    EXPECT_TRUE(tinted->control()->isOn());
    auto tint = tinted->control()->onTintColor();
    ASSERT_TRUE(tint);
    EXPECT_EQ(*tint, *plat::Color::colorWithRGBA(0.1, 0.6, 0.3, 1));
    EXPECT_EQ(page->specifierAtIndex(1)->propertyForKey("cellObject").asObject(), tinted);

    // The base cell keeps the system colour; a row without a switch has nothing to tint.
    auto base = page->tableViewCellForRowAtIndexPath(1, 0);
    ASSERT_TRUE(base && base->control());
    EXPECT_FALSE(base->control()->onTintColor());
    auto text = page->tableViewCellForRowAtIndexPath(2, 0);
    ASSERT_TRUE(text);
    EXPECT_FALSE(text->control());
}

}  // namespace
