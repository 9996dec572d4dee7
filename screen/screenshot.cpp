#include "screen/screenshot.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "screen/bars.h"
#include "screen/png_encoder.h"
#include "screen/presented_painter.h"
#include "screen/shapes.h"
#include "screen/sidebar_painter.h"
#include "screen/status_bar.h"
#include "screen/table_painter.h"
#include "screen/text.h"

namespace screen {

namespace {

// The page's table laid out from `top` in the look's column, measured with a scratch surface
// scaled as the picture is, so that text measures as it does when drawn.
TableLayout measuredLayout(plat::ListController& page, const Look& look, double top) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1);
    cairo_t* cr = cairo_create(surface);
    cairo_scale(cr, look.scale, look.scale);
    TableLayout layout;
    try {
        TextPainter text(cr);
        layout = TableLayout::of(text, page, look, top);
    } catch (...) {
        cairo_destroy(cr);
        cairo_surface_destroy(surface);
        throw;
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return layout;
}

// Where the table starts on screen, scrolled by `offset`; the table scrolls under the bars.
double tableTop(const Look& look, double offset) {
    return look.statusBar + look.navigationBar - offset;
}

// The whole table laid out from the top of an unbounded column: where every row and footer
// lands before any scrolling.
TableLayout unscrolledLayout(plat::ListController& page, const Look& look) {
    Look unbounded = look;
    unbounded.height = std::numeric_limits<double>::max() / 4;
    return measuredLayout(page, unbounded, tableTop(look, 0));
}

// Where the table's last group or footer ends.
double tableBottom(const TableLayout& layout) {
    double bottom = 0;
    for (const LaidSection& section : layout.sections) {
        bottom = std::max(bottom, section.ground.origin.y + section.ground.size.height);
        if (section.footer)
            bottom = std::max(bottom,
                              section.footer->frame.origin.y + section.footer->frame.size.height);
    }
    return bottom;
}

// The gap Settings leaves under a table's last group.
constexpr double kTableEndGap = 35;

}  // namespace

TableLayout layoutOnScreen(plat::ListController& page, const Look& look) {
    return measuredLayout(page, look, tableTop(look, page.contentOffsetY()));
}

std::optional<double> offsetShowingRow(plat::ListController& page, const Look& look,
                                       std::size_t index) {
    const TableLayout layout = unscrolledLayout(page, look);
    const LaidRow* row = layout.row(index);
    if (!row) return std::nullopt;
    const double top = look.statusBar + look.navigationBar;
    const double rowTop = row->frame.origin.y, rowBottom = rowTop + row->frame.size.height;
    const double offset = page.contentOffsetY();
    // Scrolled past it: it comes down to the top; below the screen: up to the bottom.
    if (rowTop - offset < top) return rowTop - top;
    if (rowBottom - offset > look.contentBottom()) return rowBottom - look.contentBottom();
    return offset;
}

Screenshot drawScreenshot(plat::ListController& page, const Look& screen,
                          const SettingsEntry& entry, bool full) {
    Look look = screen;
    if (full)
        look.height = std::max(look.height, tableBottom(unscrolledLayout(page, look)) +
                                                kTableEndGap + look.homeIndicator);
    const double offset = full ? 0 : page.contentOffsetY();
    Screenshot shot;
    shot.look = look;
    const int width = static_cast<int>(std::lround(look.width * look.scale));
    const int height = static_cast<int>(std::lround(look.height * look.scale));
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        throw std::runtime_error("cannot make a picture of that size");
    }
    shot.image = plat::Image::adopt(surface, look.scale);
    cairo_t* cr = cairo_create(surface);
    cairo_scale(cr, look.scale, look.scale);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_GRAY);
    try {
        TextPainter text(cr);
        fillRect(cr, plat::Rect{{0, 0}, {look.width, look.height}}, look.background);
        // The table scrolls under the bars, so they are drawn over it.
        shot.table = TableLayout::of(text, page, look, tableTop(look, offset));
        paintTable(cr, text, page, shot.table, look);
        shot.backButton = paintNavigationBar(cr, text, page, look);
        const Rgba pageInk = barInk(page, look);
        if (look.sidebarWidth > 0) shot.selectedEntry = paintSidebar(cr, text, look, entry);
        paintStatusBar(cr, text, look, look.sidebarWidth > 0 ? kBlack : pageInk, pageInk);
        if (auto presented = plat::frontmostPresented(page))
            paintPresented(cr, text, *presented, shot);
        paintHomeIndicator(cr, look);
    } catch (...) {
        cairo_destroy(cr);
        throw;
    }
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    return shot;
}

plat::Bytes pngBytes(const Screenshot& shot) {
    if (!shot.image) return {};
    return encodeOpaquePng(shot.image->surface());
}

}  // namespace screen
