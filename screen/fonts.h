#pragma once

#include <pango/pango.h>

namespace screen {

// The one font every picture is drawn in: Inter, loaded into a private fontconfig
// configuration that holds nothing else, so that a machine's own fonts and rules never change
// a picture. Made on first use; throws std::runtime_error when Inter is not installed.
PangoFontMap* interFontMap();

}  // namespace screen
