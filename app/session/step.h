#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velto::app {

// One user action on the simulated Settings application.
enum class StepKind {
    Show,     // print the top page
    Open,     // tap a link row (ROW)
    Back,     // pop the top page
    Toggle,   // flip a switch (ROW [on|off])
    Tap,      // tap a button row (ROW)
    Choose,   // tap an action of the presented alert or sheet (TITLE)
    Dismiss,  // tap outside the presented popover
    Pick,     // the presented photo picker returns a picture (FILE)
    Cancel,   // the presented photo picker is cancelled
    Notify,   // another process posts a Darwin notification (NAME)
    Wait,     // run the main queue until it is empty
    Help,     // list the steps
    Quit,     // end the session
    // Draw the top page as the device shows it into a PNG (FILE).
    Screenshot,
    // Check the page, what is presented, a device file or the log (see expect_step.h).
    Expect,
    Reload,  // the top page rebuilds its rows from the resources
    Scroll,  // scroll the top page until a row (ROW) is on screen
    // Redraw the top page whenever the device's settings or the bundle change
    // ([--redraws N] [--timeout SECONDS]).
    Watch,
};

struct Step {
    StepKind kind = StepKind::Show;
    // The rest of the line after the step's word, trimmed; may hold spaces.
    std::string argument;
    // The whole step as written (trimmed), to name it in messages.
    std::string text;
    // Its line in a file of steps, for messages; 0 elsewhere.
    std::size_t line = 0;
    // The folder of the file of steps, where relative files the step names are found; empty:
    // the working directory.
    std::filesystem::path folder{};
};

// Reads one line. nullopt for a blank line or a '#' comment. Throws StepError for an unknown
// step, a missing argument, or an argument given to a step that takes none.
std::optional<Step> parseStep(const std::string& line);

// "FILE" or "FILE --full": the screenshot step's file, and whether the whole page is drawn.
struct ScreenshotRequest {
    std::string file;
    bool full = false;
};
ScreenshotRequest screenshotRequest(const std::string& argument);

// Whether `word` begins a step ("open", "show"...), whatever follows it.
bool isStepWord(const std::string& word);

// `show`, for the pages the program shows of its own accord.
inline Step showStep() {
    return Step{StepKind::Show, "", "show"};
}

// The steps with a line of explanation each.
const char* stepHelp();

// The words that begin a step, each with whether an argument follows it (for completion).
std::vector<std::pair<std::string, bool>> stepWords();

}  // namespace velto::app
