#pragma once

#include <gtest/gtest.h>

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "bundle/bundle_classes.h"
#include "platform/foundation/plist.h"
#include "platform/foundation/value.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"
#include "tests/support/test_device.h"

namespace contracttest {

inline constexpr const char* kBundle = "/System/Library/PreferenceBundles/VeltoSettings.bundle";
inline constexpr const char* kPreferences = "/var/mobile/Library/Preferences";
inline constexpr const char* kMainFile = "/var/mobile/Library/Preferences/com.norvale.velto.plist";
inline constexpr const char* kChanged = "com.norvale.veltosettingschanged";

// A fresh device with the bundle's resources installed where the Settings app finds them.
class ContractTest : public ::testing::Test {
  protected:
    void SetUp() override {
        velto::registerBundleClasses();
        device.setProfile("iPhone", 3);
        device.setSystemVersion("14.4");
        device.install(testsupport::sourceDir() / "resources", kBundle);
    }

    // The bytes of a device file, as a string ("" when missing).
    std::string fileText(const std::string& devicePath) {
        auto bytes = device.process().root().readFile(devicePath);
        return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    }
    bool isBinaryPlist(const std::string& devicePath) {
        return fileText(devicePath).rfind("bplist00", 0) == 0;
    }

    // New contents written in place with the same size and modification time, so that only
    // an explicit re-read can notice them.
    void rewriteKeepingStamp(const std::string& devicePath, const plat::Value& value) {
        const auto host = device.host(devicePath);
        const auto size = std::filesystem::file_size(host);
        const auto time = std::filesystem::last_write_time(host);
        auto bytes = plat::dataFromPropertyList(value, plat::PropertyListFormat::Binary);
        ASSERT_TRUE(bytes);
        ASSERT_EQ(bytes->size(), size);
        std::fstream(host, std::ios::in | std::ios::out | std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes->data()),
                   static_cast<std::streamsize>(bytes->size()));
        std::filesystem::last_write_time(host, time);
    }

    testsupport::TestDevice device;
};

// A flat picture painted with cairo, independently of the code under test: `inner` fills
// the rectangle (x, y, w, h) over a background.
struct Rgba {
    double r, g, b, a = 1;
};
inline plat::ImagePtr paint(int width, int height, double scale, Rgba background, Rgba inner = {},
                            int x = 0, int y = 0, int w = 0, int h = 0) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    cairo_t* cr = cairo_create(surface);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(cr, background.r, background.g, background.b, background.a);
    cairo_paint(cr);
    if (w > 0 && h > 0) {
        cairo_set_source_rgba(cr, inner.r, inner.g, inner.b, inner.a);
        cairo_rectangle(cr, x, y, w, h);
        cairo_fill(cr);
    }
    cairo_destroy(cr);
    return plat::Image::adopt(surface, scale);
}

inline unsigned alphaOf(std::uint32_t argb) {
    return argb >> 24;
}
inline unsigned redOf(std::uint32_t argb) {
    return (argb >> 16) & 0xff;
}
inline unsigned greenOf(std::uint32_t argb) {
    return (argb >> 8) & 0xff;
}
inline unsigned blueOf(std::uint32_t argb) {
    return argb & 0xff;
}

// Whether a colour matches an opaque pixel's colour within one step of 255.
inline ::testing::AssertionResult sameColor(const plat::ColorPtr& color, std::uint32_t argb) {
    if (!color) return ::testing::AssertionFailure() << "no colour";
    const double tolerance = 1.0 / 255 + 1e-9;
    if (std::fabs(color->red() - redOf(argb) / 255.0) <= tolerance &&
        std::fabs(color->green() - greenOf(argb) / 255.0) <= tolerance &&
        std::fabs(color->blue() - blueOf(argb) / 255.0) <= tolerance && color->alpha() == 1)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << color->description() << " is not pixel " << std::hex << argb;
}

}  // namespace contracttest
