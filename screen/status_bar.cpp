#include "screen/status_bar.h"

#include <numbers>

#include "screen/shapes.h"

namespace screen {

namespace {

constexpr double kPi = std::numbers::pi;

Rgba faded(const Rgba& ink, double alpha) {
    return Rgba{ink.r, ink.g, ink.b, alpha};
}

// Four bars of rising height, all full; answers the left edge.
double drawSignal(cairo_t* cr, double right, double middle, const Rgba& ink) {
    const double bar = 3, gap = 1.5;
    for (int i = 0; i < 4; ++i) {
        const double height = 4 + 2.3 * i;
        const double x = right - (4 - i) * bar - (3 - i) * gap;
        roundedPath(cr, plat::Rect{{x, middle + 5.5 - height}, {bar, height}}, 0.8);
        setColor(cr, ink);
        cairo_fill(cr);
    }
    return right - 4 * bar - 3 * gap;
}

// The Wi-Fi fan: a dot under two arcs, opening upwards; answers the left edge.
double drawWifi(cairo_t* cr, double right, double middle, const Rgba& ink) {
    const double radius = 8.5;
    const double cx = right - radius, cy = middle + 5;
    cairo_save(cr);
    setColor(cr, ink);
    cairo_move_to(cr, cx, cy);
    cairo_arc(cr, cx, cy, 2.8, 1.25 * kPi, 1.75 * kPi);
    cairo_close_path(cr);
    cairo_fill(cr);
    cairo_set_line_width(cr, 2);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    for (double r : {5.6, radius}) {
        cairo_new_sub_path(cr);
        cairo_arc(cr, cx, cy, r, 1.25 * kPi, 1.75 * kPi);
        cairo_stroke(cr);
    }
    cairo_restore(cr);
    return right - 2 * radius;
}

// A full battery; answers the left edge.
double drawBattery(cairo_t* cr, double right, double middle, const Rgba& ink) {
    const double top = middle - 6;
    cairo_save(cr);
    setColor(cr, faded(ink, 0.4));
    cairo_set_line_width(cr, 1);
    roundedPath(cr, plat::Rect{{right - 26.5, top + 0.5}, {23, 11.5}}, 3);
    cairo_stroke(cr);
    fillRect(cr, plat::Rect{{right - 2.5, top + 4}, {1.5, 4.5}}, faded(ink, 0.4));
    setColor(cr, ink);
    roundedPath(cr, plat::Rect{{right - 24.5, top + 2.5}, {19, 7.5}}, 1.5);
    cairo_fill(cr);
    cairo_restore(cr);
    return right - 27;
}

// Text with its vertical middle at `middle`; answers where it ends on the side it grows to.
double label(TextPainter& text, const std::string& words, double size, Weight weight,
             const Rgba& ink, double x, double middle, bool fromRight) {
    const TextStyle style{size, weight, ink, PANGO_ALIGN_LEFT, 1};
    const double width = text.lineWidth(words, style) + 1;
    const double left = fromRight ? x - width : x;
    text.draw(words, style, left, middle - size * 0.62, width);
    return fromRight ? left : left + width;
}

}  // namespace

void paintStatusBar(cairo_t* cr, TextPainter& text, const Look& look, const Rgba& leftInk,
                    const Rgba& rightInk) {
    if (look.iPad) {
        const double middle = look.statusBar / 2;
        const double after =
            label(text, "9:41 AM", 12, Weight::Semibold, leftInk, 20, middle, false);
        label(text, "Mon Jun 7", 12, Weight::Semibold, leftInk, after + 5, middle, false);
        double right = drawBattery(cr, look.width - 20, middle, rightInk) - 4;
        right = label(text, "100%", 12, Weight::Semibold, rightInk, right, middle, true) - 6;
        drawWifi(cr, right, middle, rightInk);
        return;
    }
    if (look.homeButton) {
        const double middle = look.statusBar / 2;
        double left = 6;
        if (look.cellular)
            left = drawSignal(cr, left + 17, middle, leftInk) + 17 + 5;
        else
            left = label(text, "iPod", 12, Weight::Semibold, leftInk, left, middle, false) + 5;
        drawWifi(cr, left + 17, middle, leftInk);
        const TextStyle clock{12, Weight::Semibold, rightInk, PANGO_ALIGN_CENTER, 1};
        text.draw("9:41 AM", clock, look.width / 2 - 40, middle - 12 * 0.62, 80);
        const double right = drawBattery(cr, look.width - 6, middle, rightInk) - 4;
        label(text, "100%", 12, Weight::Semibold, rightInk, right, middle, true);
        return;
    }
    // A phone without a Home button: the time in the left ear, the rest in the right one.
    const double middle = look.statusBar * 0.53;
    const TextStyle clock{15, Weight::Semibold, leftInk, PANGO_ALIGN_CENTER, 1};
    text.draw("9:41", clock, 30, middle - 10, 60);
    double right = drawBattery(cr, look.width - 28, middle, rightInk) - 5;
    right = drawWifi(cr, right, middle, rightInk) - 5;
    if (look.cellular) drawSignal(cr, right, middle, rightInk);
}

}  // namespace screen
