#include "screen/bars.h"

#include <algorithm>

#include "platform/ui/bar_button_item.h"
#include "platform/ui/navigation_controller.h"
#include "screen/shapes.h"

namespace screen {

namespace {

// The title of the page below this one, which the system back button shows.
std::optional<std::string> previousTitle(const plat::ListController& page) {
    auto navigation = page.navigationController();
    if (!navigation) return std::nullopt;
    const auto& stack = navigation->viewControllers();
    for (std::size_t i = 1; i < stack.size(); ++i)
        if (stack[i].get() == &page) return stack[i - 1]->navigationItem().title().value_or("Back");
    return std::nullopt;
}

void paintStatusBar(cairo_t* cr, TextPainter& text, const Look& look, const Rgba& ink) {
    TextStyle clock{15, Weight::Semibold, ink, PANGO_ALIGN_CENTER};
    if (look.iPad) {
        clock.size = 12;
        text.draw("9:41", clock, 20, 6, 40);
    } else {
        text.draw("9:41", clock, 30, 15, 60);
    }
    // The battery, full.
    const double right = look.width - (look.iPad ? 20 : 28);
    const double y = look.iPad ? 8 : 19;
    cairo_save(cr);
    setColor(cr, Rgba{ink.r, ink.g, ink.b, 0.4});
    cairo_set_line_width(cr, 1);
    roundedPath(cr, plat::Rect{{right - 26.5, y + 0.5}, {23, 11.5}}, 3);
    cairo_stroke(cr);
    fillRect(cr, plat::Rect{{right - 2.5, y + 4}, {1.5, 4.5}}, Rgba{ink.r, ink.g, ink.b, 0.4});
    setColor(cr, ink);
    roundedPath(cr, plat::Rect{{right - 24.5, y + 2.5}, {19, 7.5}}, 1.5);
    cairo_fill(cr);
    cairo_restore(cr);
}

}  // namespace

double paintBars(cairo_t* cr, TextPainter& text, const plat::ListController& page,
                 const Look& look) {
    const auto& item = page.navigationItem();
    const Rgba bar = item.barTintColor() ? rgbaOf(*item.barTintColor()) : look.barBackground;
    const bool dark = isDark(bar);
    const Rgba ink = dark ? kWhite : kBlack;
    const double barTop = look.statusBar;
    const double bottom = barTop + look.navigationBar;

    // The bar's colour runs up under the status bar, over an opaque base as the bar is.
    fillRect(cr, plat::Rect{{0, 0}, {look.width, bottom}}, look.barBackground);
    fillRect(cr, plat::Rect{{0, 0}, {look.width, bottom}}, bar);
    fillRect(cr, plat::Rect{{0, bottom - 0.5}, {look.width, 0.5}}, Rgba{0, 0, 0, 0.3});
    paintStatusBar(cr, text, look, ink);

    const double middle = barTop + look.navigationBar / 2;
    double leftEnd = 8;
    if (auto back = previousTitle(page)) {
        const Rgba tint = dark ? kWhite : look.tint;
        auto button = item.leftBarButtonItem();
        if (button && button->image()) {
            leftEnd =
                drawImage(cr, *button->image(), plat::Rect{{8, middle - 15}, {40, 30}}).origin.x +
                40;
        } else {
            drawBackChevron(cr, 8, middle, tint);
            TextStyle style{17, Weight::Regular, tint, PANGO_ALIGN_LEFT, 1};
            const double width = std::min(text.lineWidth(*back, style), look.width / 4);
            text.draw(*back, style, 27, middle - 10.5, width + 1);
            leftEnd = 27 + width;
        }
    }

    const double titleWidth = look.width - 2 * std::max(leftEnd + 8, 80.0);
    if (auto image = item.titleImage()) {
        drawImage(cr, *image,
                  plat::Rect{{(look.width - titleWidth) / 2, middle - 14}, {titleWidth, 28}});
    } else if (item.title()) {
        TextStyle style{17, Weight::Semibold, ink, PANGO_ALIGN_CENTER, 1};
        text.draw(*item.title(), style, (look.width - titleWidth) / 2, middle - 10.5, titleWidth);
    }
    return bottom;
}

void paintHomeIndicator(cairo_t* cr, const Look& look) {
    const double width = look.iPad ? 320 : 134;
    setColor(cr, kBlack);
    roundedPath(cr, plat::Rect{{(look.width - width) / 2, look.height - 8 - 5}, {width, 5}}, 2.5);
    cairo_fill(cr);
}

}  // namespace screen
