// Pictures of pages checked by their pixels at known places: where the switch's knob is and
// what colour its track takes, icons keeping their own alpha, text staying in its place, the
// popover's arrow meeting its row, and the same bytes on every run.

#include <gtest/gtest.h>

#include "platform/prefs/list_controller.h"
#include "platform/prefs/runtime.h"
#include "platform/system/device_facts.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/attributed_string.h"
#include "platform/ui/font.h"
#include "screen/screenshot.h"
#include "tests/platform/ui/pictures.h"
#include "tests/screen/shot_pixels.h"
#include "tests/support/test_device.h"

namespace {

using plat::Specifier;
using plat::SpecifierPtr;
using namespace shottest;

// A switch cell whose tint is chosen by the cell itself, as a product cell would.
class TintedSwitchCell : public plat::TableCell {
  public:
    std::string className() const override { return "TintedSwitchCell"; }
    bool initWithStyle(int style, const std::optional<std::string>& reuse,
                       const SpecifierPtr& specifier) override {
        if (!TableCell::initWithStyle(style, reuse, specifier)) return false;
        if (control()) control()->setOnTintColor(plat::Color::colorWithRGBA(0.8, 0.1, 0.6, 1));
        return true;
    }
};

// A header cell of its own height whose text mixes a big and a small font.
class TwoSizeCell : public plat::TableCell {
  public:
    std::string className() const override { return "TwoSizeCell"; }
    bool initWithStyle(int style, const std::optional<std::string>& reuse,
                       const SpecifierPtr& specifier) override {
        if (!TableCell::initWithStyle(style, reuse, specifier)) return false;
        auto text = plat::AttributedString::make("HHH\nHHH");
        text->addAttribute(plat::NSFontAttributeName,
                           plat::Value(plat::Font::fontWithName("X-Bold", 39)), {0, 4});
        text->addAttribute(plat::NSFontAttributeName, plat::Value(plat::Font::systemFontOfSize(13)),
                           {4, 3});
        textLabel().setAttributedText(text);
        setBackgroundColor(plat::Color::clearColor());
        return true;
    }
    bool hasCustomHeight() const override { return true; }
    double preferredHeightForWidth(double) override { return 100; }
};

class ScreenshotTest : public ::testing::Test {
  protected:
    void SetUp() override {
        auto& runtime = plat::Runtime::shared();
        runtime.registerClass("TintedSwitchCell", "PSTableCell",
                              [] { return std::make_shared<TintedSwitchCell>(); });
        runtime.registerClass("TwoSizeCell", "PSTableCell",
                              [] { return std::make_shared<TwoSizeCell>(); });
        page_->initForContentSize({390, 844});
        page_->setHeldSpecifiers(std::make_shared<plat::SpecifierArray>());
    }

    SpecifierPtr add(const std::string& name, int cell, const std::string& cellClass = "") {
        auto row = Specifier::preferenceSpecifierNamed(name, page_, "", "", "", cell, "");
        if (!cellClass.empty()) row->setProperty(plat::Value(cellClass), plat::pskey::CellClass);
        page_->heldSpecifiers()->addObject(row);
        return row;
    }
    SpecifierPtr group(const std::string& name, const std::string& footer = "") {
        auto row = Specifier::groupSpecifierWithName(name);
        if (!footer.empty()) row->setProperty(plat::Value(footer), plat::pskey::FooterText);
        page_->heldSpecifiers()->addObject(row);
        return row;
    }
    SpecifierPtr switchRow(const std::string& name, bool on) {
        auto row = add(name, plat::PSSwitchCell, "TintedSwitchCell");
        row->setProperty(plat::Value::boolean(on), plat::pskey::Default);
        return row;
    }

    screen::Screenshot draw(const std::string& family = "iPhone",
                            const std::string& version = "14.4") {
        device_.setProfile(family, 2);
        device_.setSystemVersion(version);
        return screen::drawScreenshot(
            *page_, screen::Look::forDevice(plat::DeviceFacts::read(device_.process().root())));
    }

    static const screen::LaidRow& frameOf(const screen::Screenshot& shot, std::size_t index) {
        if (const screen::LaidRow* row = shot.table.row(index)) return *row;
        throw std::runtime_error("row not drawn");
    }

