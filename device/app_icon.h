#pragma once

#include <string>

#include "platform/ui/image.h"

namespace velto::device {

// The colour an application's icon is filled with: a stable function of its bundle identifier,
// so the same application looks the same on every device and every run.
struct IconColor {
    double red, green, blue;
};
IconColor iconColorFor(const std::string& bundleIdentifier);

// A home-screen style icon: a rounded square in the application's colour with the first
// letter of its name in white, pixels × pixels at the given scale.
plat::ImagePtr drawAppIcon(const std::string& bundleIdentifier, const std::string& name, int pixels,
                           double scale);

}  // namespace velto::device
