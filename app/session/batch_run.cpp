#include "app/session/batch_run.h"

#include "app/session/step_error.h"

namespace velto::app {

std::optional<int> stopStatus(StepRunner::Outcome outcome) {
    switch (outcome) {
        case StepRunner::Outcome::Done:
            return std::nullopt;
        case StepRunner::Outcome::Failed:
            return kExitStepFailed;
        case StepRunner::Outcome::Unmet:
            return kExitUnmet;
        case StepRunner::Outcome::Quit:
            return kExitOk;
    }
    return kExitFailed;
}

int runArgumentSteps(StepRunner& runner, Renderer& renderer,
                     const std::vector<std::string>& steps) {
    std::vector<Step> parsed;
    for (const std::string& text : steps) {
        try {
            if (auto step = parseStep(text)) parsed.push_back(*step);
        } catch (const StepError& e) {
            renderer.error(text, e.what());
            return kExitUsage;
        }
    }
    for (const Step& step : parsed)
        if (const auto status = stopStatus(runner.run(step))) return *status;
    return kExitOk;
}

int runStepStream(StepRunner& runner, Renderer& renderer, std::istream& in,
                  const std::filesystem::path& folder) {
    static const std::string kByteOrderMark = "\xEF\xBB\xBF";
    std::size_t lineNumber = 0;
    for (std::string line; std::getline(in, line);) {
        ++lineNumber;
        // Editors on other systems begin UTF-8 files with one.
        if (lineNumber == 1 && line.starts_with(kByteOrderMark))
            line.erase(0, kByteOrderMark.size());
        std::optional<Step> step;
        try {
            step = parseStep(line);
        } catch (const StepError& e) {
            renderer.errorAt(line, e.what(), lineNumber);
            return kExitUsage;
        }
        if (!step) continue;
        step->line = lineNumber;
        step->folder = folder;
        if (const auto status = stopStatus(runner.run(*step))) return *status;
    }
    return kExitOk;
}

}  // namespace velto::app
