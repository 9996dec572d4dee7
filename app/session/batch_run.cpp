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

namespace {

// Far more than any step needs; `run /dev/zero` must stop here rather than fill memory.
constexpr std::size_t kMaxStepLine = 64 * 1024;

// std::getline, but no further than kMaxStepLine bytes: false at the end of input, and
// `tooLong` set when the line does not end in time.
bool readStepLine(std::istream& in, std::string& line, bool& tooLong) {
    line.clear();
    std::streambuf* source = in.rdbuf();
    for (;;) {
        const int c = source->sbumpc();
        if (c == std::char_traits<char>::eof()) {
            in.setstate(std::ios::eofbit);
            return !line.empty();
        }
        if (c == '\n') return true;
        if (line.size() == kMaxStepLine) {
            tooLong = true;
            return true;
        }
        line.push_back(static_cast<char>(c));
    }
}

}  // namespace

int runStepStream(StepRunner& runner, Renderer& renderer, std::istream& in,
                  const std::filesystem::path& folder) {
    static const std::string kByteOrderMark = "\xEF\xBB\xBF";
    std::size_t lineNumber = 0;
    bool tooLong = false;
    for (std::string line; readStepLine(in, line, tooLong);) {
        ++lineNumber;
        if (tooLong) {
            renderer.errorAt(
                "",
                "longer than " + std::to_string(kMaxStepLine) + " bytes, the most a step may take",
                lineNumber);
            return kExitUsage;
        }
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
