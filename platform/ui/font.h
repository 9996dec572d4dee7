#pragma once

#include <memory>
#include <string>

#include "platform/foundation/object.h"

namespace plat {

// UIFont reduced to what attributed text records: a PostScript name and a point size.
// Fonts are values: two fonts with the same name and size are equal.
class Font : public Object {
  public:
    // The name the system font reports.
    static constexpr const char* kSystemFontName = ".SFUI-Regular";

    // systemFontOfSize:
    static std::shared_ptr<Font> systemFontOfSize(double pointSize);
    // fontWithName:size:. The host has no font catalogue, so every name is accepted.
    static std::shared_ptr<Font> fontWithName(const std::string& name, double pointSize);

    const std::string& fontName() const { return name_; }
    double pointSize() const { return pointSize_; }

    std::string className() const override { return "UIFont"; }
    std::string description() const override;
    friend bool operator==(const Font& a, const Font& b) {
        return a.name_ == b.name_ && a.pointSize_ == b.pointSize_;
    }

  private:
    Font(std::string name, double pointSize) : name_(std::move(name)), pointSize_(pointSize) {}
    std::string name_;
    double pointSize_;
};

using FontPtr = std::shared_ptr<Font>;

}  // namespace plat
