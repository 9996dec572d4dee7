#pragma once

#include <cairo.h>

#include "screen/look.h"
#include "screen/text.h"

namespace screen {

// The status bar as the device shows it: the time; on an iPad the date beside it; signal
// bars on a phone; Wi-Fi; the battery, full. On a phone with a Home button the time sits in
// the middle and the battery's percentage beside it. `leftInk` colours what lies over the
// left side (the sidebar on an iPad), `rightInk` the rest.
void paintStatusBar(cairo_t* cr, TextPainter& text, const Look& look, const Rgba& leftInk,
                    const Rgba& rightInk);

}  // namespace screen
