#pragma once

#include <memory>
#include <string>

#include "platform/foundation/object.h"
#include "platform/ui/image.h"

namespace plat {

// UIBarButtonItemStyle.
enum BarButtonItemStyle : int {
    UIBarButtonItemStylePlain = 0,
    UIBarButtonItemStyleBordered = 1,
    UIBarButtonItemStyleDone = 2,
};

// UIBarButtonItem made with initWithImage:style:target:action:. The target is weak, as
// target-action always is; the action is a selector name.
class BarButtonItem : public Object {
  public:
    static std::shared_ptr<BarButtonItem> initWithImage(ImagePtr image, int style,
                                                        const ObjectPtr& target,
                                                        std::string action) {
        auto item = std::make_shared<BarButtonItem>();
        item->image_ = std::move(image);
        item->style_ = style;
        item->target_ = target;
        item->action_ = std::move(action);
        return item;
    }

    ImagePtr image() const { return image_; }
    int style() const { return style_; }
    ObjectPtr target() const { return target_.lock(); }
    const std::string& action() const { return action_; }

    std::string className() const override { return "UIBarButtonItem"; }
    std::vector<std::string> classChain() const override {
        return {"UIBarButtonItem", "UIBarItem", "NSObject"};
    }

  private:
    ImagePtr image_;
    int style_ = UIBarButtonItemStylePlain;
    WeakObjectPtr target_;
    std::string action_;
};

using BarButtonItemPtr = std::shared_ptr<BarButtonItem>;

}  // namespace plat
