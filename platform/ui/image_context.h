#pragma once

#include "platform/foundation/geometry.h"
#include "platform/ui/image.h"

typedef struct _cairo cairo_t;

namespace plat {

// UIKit's bitmap image contexts: a per-thread stack; drawing goes to the top one.
// Coordinates are in points with the origin at the top left, as UIKit draws.

// UIGraphicsBeginImageContextWithOptions. A scale of 0 means the main screen's scale (1 when
// no process is current). The bitmap is size × scale pixels, rounded. A context that is not
// opaque starts fully transparent; an opaque one starts black, as UIKit's alpha-less bitmaps
// do. A size with no pixels still pushes a context, so Begin/End stay paired, but nothing
// can be drawn into it and no image comes out of it.
void UIGraphicsBeginImageContextWithOptions(Size size, bool opaque, double scale);
// UIGraphicsBeginImageContext: not opaque, scale 1.
void UIGraphicsBeginImageContext(Size size);
// A snapshot of the current context's pixels, at its scale, with an alpha channel unless the
// context is opaque; nullptr without a context.
ImagePtr UIGraphicsGetImageFromCurrentImageContext();
// Pops the current context; does nothing without one.
void UIGraphicsEndImageContext();
// The cairo context for drawing in points, or nullptr (UIGraphicsGetCurrentContext).
cairo_t* UIGraphicsGetCurrentContext();

// -[UIImage drawInRect:]: the whole image stretched to fill the rectangle (aspect not kept),
// composited over what is there. A null image, or no context, draws nothing.
void drawInRect(const Image* image, Rect rect);

// The pixels inside the circle inscribed in the image (diameter = the shorter side, centred);
// everything outside it becomes transparent. Same pixel size and scale.
ImagePtr imageClippedToCircle(const Image& image);
// The centred square of the image, side = the shorter side, at the same scale.
ImagePtr imageCroppedToSquare(const Image& image);

}  // namespace plat
