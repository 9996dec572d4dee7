#include <gtest/gtest.h>

#include "general/velto_general_settings_controller.h"
#include "platform/foundation/errors.h"
#include "platform/prefs/runtime.h"
#include "platform/system/journal.h"
#include "platform/ui/alert_controller.h"
#include "tests/support/bundle_device.h"

using plat::Value;
using velto::VeltoGeneralSettingsController;

namespace {

using Ids = std::vector<std::string>;
constexpr auto ids = &testsupport::BundleDevice::ids;
const char* const kLocalCache = "VeltoEnabledLocalCache";

class GeneralPageTest : public ::testing::Test {
  protected:
    GeneralPageTest() {
        // The restart must never reach this machine.
        device.process().shell().setInterceptor([](const std::string&) {
            return plat::ShellResult{0, ""};
        });
    }
    std::shared_ptr<VeltoGeneralSettingsController> page() {
        return device.open<VeltoGeneralSettingsController>("VeltoGeneralSettingsController");
    }
    static bool hasFooter(const plat::SpecifierArrayPtr& list) {
        return !list->objectAtIndex(0)->propertyForKey("footerText").isNil();
    }
    // Flips the local-cache switch on a built page; the sheet it presents.
    auto flipLocalCache(VeltoGeneralSettingsController& page, bool on) {
        device.flip(page, "Local Cache", on);
        return std::dynamic_pointer_cast<plat::AlertController>(page.presentedViewController());
    }
    // Kinds of what happened since a mark, leaving out presentation bookkeeping.
    std::vector<std::string> effects(std::size_t mark) const {
        std::vector<std::string> out;
        for (const auto& e : device.journal().since(mark))
            if (!std::holds_alternative<plat::journal::Dismiss>(e))
                out.push_back(plat::kindName(e));
        return out;
    }