    testsupport::TestDevice device_;
    std::shared_ptr<plat::ListController> page_ = std::make_shared<plat::ListController>();
};

constexpr Rgb kTint{204, 26, 153};

TEST_F(ScreenshotTest, KnobSitsOnTheValueSideAndTheTrackTakesTheCellsTint) {
    group("G");
    switchRow("On", true);
    switchRow("Off", false);
    for (const std::string version : {"12.4", "14.4"}) {
        SCOPED_TRACE(version);
        const auto shot = draw("iPhone", version);
        // From iOS 13 on the off track is filled light grey; before, only outlined.
        const Rgb offTrack = version >= "13" ? Rgb{233, 233, 235} : kWhite;
        // The track's ends: on, the tint left and the knob right; off, the knob left.
        for (auto [index, left, right] : {std::tuple{1u, kTint, kWhite}, {2u, kWhite, offTrack}}) {
            const plat::Rect frame = frameOf(shot, index).frame;
            const double end = frame.origin.x + frame.size.width - shot.look.cellInset;
            const double middle = frame.origin.y + frame.size.height / 2;
            EXPECT_TRUE(near(at(shot, end - 51 + 8, middle), left)) << "left end of row " << index;
            EXPECT_TRUE(near(at(shot, end - 8, middle), right)) << "right end of row " << index;
        }
    }
}

TEST_F(ScreenshotTest, IconsKeepTheirOwnAlpha) {
    group("Pictures");
    // Red squares, the first with a transparent margin.
    for (int m : {10, 0}) {
        auto icon = uitest::picture(60, 60, 2, {{m, m, 60 - 2 * m, 60 - 2 * m, 0.9, 0.1, 0.1}});
        add("Icon", plat::PSLinkCell)->setProperty(plat::Value(icon), plat::pskey::IconImage);
    }
    const auto shot = draw();
    for (std::size_t index : {1u, 2u}) {
        const plat::Rect frame = frameOf(shot, index).frame;
        const double left = frame.origin.x + shot.look.cellInset;
        const double top = frame.origin.y + (frame.size.height - 29) / 2;
        EXPECT_TRUE(near(at(shot, left + 14.5, top + 14.5), Rgb{230, 26, 26}));
        EXPECT_EQ(near(at(shot, left + 1, top + 1), kWhite), index == 1) << "corner of " << index;
    }
}

TEST_F(ScreenshotTest, LongFooterWrapsBelowItsGroupInsideTheScreen) {
    std::string footer;
    for (int i = 0; i < 30; ++i)
        footer += "wrapping words ";
    group("G", footer);
    add("Row", plat::PSStaticTextCell);
    for (const char* version : {"12.4", "14.4"}) {
        const auto shot = draw("iPhone", version);
        ASSERT_EQ(shot.table.sections.size(), 1u);
        ASSERT_TRUE(shot.table.sections[0].footer);
        const plat::Rect text = shot.table.sections[0].footer->frame;
        const plat::Rect row = frameOf(shot, 1).frame;
        EXPECT_GE(text.origin.y, row.origin.y + row.size.height) << version;
        EXPECT_GT(text.size.height, 3 * 13) << "several lines";
        int inked = 0;
        for (double y = text.origin.y; y < text.origin.y + text.size.height; y += 0.5)
            for (double x = 0; x < shot.look.width; x += 0.5) {
                if (!ink(at(shot, x, y))) continue;
                ++inked;
                ASSERT_GE(x, text.origin.x - 1) << version;
                ASSERT_LE(x, shot.look.width - shot.look.margin - 8) << version;
            }
        EXPECT_GT(inked, 100) << version;
    }
}

TEST_F(ScreenshotTest, AttributedTextShowsItsTwoSizes) {
    group("");
    add("Header", plat::PSStaticTextCell, "TwoSizeCell");
    const auto shot = draw();
    const plat::Rect frame = frameOf(shot, 1).frame;
    // Heights of the bands of rows that carry ink: the big line, then the small one.
    std::vector<double> bands;
    bool inBand = false;
    for (double y = frame.origin.y; y < frame.origin.y + frame.size.height; y += 0.5) {
        bool any = false;
        for (double x = frame.origin.x; x < frame.origin.x + frame.size.width && !any; x += 0.5)
            any = ink(at(shot, x, y));
        if (any && !inBand) bands.push_back(0);
        if (any) bands.back() += 0.5;
        inBand = any;
    }
    ASSERT_EQ(bands.size(), 2u);
    EXPECT_NEAR(bands[0] / bands[1], 3.0, 0.4);
}

TEST_F(ScreenshotTest, PopoverArrowTouchesItsRowOnAnIPad) {
    group("G");
    add("First", plat::PSButtonCell);
    add("Restore", plat::PSButtonCell);
    group("H");
    add("Other", plat::PSStaticTextCell);
    device_.setProfile("iPad", 2);
    auto cell = page_->tableViewCellForRowAtIndexPath(1, 0);
    auto sheet = plat::AlertController::alertControllerWithTitle(
        "Restore?", std::nullopt, plat::UIAlertControllerStyleActionSheet);
    sheet->addAction(
        plat::AlertAction::actionWithTitle("Restore", plat::UIAlertActionStyleDestructive, {}));
    sheet->popoverPresentationController()->setSourceView(cell);
    page_->presentViewController(sheet, false, nullptr);

    const auto shot = draw("iPad", "14.4");
    ASSERT_TRUE(shot.popover);
    EXPECT_EQ(shot.popover->anchorRow, std::optional<std::size_t>(2));
    const plat::Rect row = frameOf(shot, 2).frame;
    const plat::Point tip = shot.popover->arrowTip;
    EXPECT_DOUBLE_EQ(tip.y, row.origin.y + row.size.height);
    // In the gap under the group: the arrow is white, beside it the table's ground shows.
    EXPECT_TRUE(near(at(shot, tip.x, tip.y + 3), kWhite));
    EXPECT_FALSE(near(at(shot, tip.x + 30, tip.y + 3), kWhite));
}

TEST_F(ScreenshotTest, TheBarTakesThePagesColourAndTheSamePageGivesTheSameBytes) {
    group("G", "A footer");
    switchRow("On", true);
    add("Link", plat::PSLinkCell);
    page_->navigationItem().setBarTintColor(plat::Color::colorWithRGBA(0.8, 0.1, 0.6, 1));
    page_->navigationItem().setTitle("Title");
    const auto shot = draw();
    EXPECT_TRUE(near(at(shot, 5, shot.look.statusBar + 5), kTint));
    EXPECT_TRUE(near(at(shot, 5, 5), kTint)) << "the colour runs up under the status bar";
    const auto first = screen::pngBytes(shot);
    ASSERT_GT(first.size(), 8u);
    EXPECT_EQ(first, screen::pngBytes(draw()));
}

}  // namespace
