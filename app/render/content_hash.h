#pragma once

#include <string>

namespace plat {
class Image;
}

namespace velto::app {

// A short fingerprint of a picture, so that a script sees a picture change without the
// picture: the first 12 hex digits of the SHA-256 of its PNG representation. A picture read
// from an 8-bit RGB or RGBA PNG is that file, so its icon is hashed without being decoded;
// any other picture is encoded once. Different pixels always hash differently; the same
// pixels written by another encoder may not hash the same.
std::string pictureHash(const plat::Image& image);

}  // namespace velto::app
