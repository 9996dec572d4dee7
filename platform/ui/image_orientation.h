#pragma once

#include <cstddef>

typedef struct _cairo_surface cairo_surface_t;

namespace plat {

// The orientation a camera wrote into a JPEG's EXIF block (TIFF values 1 to 8: 1 upright,
// 3 upside down, 6 to be turned a quarter clockwise, 8 a quarter anticlockwise, 2, 4, 5 and 7
// their mirror images). `app1` is the APP1 segment's payload, starting at "Exif\0\0". 1 when
// there is no orientation or the block does not parse.
int exifOrientation(const unsigned char* app1, std::size_t length);

// A new ARGB32 surface with the pixels turned and mirrored so that a picture stored with the
// orientation stands upright, as UIKit draws it (a quarter turn swaps width and height).
// Orientation 1 or an unknown value gives a plain copy. The caller owns the result.
cairo_surface_t* uprightCopy(cairo_surface_t* source, int orientation);

}  // namespace plat
