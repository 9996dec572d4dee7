#include "screen/look.h"

#include "platform/system/device_models.h"

namespace screen {

namespace {

constexpr Rgba hex(unsigned rgb, double alpha = 1) {
    return Rgba{((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0,
                alpha};
}

// Settings' primary column: wider on the largest iPads, as the split view makes it.
double sidebarWidthFor(double screenWidth) {
    return screenWidth >= 1000 ? 375 : 320;
}

}  // namespace

Look Look::forDevice(const plat::DeviceFacts& facts) {
    Look look;
    const plat::DeviceModel& model = plat::modelOf(facts);
    look.width = model.width;
    look.height = model.height;
    look.scale = facts.screenScale > 0 ? facts.screenScale : model.scale;
    look.iPad = facts.family == plat::DeviceFamily::iPad;
    look.homeButton = model.homeButton;
    look.cellular = facts.family == plat::DeviceFamily::iPhone;
    look.statusBar = model.statusBar;
    look.homeIndicator = model.homeButton ? 0 : model.bottomInset;
    if (look.iPad) look.sidebarWidth = sidebarWidthFor(model.width);
    look.insetGrouped = facts.systemVersionAtLeast(13);
    if (look.insetGrouped) {
        look.background = hex(0xF2F2F7);
        look.barBackground = hex(0xF9F9F9);
        look.separator = hex(0xC6C6C8);
        look.secondaryText = hex(0x6D6D72);
        look.chevron = hex(0xC4C4C7);
        look.tint = hex(0x007AFF);
        look.switchOn = hex(0x34C759);
        look.switchOff = hex(0xE9E9EB);
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
        look.switchOff = hex(0xE5E5EA);
        look.outlinedOffSwitch = true;
        look.destructive = hex(0xFF3B30);
    }
    return look;
}

}  // namespace screen
