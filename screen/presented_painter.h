#pragma once

#include <cairo.h>

#include "platform/ui/view_controller.h"
#include "screen/screenshot.h"
#include "screen/text.h"

namespace screen {

// Draws a presented controller over the page: alerts, action sheets (popovers on an iPad),
// the photo picker and any other controller as a sheet with its title.
void paintPresented(cairo_t* cr, TextPainter& text, const plat::ViewController& presented,
                    Screenshot& shot);

}  // namespace screen
