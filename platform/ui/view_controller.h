#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/geometry.h"
#include "platform/foundation/object.h"
#include "platform/ui/view.h"

namespace plat {

class NavigationController;

// UIModalPresentationStyle values the bundle uses.
enum ModalPresentationStyle : int {
    UIModalPresentationFullScreen = 0,
    UIModalPresentationPopover = 7,
};

// UIPopoverPresentationController: where a popover points. It holds its source view, as UIKit
// does: the table may make the row a new cell while the popover is up, and the popover still
// points where it was opened.
class PopoverPresentationController {
  public:
    std::shared_ptr<View> sourceView() const { return sourceView_; }
    void setSourceView(const std::shared_ptr<View>& view) { sourceView_ = view; }
    std::optional<Rect> sourceRect() const { return sourceRect_; }
    void setSourceRect(Rect rect) { sourceRect_ = rect; }
    bool hasAnchor() const { return sourceView_ || sourceRect_.has_value(); }

  private:
    std::shared_ptr<View> sourceView_;
    std::optional<Rect> sourceRect_;
};

// UIViewController: title and navigation item, modal presentation (journaled), the view
// life cycle hook. Presenting keeps the presented controller alive until it is dismissed.
class ViewController : public Object {
  public:
    std::string className() const override { return "UIViewController"; }
    std::vector<std::string> classChain() const override {
        return {"UIViewController", "UIResponder", "NSObject"};
    }

    // The title a presentation is journaled with: the navigation item's, unless a subclass
    // has its own (an alert's title).
    virtual std::optional<std::string> title() const { return navigationItem_.title(); }

    NavigationItem& navigationItem() { return navigationItem_; }
    const NavigationItem& navigationItem() const { return navigationItem_; }

    // presentViewController:animated:completion:. The completion runs once presented.
    void presentViewController(const std::shared_ptr<ViewController>& controller, bool animated,
                               const std::function<void()>& completion);
    // dismissViewControllerAnimated:completion: — sent to a presented controller it dismisses
    // that controller; sent to a presenter it dismisses what it presents.
    void dismissViewControllerAnimated(bool animated, const std::function<void()>& completion);
    // The older dismissModalViewControllerAnimated:, with the same effect (journaled apart).
    void dismissModalViewControllerAnimated(bool animated);

    std::shared_ptr<ViewController> presentedViewController() const { return presented_; }
    std::shared_ptr<ViewController> presentingViewController() const { return presenting_.lock(); }

    int modalPresentationStyle() const { return modalPresentationStyle_; }
    void setModalPresentationStyle(int style) { modalPresentationStyle_ = style; }
    // Made on first use, and only for a controller that is presented as a popover (style
    // popover, an action sheet, a share sheet); nil for any other, as on UIKit, so an anchor set
    // before the style is messaged to nil and lost. Once made it is kept. The const form only
    // reads: it is nil until a first non-const use has made one, which no reader can tell
    // apart, as an unmade popover controller has no anchor yet.
    PopoverPresentationController* popoverPresentationController();
    const PopoverPresentationController* popoverPresentationController() const {
        return popover_ ? &*popover_ : nullptr;
    }
    // Whether this controller is shown as a popover when presented (style popover, or an
    // anchored action sheet on a regular-width device).
    virtual bool presentsAsPopover() const {
        return modalPresentationStyle_ == UIModalPresentationPopover;
    }

    // The navigation controller whose stack holds this page (null when none does).
    std::shared_ptr<NavigationController> navigationController() const {
        return navigationController_.lock();
    }
    void setNavigationController(const std::shared_ptr<NavigationController>& controller) {
        navigationController_ = controller;
    }

    virtual void viewDidLoad() {}

  protected:
    // Whether UIKit would make a popover presentation controller for this controller now.
    virtual bool usesPopoverPresentation() const {
        return modalPresentationStyle_ == UIModalPresentationPopover;
    }
    // Dismissal that UIKit performs itself (a tapped alert action, a tap outside a popover),
    // journaled with `how`. False when this controller is not presented.
    bool dismissFromPresenter(const char* how);

  private:
    void dismissPresented(bool animated, const std::function<void()>& completion, const char* how);

    NavigationItem navigationItem_;
    std::shared_ptr<ViewController> presented_;
    std::weak_ptr<ViewController> presenting_;
    int modalPresentationStyle_ = UIModalPresentationFullScreen;
    std::optional<PopoverPresentationController> popover_;
    std::weak_ptr<NavigationController> navigationController_;
};

// The controller on top of everything a page presents, following presentations up from the
// page, or from its navigation controller when the page presented nothing itself (some pages
// present from there); nullptr when nothing is presented.
std::shared_ptr<ViewController> frontmostPresented(const ViewController& page);

}  // namespace plat
