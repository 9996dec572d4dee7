#pragma once

// Shared by the Mail page tests: pictures to pick, reading the avatar files back, and the
// Settings application's side of the page (showing a row's cell, tapping a row).

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "contract/velto_settings.h"
#include "pages/mail_app_settings_controller.h"
#include "platform/prefs/runtime.h"
#include "platform/ui/image.h"
#include "tests/support/bundle_device.h"

namespace mailtest {

inline const std::string kImagePath = "/var/mobile/Library/Mail/Velto/default_avatar_mail@3x.png";
inline const std::string kThumbnailPath =
    "/var/mobile/Library/Mail/Velto/default_avatar_thumb_mail@3x.png";
inline const std::string kStockPath =
    "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png";
inline const std::string kAvatarNotification = "com.norvale.veltoemailavatarsettingschanged";

// Premultiplied ARGB, as the platform's pixels are.
inline std::uint32_t argb(int a, int r, int g, int b) {
    return static_cast<std::uint32_t>(a) << 24 | static_cast<std::uint32_t>(r) << 16 |
           static_cast<std::uint32_t>(g) << 8 | static_cast<std::uint32_t>(b);
}

inline int channel(std::uint32_t pixel, int shift) {
    return static_cast<int>(pixel >> shift & 0xff);
}

inline bool near(std::uint32_t a, std::uint32_t b, int tolerance) {
    for (int shift : {0, 8, 16, 24})
        if (std::abs(channel(a, shift) - channel(b, shift)) > tolerance) return false;
    return true;
}

// A picture of cols × rows blocks of cell pixels each, the block colours given row by row
// (premultiplied ARGB words).
struct Grid {
    int cols, rows, cellWidth, cellHeight;
    std::vector<std::uint32_t> colours;

    int width() const { return cols * cellWidth; }
    int height() const { return rows * cellHeight; }
    std::uint32_t colourAt(int col, int row) const { return colours[row * cols + col]; }

    plat::ImagePtr picture(double scale = 1) const {
        cairo_surface_t* surface =
            cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width(), height());
        cairo_surface_flush(surface);
        auto* data = cairo_image_surface_get_data(surface);
        const int stride = cairo_image_surface_get_stride(surface);
        for (int y = 0; y < height(); ++y) {
            auto* line = reinterpret_cast<std::uint32_t*>(data + y * stride);
            for (int x = 0; x < width(); ++x)
                line[x] = colourAt(x / cellWidth, y / cellHeight);
        }
        cairo_surface_mark_dirty(surface);
        return plat::Image::adopt(surface, scale);
    }
};

// A landscape picture, twice as wide as high, of eight blocks with one fully transparent:
// stretched onto a square canvas every block must keep its share of the width and height.
inline Grid landscapeGrid() {
    return Grid{4,
                2,
                10,
                10,
                {argb(255, 220, 30, 30), argb(255, 30, 200, 40), argb(255, 20, 40, 210),
                 argb(255, 240, 220, 20), argb(255, 120, 20, 160), argb(0, 0, 0, 0),
                 argb(255, 250, 250, 250), argb(255, 10, 10, 10)}};
}

// Every pixel of a picture drawn stretched from the grid, except a band around each block
// border as wide as one source pixel is after stretching (filtering blends there), has the
// block's colour.
inline void expectStretchedGrid(const plat::Image& out, const Grid& grid) {
    const int w = out.pixelWidth(), h = out.pixelHeight();
    const double fx = static_cast<double>(w) / grid.width();
    const double fy = static_cast<double>(h) / grid.height();
    const int marginX = static_cast<int>(std::ceil(fx)) + 1;
    const int marginY = static_cast<int>(std::ceil(fy)) + 1;
    int checked = 0, wrong = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const double sx = (x + 0.5) / fx, sy = (y + 0.5) / fy;
            const int col = static_cast<int>(sx) / grid.cellWidth;
            const int row = static_cast<int>(sy) / grid.cellHeight;
            const double bx = std::fmod(sx, grid.cellWidth) * fx;
            const double by = std::fmod(sy, grid.cellHeight) * fy;
            const bool inner = (bx >= marginX || col == 0) &&
                               (grid.cellWidth * fx - bx >= marginX || col == grid.cols - 1) &&
                               (by >= marginY || row == 0) &&
                               (grid.cellHeight * fy - by >= marginY || row == grid.rows - 1);
            if (!inner) continue;
            ++checked;
            if (!near(out.pixel(x, y), grid.colourAt(col, row), 1) && wrong++ < 5) {
                ADD_FAILURE() << "pixel (" << x << ", " << y << ") is " << std::hex
                              << out.pixel(x, y) << ", block " << col << "," << row << " is "
                              << grid.colourAt(col, row);
            }
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(checked, w * h / 2);
}

// The file as the extension would read it: PNG bytes that decode.
inline plat::ImagePtr readPng(testsupport::TestDevice& device, const std::string& path) {
    auto bytes = device.process().root().readFile(path);
    if (!bytes) {
        ADD_FAILURE() << "no file at " << path;
        return nullptr;
    }
    static const unsigned char signature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    EXPECT_TRUE(bytes->size() > 8 && std::equal(signature, signature + 8, bytes->begin()))
        << path << " is not a PNG";
    auto image = plat::Image::imageWithData(*bytes);
    EXPECT_TRUE(image) << path << " does not decode";
    return image;
}

// The canvases in pixels at a screen scale, from the shared settings' picture size.
struct Pixels {
    int width, height;
};
inline Pixels imagePixels(double scale) {
    auto settings = velto::VeltoSettings::sharedSettings();
    return {static_cast<int>(std::lround(2 * settings->defaultWidth() * scale)),
            static_cast<int>(std::lround(2 * settings->defaultHeight() * scale))};
}
inline Pixels thumbnailPixels(double scale) {
    auto settings = velto::VeltoSettings::sharedSettings();
    return {static_cast<int>(std::lround((2 * settings->defaultWidth() + 8) * scale)),
            static_cast<int>(std::lround((2 * settings->defaultHeight() + 8) * scale))};
}

// The Settings application's side of the page.
class MailPageHarness {
  public:
    explicit MailPageHarness(testsupport::BundleDevice& device) : device_(device) {}

    std::shared_ptr<velto::MailAppSettingsController> open() {
        page = device_.open<velto::MailAppSettingsController>("MailAppSettingsController");
        if (page) page->specifiers();
        return page;
    }

    plat::SpecifierPtr row(const std::string& id) const {
        for (const auto& candidate : *page->specifiers())
            if (candidate->identifier() == id) return candidate;
        ADD_FAILURE() << "no row " << id;
        return nullptr;
    }

    // Shows the row's cell, which records it on the row as the list controller does.
    plat::TableCellPtr showCell(const std::string& id) {
        const auto target = row(id);
        for (std::size_t group = 0; group < page->numberOfGroups(); ++group)
            for (std::size_t r = 0; r < page->rowsForGroup(group); ++r)
                if (page->specifierAtIndex(page->indexForRow(r, group)) == target)
                    return page->tableViewCellForRowAtIndexPath(r, group);
        ADD_FAILURE() << "row " << id << " is not shown";
        return nullptr;
    }

    // Taps a button row: its action selector, through the runtime, as the resource names it.
    void tap(const std::string& id) {
        const auto button = row(id);
        plat::Runtime::shared().perform(*page, button->action(), {plat::Value(button)});
    }

    std::shared_ptr<velto::MailAppSettingsController> page;

  private:
    testsupport::BundleDevice& device_;
};

}  // namespace mailtest
