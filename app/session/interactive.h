#pragma once

#include "app/session/session.h"
#include "app/session/step_runner.h"

namespace velto::app {

// The session at a terminal: shows the root page, then reads steps, edited as in a shell
// (history, Tab completion from the top page, Ctrl-L), until quit or end of input. A failing
// step or unmet expectation is reported and the session carries on. For a person (`human`)
// there is a prompt, coloured when `colour`, and the page is shown again after every step that
// may have changed it; JSON output stays pure JSON Lines, a page per `show`.
int runInteractive(Session& session, StepRunner& runner, Renderer& renderer, bool human,
                   bool colour);

}  // namespace velto::app
