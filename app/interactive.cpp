#include "app/interactive.h"

#include "app/batch_run.h"
#include "app/step_error.h"

namespace velto::app {

namespace {

bool changesNothing(StepKind kind) {
    return kind == StepKind::Show || kind == StepKind::Help || kind == StepKind::Quit;
}

}  // namespace

int runInteractive(StepRunner& runner, Renderer& renderer, std::istream& in, std::ostream& out,
                   bool human) {
    runner.run(showStep());
    if (human) renderer.note("Type a step (help lists them, quit ends).\n");
    for (;;) {
        if (human) out << "velto> " << std::flush;
        std::string line;
        if (!std::getline(in, line)) {
            if (human) out << "\n";
            break;
        }
        std::optional<Step> step;
        try {
            step = parseStep(line);
        } catch (const StepError& e) {
            renderer.error(line, e.what());
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
