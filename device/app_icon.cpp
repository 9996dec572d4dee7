#include "device/app_icon.h"

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <utility>

#include "device/glyphs.h"

namespace velto::device {

namespace {

std::uint32_t fnv1a(const std::string& text) {
    std::uint32_t hash = 2166136261u;
    for (unsigned char c : text) {
        hash ^= c;
        hash *= 16777619u;
    }
    return hash;
}

IconColor fromHsv(double hue, double saturation, double value) {
    const double c = value * saturation;
    const double h = std::fmod(hue, 360.0) / 60.0;
    const double x = c * (1 - std::fabs(std::fmod(h, 2.0) - 1));
    double r = 0, g = 0, b = 0;
    switch (static_cast<int>(h)) {
        case 0:
            r = c, g = x;
            break;
        case 1:
            r = x, g = c;
            break;
        case 2:
            g = c, b = x;
            break;
        case 3:
            g = x, b = c;
            break;
        case 4:
            r = x, b = c;
            break;
        default:
            r = c, b = x;
            break;
    }
    const double m = value - c;
    return {r + m, g + m, b + m};
}

void roundedSquare(cairo_t* cr, double size) {
    // Close to the home screen's corner: about a fifth of the side.
    const double radius = size * 0.225;
    cairo_new_sub_path(cr);
    cairo_arc(cr, size - radius, radius, radius, -M_PI / 2, 0);
    cairo_arc(cr, size - radius, size - radius, radius, 0, M_PI / 2);
    cairo_arc(cr, radius, size - radius, radius, M_PI / 2, M_PI);
    cairo_arc(cr, radius, radius, radius, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr);
}

bool marked(const Glyph& glyph, int row, int column) {
    return row >= 0 && row < kGlyphRows && column >= 0 && column < kGlyphColumns &&
           glyph[row][column] == '#';
}

// The letter as round-capped strokes joining the marked cells' centres, antialiased like
// type: neighbours across, down and diagonally (where no corner already joins them), a dot
// for a cell alone. A little under half the icon's width, centred.
void drawGlyph(cairo_t* cr, const Glyph& glyph, double size) {
    const double step = size * 0.09;
    const double left = (size - step * (kGlyphColumns - 1)) / 2;
    const double top = (size - step * (kGlyphRows - 1)) / 2;
    auto at = [&](int row, int column) {
        return std::pair{left + column * step, top + row * step};
    };
    auto segment = [&](int row, int column, int toRow, int toColumn) {
        const auto [x0, y0] = at(row, column);
        const auto [x1, y1] = at(toRow, toColumn);
        cairo_move_to(cr, x0, y0);
        cairo_line_to(cr, x1, y1);
    };
    for (int row = 0; row < kGlyphRows; ++row)
        for (int column = 0; column < kGlyphColumns; ++column) {
            if (!marked(glyph, row, column)) continue;
            bool joined = false;
            for (const auto& [dr, dc] : {std::pair{0, 1}, {1, 0}, {1, 1}, {1, -1}}) {
                if (!marked(glyph, row + dr, column + dc)) continue;
                const bool diagonal = dr != 0 && dc != 0;
                if (diagonal &&
                    (marked(glyph, row + dr, column) || marked(glyph, row, column + dc)))
                    continue;
                segment(row, column, row + dr, column + dc);
                joined = true;
            }
            const bool joinedFromAbove =
                marked(glyph, row, column - 1) || marked(glyph, row - 1, column) ||
                marked(glyph, row - 1, column - 1) || marked(glyph, row - 1, column + 1);
            if (!joined && !joinedFromAbove) segment(row, column, row, column);
        }
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_GRAY);
    cairo_set_line_width(cr, step * 1.05);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_stroke(cr);
}

char initialOf(const std::string& name) {
    for (char c : name)
        if (c != ' ') return c;
    return '?';
}

}  // namespace

IconColor iconColorFor(const std::string& bundleIdentifier) {
    const std::uint32_t hash = fnv1a(bundleIdentifier);
    // Mid saturation and brightness keep white letters readable on every hue.
    return fromHsv(hash % 360, 0.55 + (hash >> 9) % 20 / 100.0, 0.72 + (hash >> 17) % 16 / 100.0);
}

plat::ImagePtr drawAppIcon(const std::string& bundleIdentifier, const std::string& name, int pixels,
                           double scale) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixels, pixels);
    cairo_t* cr = cairo_create(surface);
    const IconColor color = iconColorFor(bundleIdentifier);
    roundedSquare(cr, pixels);
    cairo_set_source_rgb(cr, color.red, color.green, color.blue);
    cairo_fill(cr);
    drawGlyph(cr, glyphFor(initialOf(name)), pixels);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    return plat::Image::adopt(surface, scale);
}

}  // namespace velto::device
