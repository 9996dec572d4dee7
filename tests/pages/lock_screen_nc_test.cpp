#include <gtest/gtest.h>

#include "pages/lock_screen_settings_controller.h"
#include "pages/nc_app_settings_controller.h"
#include "platform/foundation/errors.h"
#include "platform/prefs/runtime.h"
#include "tests/support/bundle_device.h"

using plat::Value;

namespace {

// The two pages are one implementation under two names, files, keys and setters.
struct SwitchPage {
    const char* className;
    const char* resource;
    const char* key;
    const char* setter;
};

// Printed by its name, where GoogleTest would dump the bytes.
void PrintTo(const SwitchPage& page, std::ostream* out) {
    *out << page.className;
}

class LockScreenNCTest : public ::testing::TestWithParam<SwitchPage> {
  protected:
    auto page() { return device.open<velto::EnableSwitchPage>(GetParam().className); }
    bool enabled(velto::EnableSwitchPage& page) {
        if (auto lock = dynamic_cast<velto::LockScreenSettingsController*>(&page))
            return lock->isVeltoEnabledForLockScreen();
        return dynamic_cast<velto::NCAppSettingsController&>(page).isNotificationCenterEnabled();
    }
    void flip(velto::EnableSwitchPage& page, bool on) {
        plat::Runtime::shared().perform(page, GetParam().setter,
                                        {Value::boolean(on), Value(page.specifierAtIndex(1))});
    }
    int fileRows() {
        return static_cast<int>(device.resource(GetParam().resource).objectForKey("items").count());
    }

    testsupport::BundleDevice device;
};

TEST_P(LockScreenNCTest, TheKeyDecidesTheRowsAtOpen) {
    // Absent reads as off: the head only. An unreadable file reads the same through the one
    // query every page asks (PhoneFaceTimeTest).
    auto absent = page();
    EXPECT_FALSE(enabled(*absent));
    EXPECT_EQ(absent->specifiers()->count(), 2u);

    device.writeSettings({{GetParam().key, true}});
    auto on = page();
    EXPECT_TRUE(enabled(*on));
    EXPECT_EQ(on->specifiers()->count(), static_cast<std::size_t>(fileRows()));
}

TEST_P(LockScreenNCTest, OnInsertsEveryFileRowOffLeavesTheHead) {
    auto shown = device.openBuilt<velto::EnableSwitchPage>(GetParam().className);
    auto mark = device.mark();
    flip(*shown, true);
    EXPECT_EQ(device.listOperations(mark), device.animated('+', 2, fileRows() - 1));
    EXPECT_EQ(device.firstLines(mark, 3), device.storedAndAnnounced(GetParam().key));
    EXPECT_TRUE(device.mainSettings().objectForKey(GetParam().key).boolValue());
    EXPECT_EQ(device.notifications().back(), "com.norvale.veltosettingschanged");

    mark = device.mark();
    flip(*shown, false);
    EXPECT_EQ(device.listOperations(mark), device.animated('-', fileRows() - 1, 2));
    EXPECT_EQ(shown->specifiers()->count(), 2u);
}

TEST_P(LockScreenNCTest, CountDownsWrapOnAnEmptyListAndLeaveShortOnesAlone) {
    device.writeResource(GetParam().resource, Value::dictionary({{"items", Value::array()}}));
    EXPECT_THROW(page()->specifiers(), plat::RangeError);

    auto shown = page();
    for (std::size_t n : {0, 1, 2}) {
        auto list = device.groups(n);
        shown->setHeldSpecifiers(list);
        const plat::Arguments off{Value::boolean(false),
                                  Value(plat::Specifier::emptyGroupSpecifier())};
        if (n == 0)
            EXPECT_THROW(plat::Runtime::shared().perform(*shown, GetParam().setter, off),
                         plat::RangeError);
        else
            plat::Runtime::shared().perform(*shown, GetParam().setter, off);
        EXPECT_EQ(list->count(), n);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Pages, LockScreenNCTest,
    ::testing::Values(SwitchPage{"LockScreenSettingsController", "LockScreen", "VeltoEnabledLS",
                                 "lockScreenEnabledOrDisabled:specifier:"},
                      SwitchPage{"NCAppSettingsController", "NCApp", "VeltoEnabledNC",
                                 "ncAppEnabledOrDisabled:specifier:"}),
    [](const auto& info) { return std::string(info.param.resource); });

}  // namespace
