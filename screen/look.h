#pragma once

#include "platform/system/device_facts.h"
#include "screen/text.h"

namespace screen {

// What the device's screen and system version decide about a picture: size, scale, and the
// Settings app's look (grouped tables before iOS 13, inset grouped from 13 on).
struct Look {
    double width = 390, height = 844, scale = 3;
    bool iPad = false;
    bool insetGrouped = true;
    double statusBar = 47;
    double homeIndicator = 34;
    double navigationBar = 44;
    double margin = 20;     // between the screen edge and an inset group
    double cellInset = 16;  // between a cell's edge and its content
    double cornerRadius = 10;

    Rgba background;
    Rgba barBackground;
    Rgba separator;
    Rgba secondaryText;
    Rgba chevron;
    Rgba tint;
    Rgba switchOn;
    Rgba switchOffBorder;
    Rgba destructive;

    static Look forDevice(const plat::DeviceFacts& facts);
};

constexpr Rgba kWhite{1, 1, 1, 1};
constexpr Rgba kBlack{0, 0, 0, 1};

}  // namespace screen
