#pragma once

#include <cairo.h>

#include "platform/foundation/value.h"

namespace plat {

// An ARGB32 surface as PNG bytes: RGBA with straight alpha when `alpha`, RGB otherwise. cairo's
// own writer drops the alpha channel of a surface whose pixels are all opaque; UIKit keeps it
// for any image that has one, and readers of the files may rely on the channel being there.
// Empty when the surface has no pixels or the encoder fails.
Bytes encodePng(cairo_surface_t* surface, bool alpha);

// The same kind of file, written for speed rather than size: every row with the one filter
// that suits flat drawings, and quick compression. For pictures made by the thousand, such as
// the icons of a generated device, where the default search over every filter is most of the
// cost.
Bytes encodePngQuickly(cairo_surface_t* surface, bool alpha);

}  // namespace plat
