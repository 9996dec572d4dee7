#pragma once

#include <cairo.h>

#include "platform/prefs/list_controller.h"
#include "screen/look.h"
#include "screen/text.h"

namespace screen {

// The status bar and the navigation bar of the page: its bar colour, its title or title
// image, its back button. Answers where the content starts.
double paintBars(cairo_t* cr, TextPainter& text, const plat::ListController& page,
                 const Look& look);
// The home indicator of devices without a home button.
void paintHomeIndicator(cairo_t* cr, const Look& look);

}  // namespace screen
