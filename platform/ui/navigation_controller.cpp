#include "platform/ui/navigation_controller.h"

#include "platform/system/process.h"

namespace plat {

namespace {

void journalNavigation(const ViewController& controller, const char* what) {
    Process* process = Process::tryCurrent();
    if (!process) return;
    process->journal().append(journal::Navigation{controller.className(), what});
}

}  // namespace

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
    journalNavigation(*controller, "push");
    controller->viewDidLoad();
}

std::shared_ptr<ViewController> NavigationController::popViewControllerAnimated(bool) {
    if (stack_.size() <= 1) return nullptr;
    auto top = stack_.back();
    stack_.pop_back();
    journalNavigation(*top, "pop");
    return top;
}

std::shared_ptr<ViewController> NavigationController::topViewController() const {
    return stack_.empty() ? nullptr : stack_.back();
}

}  // namespace plat
