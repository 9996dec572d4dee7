#include "platform/ui/alert_controller.h"

#include "platform/system/process.h"

namespace plat {

std::shared_ptr<AlertAction> AlertAction::actionWithTitle(std::string title, int style,
                                                          Handler handler) {
    return std::shared_ptr<AlertAction>(
        new AlertAction(std::move(title), style, std::move(handler)));
}

std::shared_ptr<AlertController> AlertController::alertControllerWithTitle(
    std::optional<std::string> title, std::optional<std::string> message, int preferredStyle) {
    return std::shared_ptr<AlertController>(
        new AlertController(std::move(title), std::move(message), preferredStyle));
}

void AlertController::addAction(const AlertActionPtr& action) {
    if (action) actions_.push_back(action);
}

bool AlertController::presentsAsPopover() const {
    if (ViewController::presentsAsPopover()) return true;
    if (preferredStyle_ != UIAlertControllerStyleActionSheet) return false;
    const auto* popover = popoverPresentationController();
    if (!popover || !popover->hasAnchor()) return false;
    Process* process = Process::tryCurrent();
    return process && process->deviceFamily() == DeviceFamily::iPad;
}

bool AlertController::tapAction(const std::string& title) {
    AlertActionPtr action;
    for (const AlertActionPtr& candidate : actions_) {
        if (candidate->title() == title) {
            action = candidate;
            break;
        }
    }
    if (!action) return false;
    // The presenter drops its hold on us when we are dismissed; the handler still belongs to
    // us, so keep both alive until it has run.
    const auto self = weak_from_this().lock();
    dismissFromPresenter("action");
    if (action->handler()) action->handler()(*action);
    return true;
}

bool AlertController::dismissByTappingOutside() {
    if (!presentsAsPopover()) return false;
    const auto self = weak_from_this().lock();
    return dismissFromPresenter("tap-outside");
}

}  // namespace plat
