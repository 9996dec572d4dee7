#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/geometry.h"
#include "platform/foundation/object.h"

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

// UINavigationItem: the title may be absent (nil), which is not the same as "".
class NavigationItem {
public:
    const std::optional<std::string>& title() const { return title_; }
    void setTitle(std::optional<std::string> title) { title_ = std::move(title); }
    std::shared_ptr<BarButtonItem> leftBarButtonItem() const { return left_; }
    void setLeftBarButtonItem(std::shared_ptr<BarButtonItem> item) { left_ = std::move(item); }

private:
    std::optional<std::string> title_;
    std::shared_ptr<BarButtonItem> left_;
};

}  // namespace plat
