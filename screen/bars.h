#pragma once

#include <cairo.h>

#include "platform/prefs/list_controller.h"
#include "screen/look.h"
#include "screen/text.h"

namespace screen {

// The colour of what is drawn on the page's bar: white on a dark bar, black on a light one.
Rgba barInk(const plat::ListController& page, const Look& look);

// The navigation bar of the page over its column, its colour running up under the status bar:
// its title or title image and its back button. The bundle's root page is reached from
// Settings' own list, so on a phone it goes back to "Settings"; beside the sidebar of an iPad
// it has no back button. Answers where the back button is, when there is one.
std::optional<plat::Rect> paintNavigationBar(cairo_t* cr, TextPainter& text,
                                             const plat::ListController& page, const Look& look);
// The home indicator of devices without a Home button, in the middle of the bottom inset.
void paintHomeIndicator(cairo_t* cr, const Look& look);

}  // namespace screen
