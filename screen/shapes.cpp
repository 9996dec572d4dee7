#include "screen/shapes.h"

#include <algorithm>
#include <numbers>

namespace screen {

Rgba rgbaOf(const plat::Color& color) {
    return Rgba{color.red(), color.green(), color.blue(), color.alpha()};
}

void setColor(cairo_t* cr, const Rgba& color) {
    cairo_set_source_rgba(cr, color.r, color.g, color.b, color.a);
}

void fillRect(cairo_t* cr, plat::Rect rect, const Rgba& color) {
    setColor(cr, color);
    cairo_rectangle(cr, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
    cairo_fill(cr);
}

void roundedPath(cairo_t* cr, plat::Rect rect, double radius, bool top, bool bottom) {
    const double x = rect.origin.x, y = rect.origin.y;
    const double w = rect.size.width, h = rect.size.height;
    const double r = std::min({radius, w / 2, h / 2});
    constexpr double pi = std::numbers::pi;
    cairo_new_sub_path(cr);
    if (top && r > 0) {
        cairo_arc(cr, x + r, y + r, r, pi, 1.5 * pi);
        cairo_arc(cr, x + w - r, y + r, r, 1.5 * pi, 2 * pi);
    } else {
        cairo_move_to(cr, x, y);
        cairo_line_to(cr, x + w, y);
    }
    if (bottom && r > 0) {
        cairo_arc(cr, x + w - r, y + h - r, r, 0, 0.5 * pi);
        cairo_arc(cr, x + r, y + h - r, r, 0.5 * pi, pi);
    } else {
        cairo_line_to(cr, x + w, y + h);
        cairo_line_to(cr, x, y + h);
    }
    cairo_close_path(cr);
}

plat::Rect drawImage(cairo_t* cr, const plat::Image& image, plat::Rect box) {
    const plat::Size size = image.size();
    if (size.width <= 0 || size.height <= 0 || !image.surface()) return {};
    const double fit = std::min(box.size.width / size.width, box.size.height / size.height);
    const double w = size.width * fit, h = size.height * fit;
    const double x = box.origin.x + (box.size.width - w) / 2;
    const double y = box.origin.y + (box.size.height - h) / 2;
    cairo_save(cr);
    cairo_translate(cr, x, y);
    cairo_scale(cr, w / image.pixelWidth(), h / image.pixelHeight());
    cairo_set_source_surface(cr, image.surface(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
    cairo_rectangle(cr, 0, 0, image.pixelWidth(), image.pixelHeight());
    cairo_fill(cr);
    cairo_restore(cr);
    return plat::Rect{{x, y}, {w, h}};
}

void drawChevron(cairo_t* cr, double right, double centerY, const Rgba& color) {
    cairo_save(cr);
    setColor(cr, color);
    cairo_set_line_width(cr, 2);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_move_to(cr, right - 7, centerY - 6.5);
    cairo_line_to(cr, right - 1, centerY);
    cairo_line_to(cr, right - 7, centerY + 6.5);
    cairo_stroke(cr);
    cairo_restore(cr);
}

void drawBackChevron(cairo_t* cr, double left, double centerY, const Rgba& color) {
    cairo_save(cr);
    setColor(cr, color);
    cairo_set_line_width(cr, 3);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_move_to(cr, left + 10, centerY - 10);
    cairo_line_to(cr, left + 1.5, centerY);
    cairo_line_to(cr, left + 10, centerY + 10);
    cairo_stroke(cr);
    cairo_restore(cr);
}

void drawSwitch(cairo_t* cr, plat::Point origin, bool on, const Rgba& onColor, const Rgba& offColor,
                bool outlinedOff) {
    const plat::Rect track{origin, {kSwitchWidth, kSwitchHeight}};
    roundedPath(cr, track, kSwitchHeight / 2);
    setColor(cr, on ? onColor : offColor);
    cairo_fill(cr);
    if (!on && outlinedOff) {
        roundedPath(
            cr, plat::Rect{{origin.x + 1.5, origin.y + 1.5}, {kSwitchWidth - 3, kSwitchHeight - 3}},
            (kSwitchHeight - 3) / 2);
        setColor(cr, kWhite);
        cairo_fill(cr);
    }
    const double radius = 13.5;
    const double cx = on ? origin.x + kSwitchWidth - 2 - radius : origin.x + 2 + radius;
    const double cy = origin.y + kSwitchHeight / 2;
    cairo_arc(cr, cx, cy + 1, radius + 0.5, 0, 2 * std::numbers::pi);
    cairo_set_source_rgba(cr, 0, 0, 0, 0.12);
    cairo_fill(cr);
    cairo_arc(cr, cx, cy, radius, 0, 2 * std::numbers::pi);
    setColor(cr, kWhite);
    cairo_fill(cr);
}

bool isDark(const Rgba& color) {
    return color.a > 0.5 && 0.299 * color.r + 0.587 * color.g + 0.114 * color.b < 0.5;
}

}  // namespace screen
