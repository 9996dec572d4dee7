// Pictures measured against the devices they show: the model's size, the bottom inset and
// home indicator only where there is no Home button, the back button of the bundle's root
// page, and the iPad's split view with the page in the column beside Settings' sidebar.

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "platform/prefs/list_controller.h"
#include "platform/system/device_facts.h"
#include "platform/ui/navigation_controller.h"
#include "screen/screenshot.h"
#include "tests/platform/ui/pictures.h"
#include "tests/screen/shot_pixels.h"
#include "tests/support/test_device.h"

namespace {

using namespace shottest;

constexpr Rgb kGround{242, 242, 247};
constexpr Rgb kTintBlue{0, 122, 255};

// The leftmost dark pixel in the row's middle band, in points; -1 when there is none.
double firstInk(const screen::Screenshot& shot, const plat::Rect& frame) {
    const double middle = frame.origin.y + frame.size.height / 2;
    for (double x = frame.origin.x; x < frame.origin.x + frame.size.width; x += 0.5)
        for (double y = middle - 6; y < middle + 6; y += 1)
            if (ink(at(shot, x, y), 120)) return x;
    return -1;
}

struct Device {
    const char* family;
    double scale;
    double width, height;  // points
    bool homeButton;
};

// Printed and named by its family and scale, where GoogleTest would dump the bytes.
void PrintTo(const Device& device, std::ostream* out) {
    *out << device.family << static_cast<int>(device.scale);
}

class DeviceScreenTest : public ::testing::TestWithParam<Device> {
  protected:
    void SetUp() override {
        device_.setProfile(GetParam().family, GetParam().scale);
        device_.setSystemVersion("14.4");
        page_->initForContentSize({GetParam().width, GetParam().height});
        page_->setHeldSpecifiers(std::make_shared<plat::SpecifierArray>());
        navigation_->setRootViewController(page_);
    }

    plat::SpecifierPtr add(const std::string& name, int cell) {
        auto row = plat::Specifier::preferenceSpecifierNamed(name, page_, "", "", "", cell, "");
        page_->heldSpecifiers()->addObject(row);
        return row;
    }

    screen::Screenshot draw() {
        return screen::drawScreenshot(
            *page_, screen::Look::forDevice(plat::DeviceFacts::read(device_.process().root())),
            screen::SettingsEntry{"Bundle", nullptr});
    }

    testsupport::TestDevice device_;
    std::shared_ptr<plat::ListController> page_ = std::make_shared<plat::ListController>();
    std::shared_ptr<plat::NavigationController> navigation_ =
        std::make_shared<plat::NavigationController>();
};

TEST_P(DeviceScreenTest, PictureHasTheModelsSizeBarsAndBottom) {
    const Device& d = GetParam();
    page_->heldSpecifiers()->addObject(plat::Specifier::groupSpecifierWithName("Many"));
    for (int i = 0; i < 40; ++i)
        add("Row " + std::to_string(i), plat::PSLinkCell);
    const auto shot = draw();
    const auto& look = shot.look;
    EXPECT_EQ(shot.image->pixelWidth(), static_cast<int>(d.width * d.scale));
    EXPECT_EQ(shot.image->pixelHeight(), static_cast<int>(d.height * d.scale));

    // The indicator sits in the middle of the bottom, only without a Home button.
    EXPECT_EQ(ink(at(shot, d.width / 2, d.height - 10.5), 120), !d.homeButton);
    const double groupX = look.pageX() + look.margin + 4;
    if (d.homeButton) {
        EXPECT_FALSE(near(at(shot, groupX, d.height - 1), kGround, 8)) << "rows reach the end";
    } else {
        // Beside the indicator the inset shows only the table's ground: no row, no text.
        for (double y = look.contentBottom(); y < d.height; y += 0.5)
            for (double x = look.pageX(); x < (d.width - 320) / 2; x += 1)
                ASSERT_TRUE(near(at(shot, x, y), kGround)) << x << "," << y;
    }

    // The bundle's root page goes back to Settings, except beside the iPad's sidebar.
    const double barMiddle = look.statusBar + look.navigationBar / 2;
    bool backInk = false;
    for (double x = look.pageX() + 8; x < look.pageX() + 20; x += 0.5)
        backInk = backInk || near(at(shot, x, barMiddle), kTintBlue, 30);
    EXPECT_EQ(backInk, look.sidebarWidth == 0);

    const plat::Rect first = shot.table.row(1)->frame;
    if (std::string(d.family) == "iPad") {
        // The page keeps to the column right of the sidebar, which shows the bundle selected.
        EXPECT_EQ(look.sidebarWidth, 320);
        EXPECT_DOUBLE_EQ(first.origin.x, 320 + look.margin);
        EXPECT_DOUBLE_EQ(first.origin.x + first.size.width, d.width - look.margin);
        ASSERT_TRUE(shot.selectedEntry);
        EXPECT_LE(shot.selectedEntry->origin.x + shot.selectedEntry->size.width, 320);
        const plat::Point entry = shot.selectedEntry->origin;
        EXPECT_TRUE(near(at(shot, entry.x + 4, entry.y + 4), kTintBlue));
        EXPECT_TRUE(near(at(shot, 322, barMiddle + 100), kGround));
    } else {
        EXPECT_FALSE(shot.selectedEntry);
        EXPECT_DOUBLE_EQ(first.size.width, d.width - 2 * look.margin);
    }
}

TEST_P(DeviceScreenTest, LabelsOfRowsWithoutAnIconLineUpWithThoseWithOne) {
    page_->heldSpecifiers()->addObject(plat::Specifier::groupSpecifierWithName("Apps"));
    add("Hat", plat::PSStaticTextCell)
        ->setProperty(plat::Value(uitest::picture(58, 58, 2, {{0, 0, 58, 58, 0.9, 0.1, 0.1}})),
                      plat::pskey::IconImage);
    add("Hut", plat::PSStaticTextCell);
    const auto shot = draw();
    const double withIcon = firstInk(shot, shot.table.row(1)->frame);
    ASSERT_GT(withIcon, shot.table.row(1)->frame.origin.x + 29);
    EXPECT_NEAR(firstInk(shot, shot.table.row(2)->frame), withIcon, 0.5);
}

INSTANTIATE_TEST_SUITE_P(Devices, DeviceScreenTest,
                         ::testing::Values(Device{"iPhone", 3, 390, 844, false},
                                           Device{"iPhone", 2, 375, 667, true},
                                           Device{"iPod", 2, 320, 568, true},
                                           Device{"iPad", 2, 834, 1194, false}),
                         [](const auto& info) { return ::testing::PrintToString(info.param); });

}  // namespace
