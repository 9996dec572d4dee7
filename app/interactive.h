#pragma once

#include <istream>
#include <ostream>

#include "app/step_runner.h"

namespace velto::app {

// The session at a terminal: shows the root page, then reads steps until quit or end of
// input. A failing step is reported and the session carries on. For a person (`human`) there
// is a prompt and the page is shown again after every step that may have changed it; JSON
// output stays pure JSON Lines, a page per `show`.
int runInteractive(StepRunner& runner, Renderer& renderer, std::istream& in, std::ostream& out,
                   bool human);

}  // namespace velto::app
