#pragma once

#include <functional>

#include "platform/prefs/specifier.h"
#include "platform/ui/view_controller.h"

namespace velto {

// Points a controller's popover at the cell the table made for a row, where popovers point
// on an iPad; at nothing when the row has no cell.
void anchorOnCell(plat::ViewController& controller, const plat::SpecifierPtr& specifier);

// The sheet the picture pages show before putting the stock picture back: "Default Avatar"
// (destructive) runs restore; an iPhone adds "Cancel", an iPad shows a popover at the button,
// which the user leaves by tapping outside it. restore must hold the page weakly.
void presentRestoreSheet(plat::ViewController& page, const plat::SpecifierPtr& button,
                         std::function<void()> restore);

}  // namespace velto
