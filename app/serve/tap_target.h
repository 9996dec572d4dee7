#pragma once

#include <optional>
#include <string>

#include "platform/foundation/geometry.h"
#include "platform/prefs/list_controller.h"
#include "screen/screenshot.h"

namespace velto::app {

// The step a finger's tap at `point` (in points) takes on the page as `shot` drew it: a button
// of what is presented ("choose TITLE", "cancel"), outside a popover ("dismiss"), the back
// button ("back"), or a row ("toggle #N", "open #N", "tap #N"). nullopt where a tap does
// nothing: a group's heading, a footer, the bars, a presented picture's inside.
std::optional<std::string> stepForTap(const screen::Screenshot& shot, plat::ListController& page,
                                      std::size_t depth, plat::Point point);

}  // namespace velto::app
