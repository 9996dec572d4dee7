#include "app/serve/tap_target.h"

#include "platform/ui/alert_controller.h"

namespace velto::app {

namespace {

bool tapLands(const plat::Rect& rect, plat::Point point) {
    return point.x >= rect.origin.x && point.x < rect.origin.x + rect.size.width &&
           point.y >= rect.origin.y && point.y < rect.origin.y + rect.size.height;
}

std::optional<std::string> stepForRow(const screen::LaidRow& row) {
    const std::string index = "#" + std::to_string(row.index);
    if (row.specifier->cellType() == plat::PSGroupCell) return std::nullopt;
    if (row.cell && row.cell->control()) return "toggle " + index;
    if (!row.specifier->detailControllerClass().empty()) return "open " + index;
    if (!row.specifier->action().empty()) return "tap " + index;
    return std::nullopt;
}

}  // namespace

std::optional<std::string> stepForTap(const screen::Screenshot& shot, plat::ListController& page,
                                      std::size_t depth, plat::Point point) {
    if (auto presented = plat::frontmostPresented(page)) {
        // What is presented takes every tap: the page under it is out of reach.
        const bool alert = std::dynamic_pointer_cast<plat::AlertController>(presented) != nullptr;
        for (const screen::ButtonFrame& button : shot.buttons)
            if (tapLands(button.frame, point))
                return alert ? "choose " + button.title : std::string("cancel");
        if (shot.popover && !tapLands(shot.popover->box, point)) return "dismiss";
        return std::nullopt;
    }
    if (shot.backButton && tapLands(*shot.backButton, point))
        return depth > 1 ? std::optional<std::string>("back") : std::nullopt;
    // Rows scrolled under the bars are hidden by them.
    const screen::Look& look = shot.look;
    if (point.y < look.statusBar + look.navigationBar || point.y >= look.contentBottom())
        return std::nullopt;
    for (const screen::LaidSection& section : shot.table.sections)
        for (const screen::LaidRow& row : section.rows)
            if (tapLands(row.frame, point)) return stepForRow(row);
    return std::nullopt;
}

}  // namespace velto::app
