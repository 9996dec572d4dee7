#pragma once

// Reading a screenshot's colours at points, for the tests that check where things were drawn.

#include <cstdint>
#include <cstdlib>

#include "screen/screenshot.h"

namespace shottest {

struct Rgb {
    int r, g, b;
};

constexpr Rgb kWhite{255, 255, 255};

// The colour at a point, in points; alpha is left out, since a screenshot is opaque.
inline Rgb at(const screen::Screenshot& shot, double x, double y) {
    const std::uint32_t p = shot.image->pixel(static_cast<int>(x * shot.look.scale),
                                              static_cast<int>(y * shot.look.scale));
    return Rgb{int((p >> 16) & 0xff), int((p >> 8) & 0xff), int(p & 0xff)};
}

inline bool near(Rgb a, Rgb b, int tolerance = 6) {
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance &&
           std::abs(a.b - b.b) <= tolerance;
}

// Dark enough in every channel to be text or the home indicator.
inline bool ink(Rgb p, int below = 160) {
    return p.r < below && p.g < below && p.b < below;
}

}  // namespace shottest
