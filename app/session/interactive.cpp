#include "app/session/interactive.h"

#include <iostream>

#include "app/session/batch_run.h"
#include "app/session/line_editor.h"
#include "app/session/step_error.h"

namespace velto::app {

namespace {

bool changesNothing(StepKind kind) {
    return kind == StepKind::Show || kind == StepKind::Help || kind == StepKind::Quit ||
           kind == StepKind::Expect || kind == StepKind::Watch;  // watch drew its own pages
}

}  // namespace

int runInteractive(Session& session, StepRunner& runner, Renderer& renderer, bool human,
                   bool colour) {
    LineEditor editor(
        LineEditor::defaultHistoryFile(),
        [&session](const std::string& typed) {
            return complete(typed, completionContext(session));
        },
        colour);
    runner.run(showStep());
    if (human) renderer.note("Type a step (help lists them, Tab completes, quit ends).\n");
    for (;;) {
        const auto line = editor.read(human ? "velto> " : "");
        if (!line) {
            if (human) std::cout << "\n" << std::flush;
            break;
        }
        std::optional<Step> step;
        try {
            step = parseStep(*line);
        } catch (const StepError& e) {
            renderer.error(*line, e.what());
            continue;
        }
        if (!step) continue;
        const auto outcome = runner.run(*step);
        if (outcome == StepRunner::Outcome::Quit) break;
        if (outcome == StepRunner::Outcome::Done && human && !changesNothing(step->kind))
            runner.run(showStep());
    }
    return kExitOk;
}

}  // namespace velto::app
