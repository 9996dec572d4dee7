#include "platform/ui/font.h"

#include <cstdio>

namespace plat {

std::shared_ptr<Font> Font::systemFontOfSize(double pointSize) {
    return fontWithName(kSystemFontName, pointSize);
}

std::shared_ptr<Font> Font::fontWithName(const std::string& name, double pointSize) {
    return std::shared_ptr<Font>(new Font(name, pointSize));
}

std::string Font::description() const {
    char size[32];
    std::snprintf(size, sizeof size, "%.2fpt", pointSize_);
    return Object::description() + " font-name: \"" + name_ + "\"; font-size: " + size;
}

}  // namespace plat
