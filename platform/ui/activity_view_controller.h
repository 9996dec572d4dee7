#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/value.h"
#include "platform/ui/image.h"
#include "platform/ui/view_controller.h"

namespace plat {

// UIActivityViewController: the share sheet for a list of items (texts, images). It goes
// away by itself when the user finishes and then calls its completion handler.
// cancel() is the user's side, for hosts that act as the user.
class ActivityViewController : public ViewController {
  public:
    // completionWithItemsHandler: activity type (nil when cancelled), completed.
    using CompletionHandler =
        std::function<void(const std::optional<std::string>& activityType, bool completed)>;

    // initWithActivityItems:applicationActivities: (no application activities in the model).
    explicit ActivityViewController(std::vector<Value> items) : items_(std::move(items)) {}
    static std::shared_ptr<ActivityViewController> make(std::vector<Value> items) {
        return std::make_shared<ActivityViewController>(std::move(items));
    }

    const std::vector<Value>& activityItems() const { return items_; }
    // The first text and the first image among the items (nullopt / null when there is none).
    std::optional<std::string> text() const;
    ImagePtr image() const;

    void setCompletionWithItemsHandler(CompletionHandler handler) {
        completion_ = std::move(handler);
    }

    // Where the width is regular (an iPad) the sheet is always a popover.
    bool presentsAsPopover() const override;

    // The user closes the sheet without sharing: it is dismissed (journaled as "cancel") and
    // the handler hears (nil, false). False when the sheet is not presented.
    bool cancel();

    std::string className() const override { return "UIActivityViewController"; }
    std::vector<std::string> classChain() const override {
        return {"UIActivityViewController", "UIViewController", "UIResponder", "NSObject"};
    }

  protected:
    // It has one on every device: on a phone the popover adapts to a sheet from the bottom.
    bool usesPopoverPresentation() const override { return true; }

  private:
    std::vector<Value> items_;
    CompletionHandler completion_;
};

using ActivityViewControllerPtr = std::shared_ptr<ActivityViewController>;

}  // namespace plat
