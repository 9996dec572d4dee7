#pragma once

#include <memory>
#include <string>

#include "platform/foundation/object.h"

namespace plat {

// UIColor in the sRGB space, components 0...1.
class Color : public Object {
  public:
    static std::shared_ptr<Color> colorWithRGBA(double red, double green, double blue,
                                                double alpha);
    static std::shared_ptr<Color> colorWithWhite(double white, double alpha);
    static std::shared_ptr<Color> clearColor();
    static std::shared_ptr<Color> whiteColor();
    static std::shared_ptr<Color> blackColor();

    double red() const { return red_; }
    double green() const { return green_; }
    double blue() const { return blue_; }
    double alpha() const { return alpha_; }
    // Made with colorWithWhite: (archived as a grey colour).
    bool isGrey() const { return grey_; }
    // "#RRGGBBAA", for hosts that print colours.
    std::string hexString() const;

    std::string className() const override { return "UIColor"; }
    std::string description() const override;
    friend bool operator==(const Color& a, const Color& b);

  private:
    Color(double r, double g, double b, double a, bool grey)
        : red_(r), green_(g), blue_(b), alpha_(a), grey_(grey) {}
    double red_, green_, blue_, alpha_;
    bool grey_;
};

using ColorPtr = std::shared_ptr<Color>;

}  // namespace plat
