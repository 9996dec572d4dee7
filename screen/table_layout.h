#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/geometry.h"
#include "platform/prefs/list_controller.h"
#include "platform/ui/image.h"
#include "screen/look.h"
#include "screen/text.h"

namespace screen {

// One row where the table puts it, with what it shows that decides its place.
struct LaidRow {
    std::size_t index = 0;  // in the page's list
    plat::Rect frame;
    plat::SpecifierPtr specifier;
    plat::TableCellPtr cell;
    // The cell the row held before the layout asked for a fresh one: what a popover shown
    // earlier points at.
    plat::TableCellPtr earlierCell;
    plat::ImagePtr icon;
    bool first = false, last = false;
};

struct LaidText {
    std::string text;
    plat::Rect frame;
};

struct LaidSection {
    std::size_t section = 0;
    std::optional<LaidText> header;  // already in capitals
    std::optional<LaidText> footer;
    plat::Rect ground;  // the group's white ground; empty for a group without rows
    // Where the labels of the group's rows start: after the icon column when any row of the
    // group has an icon, so rows without one line up with the others.
    double textX = 0;
    std::vector<LaidRow> rows;
};

// The page's table laid out in its column from `top` down, as far as the screen shows it:
// the one place that knows where each row, header and footer of the page is drawn. Asks the
// page for its cells as the table does when it shows them.
struct TableLayout {
    std::vector<LaidSection> sections;
    plat::Rect visible;  // the part of the column the table shows

    static TableLayout of(TextPainter& text, plat::ListController& page, const Look& look,
                          double top);

    // Where the row at this index of the page's list is drawn; null when the layout stopped
    // above it, below the screen's end.
    const LaidRow* row(std::size_t index) const;
};

inline constexpr double kIconSize = 29;

}  // namespace screen
