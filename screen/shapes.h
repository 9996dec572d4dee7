#pragma once

#include <cairo.h>

#include "platform/foundation/geometry.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"
#include "screen/look.h"
#include "screen/text.h"

namespace screen {

Rgba rgbaOf(const plat::Color& color);
void setColor(cairo_t* cr, const Rgba& color);
void fillRect(cairo_t* cr, plat::Rect rect, const Rgba& color);
// A rectangle whose top and/or bottom corners are rounded.
void roundedPath(cairo_t* cr, plat::Rect rect, double radius, bool top = true, bool bottom = true);
// Draws an image scaled into the box, keeping its aspect and its own alpha; answers the box it
// took.
plat::Rect drawImage(cairo_t* cr, const plat::Image& image, plat::Rect box);
// The disclosure chevron with its right edge at x, centred on y.
void drawChevron(cairo_t* cr, double right, double centerY, const Rgba& color);
// The back chevron of a navigation bar, its left edge at x.
void drawBackChevron(cairo_t* cr, double left, double centerY, const Rgba& color);
// A UISwitch (51×31 points) with its top-left corner at origin. Off, its track is filled
// with offColor, or only outlined with it as before iOS 13.
void drawSwitch(cairo_t* cr, plat::Point origin, bool on, const Rgba& onColor, const Rgba& offColor,
                bool outlinedOff);
inline constexpr double kSwitchWidth = 51, kSwitchHeight = 31;
bool isDark(const Rgba& color);

}  // namespace screen
