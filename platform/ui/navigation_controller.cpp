#include "platform/ui/navigation_controller.h"

#include "platform/system/process.h"

namespace plat {

namespace {

void journal(const ViewController& controller, const char* what) {
    Process* process = Process::tryCurrent();
    if (!process) return;
    JournalEntry entry;
    entry.kind = JournalEntry::Kind::Navigation;
    entry.name = controller.className();
    entry.text = what;
    process->journal().append(std::move(entry));
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
    journal(*controller, "push");
    controller->viewDidLoad();
}

std::shared_ptr<ViewController> NavigationController::popViewControllerAnimated(bool) {
    if (stack_.size() <= 1) return nullptr;
    auto top = stack_.back();
    stack_.pop_back();
    journal(*top, "pop");
    return top;
}

std::shared_ptr<ViewController> NavigationController::topViewController() const {
    return stack_.empty() ? nullptr : stack_.back();
}

}  // namespace plat
