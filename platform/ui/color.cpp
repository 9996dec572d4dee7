#include "platform/ui/color.h"
#include "platform/ui/archive_codecs.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace plat {

namespace {

// Whatever holds a colour links this file, and can then archive and unarchive it.
[[maybe_unused]] const bool kColoursArchive = (registerArchiveCodec(colorArchiveCodec()), true);

int toByte(double component) {
    return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255.0));
}

std::string formatComponent(double d) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", d);
    return buffer;
}

}  // namespace

std::shared_ptr<Color> Color::colorWithRGBA(double red, double green, double blue, double alpha) {
    return std::shared_ptr<Color>(new Color(red, green, blue, alpha, false));
}

std::shared_ptr<Color> Color::colorWithWhite(double white, double alpha) {
    return std::shared_ptr<Color>(new Color(white, white, white, alpha, true));
}

std::shared_ptr<Color> Color::clearColor() {
    return colorWithWhite(0, 0);
}
std::shared_ptr<Color> Color::whiteColor() {
    return colorWithWhite(1, 1);
}
std::shared_ptr<Color> Color::blackColor() {
    return colorWithWhite(0, 1);
}

std::string Color::hexString() const {
    char buffer[10];
    std::snprintf(buffer, sizeof buffer, "#%02X%02X%02X%02X", toByte(red_), toByte(green_),
                  toByte(blue_), toByte(alpha_));
    return buffer;
}

std::string Color::description() const {
    if (grey_)
        return "UIExtendedGrayColorSpace " + formatComponent(red_) + " " + formatComponent(alpha_);
    return "UIExtendedSRGBColorSpace " + formatComponent(red_) + " " + formatComponent(green_) +
           " " + formatComponent(blue_) + " " + formatComponent(alpha_);
}

// As -[UIColor isEqual:]: a grey colour never equals an RGB one, even with the same look.
bool operator==(const Color& a, const Color& b) {
    return a.grey_ == b.grey_ && a.red_ == b.red_ && a.green_ == b.green_ && a.blue_ == b.blue_ &&
           a.alpha_ == b.alpha_;
}

}  // namespace plat
