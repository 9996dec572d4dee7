#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/geometry.h"
#include "platform/foundation/object.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"

namespace plat {

// UIView reduced to what anchors popovers: its bounds.
class View : public Object {
  public:
    std::string className() const override { return "UIView"; }
    Rect bounds() const { return bounds_; }
    void setBounds(Rect bounds) { bounds_ = bounds; }

  private:
    Rect bounds_{{0, 0}, {320, 44}};
};

class BarButtonItem;

// UINavigationItem: the title may be absent (nil), which is not the same as "". The title view
// image and the bar tint stand for what a page puts into the navigation bar while it is on
// top (a title image view, the bar's tint colour).
class NavigationItem {
  public:
    const std::optional<std::string>& title() const { return title_; }
    void setTitle(std::optional<std::string> title) { title_ = std::move(title); }
    std::shared_ptr<BarButtonItem> leftBarButtonItem() const { return left_; }
    void setLeftBarButtonItem(std::shared_ptr<BarButtonItem> item) { left_ = std::move(item); }
    ImagePtr titleImage() const { return titleImage_; }
    void setTitleImage(ImagePtr image) { titleImage_ = std::move(image); }
    ColorPtr barTintColor() const { return barTint_; }
    void setBarTintColor(ColorPtr color) { barTint_ = std::move(color); }

  private:
    std::optional<std::string> title_;
    std::shared_ptr<BarButtonItem> left_;
    ImagePtr titleImage_;
    ColorPtr barTint_;
};

}  // namespace plat