    testsupport::BundleDevice device;
};

TEST_F(GeneralPageTest, MonogramRowAndFooterFollowTheSwitch) {
    auto off = page()->specifiers();
    EXPECT_EQ(ids(off), (Ids{"MonogramGroup", "Monogram", "ShapeGroup", "Rounded Pictures",
                             "CacheGroup", "Local Cache"}));
    EXPECT_FALSE(hasFooter(off));

    device.writeSettings({{"VeltoEnabledMonogram", true}});
    auto built = page();
    EXPECT_EQ(built->specifiers()->count(), 7u);
    EXPECT_TRUE(hasFooter(built->specifiers()));

    // Off then on: the row goes and comes back at the file's index, the footer with it.
    auto mark = device.mark();
    built->veltoMonogramEnabledOrDisabled(Value::boolean(false), built->specifierAtIndex(1));
    EXPECT_EQ(device.listOperations(mark), (Ids{"-2a", "~0a"}));
    EXPECT_EQ(ids(built->specifiers()), ids(off));
    EXPECT_FALSE(hasFooter(built->specifiers()));
    EXPECT_FALSE(device.mainSettings().objectForKey("VeltoEnabledMonogram").boolValue());

    mark = device.mark();
    built->veltoMonogramEnabledOrDisabled(Value::boolean(true), built->specifierAtIndex(1));
    EXPECT_EQ(device.listOperations(mark), (Ids{"+2a", "~0a"}));
    EXPECT_EQ(built->specifierAtIndex(2)->identifier(), "Colored Monogram");
    EXPECT_TRUE(hasFooter(built->specifiers()));

    // Before the list is built the switch only stores.
    auto fresh = page();
    mark = device.mark();
    fresh->veltoMonogramEnabledOrDisabled(Value::boolean(false), built->specifierAtIndex(1));
    EXPECT_TRUE(device.listOperations(mark).empty());
    EXPECT_EQ(fresh->heldSpecifiers(), nullptr);
}

TEST_F(GeneralPageTest, TheMonogramAndRoundedSwitchesStoreAndSynchronizeFirst) {
    auto shown = page();
    for (auto [id, key] : {std::pair{"Monogram", "VeltoEnabledMonogram"},
                           {"Rounded Pictures", "VeltoEnabledRoundedPictures"}}) {
        ASSERT_EQ(device.row(shown->specifiers(), id)->propertyForKey("key").str(), key);
        const auto mark = device.mark();
        device.flip(*shown, id, true);
        EXPECT_EQ(device.firstLines(mark, 3), device.storedAndAnnounced(key));
        EXPECT_TRUE(device.mainSettings().objectForKey(key).boolValue()) << key;
    }
}

TEST_F(GeneralPageTest, ContinueStoresThenRestartsCancelStoresTheOldValue) {
    device.writeSettings({{kLocalCache, true}});
    auto shown = page();
    auto mark = device.mark();
    ASSERT_TRUE(flipLocalCache(*shown, false)->tapAction("Cancel"));
    EXPECT_EQ(effects(mark),
              (Ids{"present", "preference-write", "notification", "synchronize", "reload"}));
    EXPECT_EQ(device.listOperations(mark), Ids{"~5a"});  // the switch turns back, animated
    EXPECT_EQ(device.journalLines(mark).front(), "present UIAlertController animated");
    ASSERT_TRUE(flipLocalCache(*shown, true)->tapAction("Cancel"));
    EXPECT_EQ(device.mainSettings().objectForKey(kLocalCache), Value::integer(0));
    ASSERT_TRUE(flipLocalCache(*shown, false)->tapAction("Cancel"));
    EXPECT_EQ(device.mainSettings().objectForKey(kLocalCache), Value::integer(1));

    mark = device.mark();
    ASSERT_TRUE(flipLocalCache(*shown, false)->tapAction("Continue"));
    EXPECT_EQ(effects(mark),
              (Ids{"present", "preference-write", "notification", "synchronize", "shell"}));
    EXPECT_EQ(device.entries<plat::journal::Shell>().back().command, "killall backboardd");
    EXPECT_FALSE(device.mainSettings().objectForKey(kLocalCache).boolValue());
}

TEST_F(GeneralPageTest, ASheetOutlivingItsPageStillSynchronizesAndRestarts) {
    for (const auto& [action, expected] :
         {std::pair{"Continue", Ids{"synchronize", "shell"}}, {"Cancel", Ids{"synchronize"}}}) {
        auto shown = page();
        const auto sheet = flipLocalCache(*shown, true);
        const std::weak_ptr<VeltoGeneralSettingsController> gone = shown;
        shown.reset();
        ASSERT_TRUE(gone.expired()) << "the sheet's actions keep the page alive";
        const auto mark = device.mark();
        ASSERT_TRUE(sheet->tapAction(action));
        EXPECT_EQ(effects(mark), expected) << action;
    }
    EXPECT_TRUE(device.mainSettings().objectForKey(kLocalCache).isNil());
}

TEST_F(GeneralPageTest, TrimmingKeepsTheHeadAndTheLastAndWrapsBelowTwo) {
    auto shown = page();
    for (std::size_t n = 0; n <= 5; ++n) {
        auto list = device.groups(n);
        if (n < 2) {
            EXPECT_THROW(shown->disableMonogramRelatedSettings(list), plat::RangeError) << n;
            continue;
        }
        shown->disableMonogramRelatedSettings(list);
        Ids expected{"0", "1"};
        if (n > 2) expected.push_back(std::to_string(n - 1));
        EXPECT_EQ(ids(list), expected) << n;
    }
}

TEST_F(GeneralPageTest, AResourceWithoutTheMonogramRowFailsWithTheRangeError) {
    auto file = device.resource("General");
    file.objectForKey("items").objectAtIndex(2).setValueForKey("id", "Tinted Monogram");
    device.writeResource("General", file);
    EXPECT_THROW(page()->specifiers(), plat::RangeError);
}

}  // namespace
