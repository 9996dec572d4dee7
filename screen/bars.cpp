#include "screen/bars.h"

#include <algorithm>

#include "platform/ui/bar_button_item.h"
#include "platform/ui/navigation_controller.h"
#include "screen/shapes.h"

namespace screen {

namespace {

// The title the page's back button shows: the page below it, or Settings' own list for the
// bundle's root page.
std::optional<std::string> backTitle(const plat::ListController& page, const Look& look) {
    auto navigation = page.navigationController();
    if (!navigation) return std::nullopt;
    const auto& stack = navigation->viewControllers();
    if (!stack.empty() && stack.front().get() == &page)
        return look.sidebarWidth > 0 ? std::nullopt : std::optional<std::string>("Settings");
    for (std::size_t i = 1; i < stack.size(); ++i)
        if (stack[i].get() == &page) return stack[i - 1]->navigationItem().title().value_or("Back");
    return std::nullopt;
}

Rgba barColor(const plat::ListController& page, const Look& look) {
    const auto& item = page.navigationItem();
    return item.barTintColor() ? rgbaOf(*item.barTintColor()) : look.barBackground;
}

}  // namespace

Rgba barInk(const plat::ListController& page, const Look& look) {
    return isDark(barColor(page, look)) ? kWhite : kBlack;
}

std::optional<plat::Rect> paintNavigationBar(cairo_t* cr, TextPainter& text,
                                             const plat::ListController& page, const Look& look) {
    const auto& item = page.navigationItem();
    const Rgba bar = barColor(page, look);
    const bool dark = isDark(bar);
    const Rgba ink = barInk(page, look);
    const double left = look.pageX(), width = look.pageWidth();
    const double barTop = look.statusBar;
    const double bottom = barTop + look.navigationBar;

    // The bar's colour runs up under the status bar, over an opaque base as the bar is.
    fillRect(cr, plat::Rect{{left, 0}, {width, bottom}}, look.barBackground);
    fillRect(cr, plat::Rect{{left, 0}, {width, bottom}}, bar);
    fillRect(cr, plat::Rect{{left, bottom - 0.5}, {width, 0.5}}, Rgba{0, 0, 0, 0.3});

    const double middle = barTop + look.navigationBar / 2;
    double leftEnd = left + 8;
    std::optional<plat::Rect> backButton;
    if (auto back = backTitle(page, look)) {
        const Rgba tint = dark ? kWhite : look.tint;
        auto button = item.leftBarButtonItem();
        if (button && button->image()) {
            leftEnd = drawImage(cr, *button->image(), plat::Rect{{left + 8, middle - 15}, {40, 30}})
                          .origin.x +
                      40;
        } else {
            drawBackChevron(cr, left + 8, middle, tint);
            TextStyle style{17, Weight::Regular, tint, PANGO_ALIGN_LEFT, 1};
            const double textWidth = std::min(text.lineWidth(*back, style), width / 4);
            text.draw(*back, style, left + 27, middle - 10.5, textWidth + 1);
            leftEnd = left + 27 + textWidth;
        }
        backButton = plat::Rect{{left, barTop}, {leftEnd - left + 8, look.navigationBar}};
    }

    const double titleWidth = width - 2 * std::max(leftEnd - left + 8, 80.0);
    const double titleX = left + (width - titleWidth) / 2;
    if (auto image = item.titleImage()) {
        drawImage(cr, *image, plat::Rect{{titleX, middle - 14}, {titleWidth, 28}});
    } else if (item.title()) {
        TextStyle style{17, Weight::Semibold, ink, PANGO_ALIGN_CENTER, 1};
        text.draw(*item.title(), style, titleX, middle - 10.5, titleWidth);
    }
    return backButton;
}

void paintHomeIndicator(cairo_t* cr, const Look& look) {
    if (look.homeButton || look.homeIndicator <= 0) return;
    const double width = look.iPad ? 320 : 134;
    const double top = look.height - 8 - 5;
    setColor(cr, kBlack);
    roundedPath(cr, plat::Rect{{(look.width - width) / 2, top}, {width, 5}}, 2.5);
    cairo_fill(cr);
}

}  // namespace screen
