#pragma once

#include <cstddef>
#include <optional>

#include "platform/foundation/geometry.h"
#include "platform/foundation/value.h"
#include "platform/prefs/list_controller.h"
#include "platform/ui/image.h"
#include "screen/look.h"
#include "screen/sidebar_painter.h"
#include "screen/table_layout.h"

namespace screen {

struct PopoverFrame {
    plat::Rect box;
    plat::Point arrowTip;
    std::optional<std::size_t> anchorRow;
};

// A picture and where things landed in it, in points.
struct Screenshot {
    plat::ImagePtr image;  // at the device's scale
    Look look;
    TableLayout table;  // the page's rows, headers and footers
    // On an iPad, the bundle's row in Settings' sidebar.
    std::optional<plat::Rect> selectedEntry;
    std::optional<PopoverFrame> popover;
};

// Draws the page as the Settings app shows it on top of its navigation stack, with what it
// presents over it; on an iPad beside Settings' own list, where `entry` is the bundle's row.
// Reads the platform model only: the held rows, the cells the page's hooks configure (asked
// for as the table asks when it draws), the navigation item and the presented controllers.
// May raise what the page's own hooks raise.
Screenshot drawScreenshot(plat::ListController& page, const Look& look,
                          const SettingsEntry& entry = {});

// The picture as PNG bytes: the same page gives the same bytes on every run.
plat::Bytes pngBytes(const Screenshot& shot);

}  // namespace screen
