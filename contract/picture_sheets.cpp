#include "contract/picture_sheets.h"

#include <memory>
#include <optional>
#include <string>

#include "contract/velto_utils.h"
#include "platform/prefs/table_cell.h"
#include "platform/system/bundle.h"
#include "platform/ui/alert_controller.h"

namespace velto {

void anchorOnCell(plat::ViewController& controller, const plat::SpecifierPtr& specifier) {
    const auto cell = specifier
                          ? specifier->propertyForKey(plat::pskey::CellObject).as<plat::TableCell>()
                          : nullptr;
    // Messages to a nil popover controller are lost, as on UIKit: the style comes first.
    if (auto* popover = controller.popoverPresentationController()) {
        popover->setSourceView(cell);
        popover->setSourceRect(cell ? cell->bounds() : plat::Rect{});
    }
}

void presentRestoreSheet(plat::ViewController& page, const plat::SpecifierPtr& button,
                         std::function<void()> restore) {
    auto sheet = plat::AlertController::alertControllerWithTitle(
        std::nullopt, std::nullopt, plat::UIAlertControllerStyleActionSheet);
    sheet->addAction(plat::AlertAction::actionWithTitle(
        plat::NSLocalizedString("Default Avatar"), plat::UIAlertActionStyleDestructive,
        [restore = std::move(restore)](plat::AlertAction&) { restore(); }));
    if (VeltoUtils::isIPad()) {
        anchorOnCell(*sheet, button);
    } else {
        const std::weak_ptr<plat::AlertController> weakSheet = sheet;
        sheet->addAction(plat::AlertAction::actionWithTitle(
            plat::NSLocalizedString("Cancel"), plat::UIAlertActionStyleCancel,
            [weakSheet](plat::AlertAction&) {
                if (const auto shown = weakSheet.lock())
                    shown->dismissViewControllerAnimated(true, nullptr);
            }));
    }
    page.presentViewController(sheet, true, nullptr);
}

}  // namespace velto
