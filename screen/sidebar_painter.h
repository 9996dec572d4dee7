#pragma once

#include <cairo.h>

#include <string>

#include "platform/foundation/geometry.h"
#include "platform/ui/image.h"
#include "screen/look.h"
#include "screen/text.h"

namespace screen {

// The row the bundle has in Settings' own list: its label and icon.
struct SettingsEntry {
    std::string label;
    plat::ImagePtr icon;  // null: a plain tile with the label's initial
};

// Settings' own list in the sidebar of an iPad: its title, the search field, the system's
// rows (plain tiles, no real icons) and the bundle's row, selected. Answers the selected
// row's frame.
plat::Rect paintSidebar(cairo_t* cr, TextPainter& text, const Look& look,
                        const SettingsEntry& entry);

}  // namespace screen
