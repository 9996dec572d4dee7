#include "platform/ui/view_controller.h"

#include "platform/system/process.h"
#include "platform/ui/navigation_controller.h"

namespace plat {

PopoverPresentationController* ViewController::popoverPresentationController() {
    if (!popover_ && usesPopoverPresentation()) popover_.emplace();
    return popover_ ? &*popover_ : nullptr;
}

void ViewController::presentViewController(const std::shared_ptr<ViewController>& controller,
                                           bool animated, const std::function<void()>& completion) {
    // UIKit refuses, with only a console warning, to present from a controller that already
    // presents something, or to present a controller that is already on screen; the
    // completion never runs then. We refuse the same way and journal nothing.
    if (!controller || controller.get() == this || presented_ || !controller->presenting_.expired())
        return;
    presented_ = controller;
    controller->presenting_ = std::static_pointer_cast<ViewController>(weak_from_this().lock());
    Process::record(
        journal::Present{controller->className(), controller->title().value_or(""), animated});
    if (completion) completion();
}

void ViewController::dismissViewControllerAnimated(bool animated,
                                                   const std::function<void()>& completion) {
    if (presented_) {
        dismissPresented(animated, completion, "dismissViewControllerAnimated");
    } else if (auto presenter = presenting_.lock()) {
        presenter->dismissPresented(animated, completion, "dismissViewControllerAnimated");
    }
    // Neither presenting nor presented: nothing happens and the completion is not called.
}

void ViewController::dismissModalViewControllerAnimated(bool animated) {
    if (presented_) {
        dismissPresented(animated, nullptr, "dismissModalViewControllerAnimated");
    } else if (auto presenter = presenting_.lock()) {
        presenter->dismissPresented(animated, nullptr, "dismissModalViewControllerAnimated");
    }
}

bool ViewController::dismissFromPresenter(const char* how) {
    auto presenter = presenting_.lock();
    if (!presenter || presenter->presented_.get() != this) return false;
    presenter->dismissPresented(true, nullptr, how);
    return true;
}

void ViewController::dismissPresented(bool animated, const std::function<void()>& completion,
                                      const char* how) {
    // Held here so the dismissed controller outlives its own dismissal even when this was
    // its last owner (a completion may still talk to it).
    const std::shared_ptr<ViewController> dismissed = std::move(presented_);
    presented_.reset();
    dismissed->presenting_.reset();
    // Whatever the dismissed controller presents in turn goes down with it, as a stack of
    // modals does in UIKit; only the dismissal that was asked for is journaled.
    for (auto above = std::move(dismissed->presented_); above;) {
        above->presenting_.reset();
        above = std::move(above->presented_);
    }
    Process::record(journal::Dismiss{dismissed->className(), how, animated});
    if (completion) completion();
}

std::shared_ptr<ViewController> frontmostPresented(const ViewController& page) {
    auto presented = page.presentedViewController();
    if (!presented)
        if (auto navigation = page.navigationController())
            presented = navigation->presentedViewController();
    while (presented && presented->presentedViewController())
        presented = presented->presentedViewController();
    return presented;
}

}  // namespace plat
