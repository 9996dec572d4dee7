#pragma once

#include <cairo.h>

#include <optional>

#include "platform/foundation/geometry.h"
#include "platform/ui/activity_view_controller.h"
#include "screen/look.h"
#include "screen/text.h"

namespace screen {

// The share sheet's content: a preview of what is shared (the picture and the first words of
// the text) with a close button, a row of app targets and a list of actions, all drawn with
// plain tiles and line glyphs. `closable` is false in an iPad's popover, which closes by a tap
// outside it. Answers where the close button is, when there is one.
double shareSheetHeight(const plat::ActivityViewController& sheet);
std::optional<plat::Rect> paintShareSheet(cairo_t* cr, TextPainter& text,
                                          const plat::ActivityViewController& sheet,
                                          const Look& look, plat::Rect box, bool closable);

}  // namespace screen
