#pragma once

#include <array>

namespace velto::device {

// A letter's skeleton on a 5 × 7 grid: one string of '#' and '.' per row, top row first;
// icons draw it as strokes joining the marked cells.
using Glyph = std::array<const char*, 7>;

inline constexpr int kGlyphColumns = 5;
inline constexpr int kGlyphRows = 7;

// The glyph for an ASCII letter (either case) or digit. Anything else gets a plain dot, so an
// application whose name starts with a symbol still gets a mark on its icon. Icons are drawn
// from these rather than from a font because the machines that build demo devices often have
// no fonts installed at all.
const Glyph& glyphFor(char c);

}  // namespace velto::device
