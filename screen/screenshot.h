#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/foundation/geometry.h"
#include "platform/foundation/value.h"
#include "platform/prefs/list_controller.h"
#include "platform/ui/image.h"
#include "screen/look.h"

namespace screen {

// Where things landed in a picture, in points.
struct RowFrame {
    std::size_t index = 0;  // the row's index in the page's list
    plat::Rect frame;
    std::shared_ptr<plat::TableCell> cell;
    // The cell the row held before this picture asked for a fresh one: what a popover shown
    // earlier points at.
    std::shared_ptr<plat::TableCell> earlierCell;
};

struct TextFrame {
    std::size_t group = 0;  // the section the text belongs to
    plat::Rect frame;
};

struct PopoverFrame {
    plat::Rect box;
    plat::Point arrowTip;
    std::optional<std::size_t> anchorRow;
};

struct Screenshot {
    plat::ImagePtr image;  // at the device's scale
    Look look;
    std::vector<RowFrame> rows;
    std::vector<TextFrame> footers;
    std::optional<PopoverFrame> popover;
};

// Draws the page as the Settings app shows it on top of its navigation stack, with what it
// presents over it. Reads the platform model only: the held rows, the cells the page's hooks
// configure (asked for as the table asks when it draws), the navigation item and the
// presented controllers. May raise what the page's own hooks raise.
Screenshot drawScreenshot(plat::ListController& page, const Look& look);

// The picture as PNG bytes: the same page gives the same bytes on every run.
plat::Bytes pngBytes(const Screenshot& shot);

}  // namespace screen
