#include "screen/look.h"

namespace screen {

namespace {

constexpr Rgba hex(unsigned rgb, double alpha = 1) {
    return Rgba{((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0,
                alpha};
}

}  // namespace

Look Look::forDevice(const plat::DeviceFacts& facts) {
    Look look;
    look.iPad = facts.family == plat::DeviceFamily::iPad;
    look.scale = facts.screenScale > 0 ? facts.screenScale : (look.iPad ? 2 : 3);
    look.insetGrouped = facts.systemVersionAtLeast(13);
    if (look.iPad) {
        look.width = 820;
        look.height = 1180;
        look.statusBar = 24;
        look.homeIndicator = 20;
        look.margin = 40;
    }
    if (look.insetGrouped) {
        look.background = hex(0xF2F2F7);
        look.barBackground = hex(0xF9F9F9);
        look.separator = hex(0xC6C6C8);
        look.secondaryText = hex(0x6D6D72);
        look.chevron = hex(0xC4C4C7);
        look.tint = hex(0x007AFF);
        look.switchOn = hex(0x34C759);
        look.switchOffBorder = hex(0xE9E9EA);
        look.destructive = hex(0xFF3B30);
    } else {
        look.margin = 0;
        look.cellInset = 15;
        look.cornerRadius = 0;
        look.background = hex(0xEFEFF4);
        look.barBackground = hex(0xF7F7F7);
        look.separator = hex(0xC8C7CC);
        look.secondaryText = hex(0x6D6D72);
        look.chevron = hex(0xC7C7CC);
        look.tint = hex(0x007AFF);
        look.switchOn = hex(0x4CD964);
        look.switchOffBorder = hex(0xE5E5EA);
        look.destructive = hex(0xFF3B30);
    }
    return look;
}

}  // namespace screen
