#pragma once

#include <cairo.h>

#include <cstdint>
#include <cstdlib>
#include <initializer_list>

#include "platform/ui/image.h"
#include "platform/ui/image_context.h"

namespace uitest {

// A rectangle of a picture in pixels and the colour it is filled with (straight alpha).
struct Fill {
    int x, y, width, height;
    double red, green, blue, alpha = 1;
};

// A picture painted with cairo, independently of the code under test.
inline plat::ImagePtr picture(int width, int height, double scale,
                              std::initializer_list<Fill> fills) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    cairo_t* cr = cairo_create(surface);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    for (const Fill& f : fills) {
        cairo_set_source_rgba(cr, f.red, f.green, f.blue, f.alpha);
        cairo_rectangle(cr, f.x, f.y, f.width, f.height);
        cairo_fill(cr);
    }
    cairo_destroy(cr);
    return plat::Image::adopt(surface, scale);
}

// Draws `image` into `rect` of a fresh image context and returns what came out.
inline plat::ImagePtr render(plat::Size canvas, bool opaque, double scale,
                             const plat::ImagePtr& image, plat::Rect rect) {
    plat::UIGraphicsBeginImageContextWithOptions(canvas, opaque, scale);
    plat::drawInRect(image.get(), rect);
    plat::ImagePtr out = plat::UIGraphicsGetImageFromCurrentImageContext();
    plat::UIGraphicsEndImageContext();
    return out;
}

inline unsigned alpha(std::uint32_t argb) {
    return argb >> 24;
}
// Whether two ARGB pixels differ by at most `tolerance` in every channel.
inline bool near(std::uint32_t a, std::uint32_t b, int tolerance) {
    for (int shift = 0; shift < 32; shift += 8)
        if (std::abs(int((a >> shift) & 0xff) - int((b >> shift) & 0xff)) > tolerance) return false;
    return true;
}

constexpr std::uint32_t kRed = 0xffff0000, kGreen = 0xff00ff00, kBlue = 0xff0000ff;

}  // namespace uitest
