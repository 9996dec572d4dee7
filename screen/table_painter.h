#pragma once

#include <cairo.h>

#include "platform/prefs/list_controller.h"
#include "screen/screenshot.h"
#include "screen/text.h"

namespace screen {

// Draws the page's table from `top` down: group headers and footers, rows with their icons,
// labels, values, chevrons and switches, custom cells at their own height.
void paintTable(cairo_t* cr, TextPainter& text, plat::ListController& page, double top,
                Screenshot& shot);

}  // namespace screen
