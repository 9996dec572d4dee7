#pragma once

#include <memory>
#include <vector>

#include "platform/ui/view_controller.h"

namespace plat {

// UINavigationController: the stack of pages. Pushing loads the page's view (viewDidLoad);
// popping releases the page, so weak references to it go dead. Both are journaled.
class NavigationController : public ViewController {
  public:
    std::string className() const override { return "UINavigationController"; }

    void setRootViewController(const std::shared_ptr<ViewController>& controller);
    void pushViewController(const std::shared_ptr<ViewController>& controller, bool animated);
    // Pops the top page unless it is the root; answers the popped page (null at the root).
    std::shared_ptr<ViewController> popViewControllerAnimated(bool animated);

    std::shared_ptr<ViewController> topViewController() const;
    const std::vector<std::shared_ptr<ViewController>>& viewControllers() const { return stack_; }
    void clear() { stack_.clear(); }

  private:
    std::vector<std::shared_ptr<ViewController>> stack_;
};

}  // namespace plat
