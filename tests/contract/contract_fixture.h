#pragma once

#include <gtest/gtest.h>

#include <cairo.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/foundation/plist.h"
#include "platform/foundation/value.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"
#include "tests/support/bundle_device.h"

namespace contracttest {

inline constexpr const char* kBundle = testsupport::BundleDevice::kBundle;
inline constexpr const char* kMainFile = testsupport::BundleDevice::kMainSettings;
inline constexpr const char* kChanged = "com.norvale.veltosettingschanged";

inline constexpr auto bools = &testsupport::BundleDevice::bools;

// "#RRGGBBAA" of a colour and of an opaque pixel, so that colours compare at 8 bits a channel.
inline std::string hexOf(const plat::ColorPtr& color) {
    return color ? color->hexString() : "no colour";
}
inline std::string hexOf(std::uint32_t opaqueArgb) {
    char buffer[10];
    std::snprintf(buffer, sizeof buffer, "#%06XFF", opaqueArgb & 0xffffffu);
    return buffer;
}

// A fresh device with the bundle's classes and resources installed.
class ContractTest : public ::testing::Test {
  protected:
    // The bytes of a device file, as a string ("" when missing).
    std::string fileText(const std::string& devicePath) {
        auto bytes = device.process().root().readFile(devicePath);
        return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    }
    std::size_t changedPosts() {
        return std::ranges::count(device.notifications(), std::string(kChanged));
    }
    // The product colour as the bundle's "nav" swatch shows it.
    std::string productHex() {
        auto swatch = plat::Image::imageWithContentsOfFile(std::string(kBundle) + "/nav@3x.png");
        return swatch ? hexOf(swatch->pixel(swatch->pixelWidth() / 2, 10)) : "no swatch";
    }

    void writePng(const std::string& devicePath, const plat::ImagePtr& picture) {
        const auto png = plat::UIImagePNGRepresentation(picture.get());
        device.writeText(devicePath, std::string(png->begin(), png->end()));
    }

    // New contents written in place with the same size and modification time, so that only
    // an explicit re-read can notice them.
    void rewriteKeepingStamp(const std::string& devicePath, const plat::Value& value) {
        const auto host = device.host(devicePath);
        const auto time = std::filesystem::last_write_time(host);
        auto bytes = plat::dataFromPropertyList(value, plat::PropertyListFormat::Binary);
        ASSERT_TRUE(bytes && bytes->size() == std::filesystem::file_size(host));
        std::ofstream(host, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes->data()),
                   static_cast<std::streamsize>(bytes->size()));
        std::filesystem::last_write_time(host, time);
    }

    testsupport::BundleDevice device;
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
    cairo_set_source_rgba(cr, inner.r, inner.g, inner.b, inner.a);
    cairo_rectangle(cr, x, y, w, h);
    cairo_fill(cr);
    cairo_destroy(cr);
    return plat::Image::adopt(surface, scale);
}

}  // namespace contracttest
