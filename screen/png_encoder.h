#pragma once

#include <cairo.h>

#include "platform/foundation/value.h"

namespace screen {

// An opaque picture as an RGB PNG. Tuned for speed over size (fast compression, the Sub
// filter that suits flat table colours), and with no time or text chunks, so the same pixels
// always give the same bytes.
plat::Bytes encodeOpaquePng(cairo_surface_t* surface);

}  // namespace screen
