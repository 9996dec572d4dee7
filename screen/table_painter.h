#pragma once

#include <cairo.h>

#include "platform/prefs/list_controller.h"
#include "screen/table_layout.h"
#include "screen/text.h"

namespace screen {

// Draws a laid-out table: group headers and footers, rows with their icons, labels, values,
// chevrons and switches, custom cells at their own height. Nothing is drawn below the
// layout's visible part, so the home indicator never covers a row.
void paintTable(cairo_t* cr, TextPainter& text, plat::ListController& page,
                const TableLayout& layout, const Look& look);

}  // namespace screen
