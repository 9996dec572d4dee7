#include "screen/screenshot.h"

#include <cairo.h>

#include <cmath>
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

Screenshot drawScreenshot(plat::ListController& page, const Look& look,
                          const SettingsEntry& entry) {
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
        shot.table = TableLayout::of(text, page, look, look.statusBar + look.navigationBar);
        paintTable(cr, text, page, shot.table, look);
        paintNavigationBar(cr, text, page, look);
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
