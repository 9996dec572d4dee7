#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

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

// A button of what is presented over the page, by its title, where it was drawn.
struct ButtonFrame {
    std::string title;
    plat::Rect frame;
};

// A picture and where things landed in it, in points.
struct Screenshot {
    plat::ImagePtr image;  // at the device's scale
    Look look;
    TableLayout table;  // the page's rows, headers and footers
    // On an iPad, the bundle's row in Settings' sidebar.
    std::optional<plat::Rect> selectedEntry;
    std::optional<PopoverFrame> popover;
    // The navigation bar's back button, when the page has one.
    std::optional<plat::Rect> backButton;
    // The presented controller's buttons: an alert's or sheet's actions, a sheet's Cancel.
    std::vector<ButtonFrame> buttons;
};

// Draws the page as the Settings app shows it on top of its navigation stack, with what it
// presents over it; on an iPad beside Settings' own list, where `entry` is the bundle's row.
// Reads the platform model only: the held rows, the cells the page's hooks configure (asked
// for as the table asks when it draws), the navigation item and the presented controllers.
// May raise what the page's own hooks raise.
// The table starts scrolled as far as the page's content offset says. `full`: the picture is as
// tall as the page's rows, from the top, instead of one screen.
Screenshot drawScreenshot(plat::ListController& page, const Look& look,
                          const SettingsEntry& entry = {}, bool full = false);

// Where drawScreenshot (one screen, scrolled as the page is) puts the page's rows, without
// drawing them: for those who point at rows, such as a tap at a point or a record of frames.
// May raise what the page's own hooks raise.
TableLayout layoutOnScreen(plat::ListController& page, const Look& look);

// The content offset that brings the row at `index` of the page's list on screen, moving the
// rows as little as they must from where the page is scrolled now; nullopt when the page
// shows no such row.
std::optional<double> offsetShowingRow(plat::ListController& page, const Look& look,
                                       std::size_t index);

// The picture as PNG bytes: the same page gives the same bytes on every run.
plat::Bytes pngBytes(const Screenshot& shot);

}  // namespace screen
