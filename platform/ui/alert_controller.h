#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ui/view_controller.h"

namespace plat {

// UIAlertControllerStyle.
enum AlertControllerStyle : int {
    UIAlertControllerStyleActionSheet = 0,
    UIAlertControllerStyleAlert = 1,
};

// UIAlertActionStyle.
enum AlertActionStyle : int {
    UIAlertActionStyleDefault = 0,
    UIAlertActionStyleCancel = 1,
    UIAlertActionStyleDestructive = 2,
};

// UIAlertAction: a button of an alert or sheet. The handler may be empty.
class AlertAction : public Object {
  public:
    using Handler = std::function<void(AlertAction&)>;

    // actionWithTitle:style:handler:
    static std::shared_ptr<AlertAction> actionWithTitle(std::string title, int style,
                                                        Handler handler);

    const std::string& title() const { return title_; }
    int style() const { return style_; }
    const Handler& handler() const { return handler_; }

    std::string className() const override { return "UIAlertAction"; }

  private:
    AlertAction(std::string title, int style, Handler handler)
        : title_(std::move(title)), style_(style), handler_(std::move(handler)) {}
    std::string title_;
    int style_;
    Handler handler_;
};

using AlertActionPtr = std::shared_ptr<AlertAction>;

// UIAlertController: an alert or action sheet with its actions, plus the user's side of it
// (tapping an action, tapping outside a popover) for hosts that act as the user.
class AlertController : public ViewController {
  public:
    // alertControllerWithTitle:message:preferredStyle: — title and message may be nil.
    static std::shared_ptr<AlertController> alertControllerWithTitle(
        std::optional<std::string> title, std::optional<std::string> message, int preferredStyle);

    std::optional<std::string> title() const override { return title_; }
    const std::optional<std::string>& message() const { return message_; }
    int preferredStyle() const { return preferredStyle_; }

    // addAction:. A null action is ignored.
    void addAction(const AlertActionPtr& action);
    const std::vector<AlertActionPtr>& actions() const { return actions_; }

    // An action sheet shows as a popover where the width is regular (an iPad) and its popover
    // controller has somewhere to point; elsewhere it slides up from the bottom.
    bool presentsAsPopover() const override;

    // The user taps the first action with this title: UIKit dismisses the alert (journaled as
    // "action"), then runs the handler. False when there is no such action.
    bool tapAction(const std::string& title);
    // The user taps outside a popover: it goes away (journaled as "tap-outside") and no
    // handler runs. False, and nothing happens, unless this is a presented popover.
    bool dismissByTappingOutside();

    std::string className() const override { return "UIAlertController"; }
    std::vector<std::string> classChain() const override {
        return {"UIAlertController", "UIViewController", "UIResponder", "NSObject"};
    }

  protected:
    // An action sheet has one (it may become a popover); an alert has none.
    bool usesPopoverPresentation() const override {
        return preferredStyle_ == UIAlertControllerStyleActionSheet;
    }

  private:
    AlertController(std::optional<std::string> title, std::optional<std::string> message, int style)
        : title_(std::move(title)), message_(std::move(message)), preferredStyle_(style) {}

    std::optional<std::string> title_;
    std::optional<std::string> message_;
    int preferredStyle_;
    std::vector<AlertActionPtr> actions_;
};

using AlertControllerPtr = std::shared_ptr<AlertController>;

}  // namespace plat
