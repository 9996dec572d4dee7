#include "platform/ui/navigation_controller.h"

#include "platform/system/process.h"

namespace plat {

void NavigationController::setRootViewController(
    const std::shared_ptr<ViewController>& controller) {
    stack_.clear();
    pushViewController(controller, false);
}

void NavigationController::pushViewController(const std::shared_ptr<ViewController>& controller,
                                              bool) {
    if (!controller) return;
    stack_.push_back(controller);
    controller->setNavigationController(
        std::static_pointer_cast<NavigationController>(shared_from_this()));
    Process::record(journal::Navigation{controller->className(), "push"});
    controller->viewDidLoad();
}

std::shared_ptr<ViewController> NavigationController::popViewControllerAnimated(bool) {
    if (stack_.size() <= 1) return nullptr;
    auto top = stack_.back();
    stack_.pop_back();
    Process::record(journal::Navigation{top->className(), "pop"});
    return top;
}

std::shared_ptr<ViewController> NavigationController::topViewController() const {
    return stack_.empty() ? nullptr : stack_.back();
}

}  // namespace plat
