#pragma once

#include "platform/system/device_facts.h"
#include "screen/text.h"

namespace screen {

// What the device's model and system version decide about a picture: its size and scale, the
// bars and insets of the screen, where the page's column lies, and the Settings app's look
// (grouped tables before iOS 13, inset grouped from 13 on).
struct Look {
    double width = 390, height = 844, scale = 3;
    bool iPad = false;
    bool homeButton = false;
    bool cellular = true;  // the status bar shows signal bars
    bool insetGrouped = true;
    double statusBar = 47;
    double homeIndicator = 34;  // the bottom inset the indicator floats in; 0 with a Home button
    double navigationBar = 44;
    // On an iPad Settings is a split view: its own list in a sidebar this wide on the left, the
    // bundle's pages in the column right of it. 0: the page has the whole width.
    double sidebarWidth = 0;
    double margin = 20;     // between the column's edge and an inset group
    double cellInset = 16;  // between a cell's edge and its content
    double cornerRadius = 10;

    Rgba background;
    Rgba barBackground;
    Rgba separator;
    Rgba secondaryText;
    Rgba chevron;
    Rgba tint;
    Rgba switchOn;
    Rgba switchOff;  // the off track: its fill from iOS 13 on, its outline before
    bool outlinedOffSwitch = false;
    Rgba destructive;

    static Look forDevice(const plat::DeviceFacts& facts);

    // The column the page is drawn in, from the top of the screen to its bottom.
    double pageX() const { return sidebarWidth; }
    double pageWidth() const { return width - sidebarWidth; }
    // Where the table may show rows: above the home indicator's inset, as Settings scrolls.
    double contentBottom() const { return height - homeIndicator; }
};

constexpr Rgba kWhite{1, 1, 1, 1};
constexpr Rgba kBlack{0, 0, 0, 1};

}  // namespace screen
