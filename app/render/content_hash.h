#pragma once

#include <string>

namespace plat {
class Image;
}

namespace velto::app {

// A short fingerprint of a picture's pixels, so that a script sees a picture change without
// the picture: the first 12 hex digits of the SHA-256 of the pixel width and height (32-bit
// big-endian each) followed by every pixel, row by row, as a big-endian premultiplied ARGB
// word (alpha 0xff for a picture without alpha). The same pixels hash the same whatever file
// or archive they came from.
std::string pixelHash(const plat::Image& image);

}  // namespace velto::app
