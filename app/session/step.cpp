#include "app/session/step.h"

#include <array>
#include <cctype>

#include "app/session/expect_step.h"
#include "app/session/spelling.h"
#include "app/session/step_error.h"

namespace velto::app {

namespace {

enum class Argument { None, Required, Optional };

struct StepWord {
    const char* word;
    StepKind kind;
    Argument argument;
    const char* what;  // what the argument is, for messages
};

constexpr std::array<StepWord, 20> kSteps = {{
    {"show", StepKind::Show, Argument::None, ""},
    {"open", StepKind::Open, Argument::Required, "a row"},
    {"back", StepKind::Back, Argument::None, ""},
    {"toggle", StepKind::Toggle, Argument::Required, "a row"},
    {"tap", StepKind::Tap, Argument::Required, "a row"},
    {"choose", StepKind::Choose, Argument::Required, "an action title"},
    {"dismiss", StepKind::Dismiss, Argument::None, ""},
    {"pick", StepKind::Pick, Argument::Required, "a picture file"},
    {"cancel", StepKind::Cancel, Argument::None, ""},
    {"notify", StepKind::Notify, Argument::Required, "a notification name"},
    {"wait", StepKind::Wait, Argument::None, ""},
    {"screenshot", StepKind::Screenshot, Argument::Required, "a PNG file to write"},
    {"scroll", StepKind::Scroll, Argument::Required, "a row"},
    {"expect", StepKind::Expect, Argument::Required,
     "ROW on|off|shown|hidden, presented KIND, file PATH exists|missing or log TEXT"},
    {"help", StepKind::Help, Argument::None, ""},
    {"quit", StepKind::Quit, Argument::None, ""},
    {"exit", StepKind::Quit, Argument::None, ""},
    {"?", StepKind::Help, Argument::None, ""},
    {"reload", StepKind::Reload, Argument::None, ""},
    {"watch", StepKind::Watch, Argument::Optional, ""},
}};

std::string trim(const std::string& text) {
    const char* space = " \t\r\n";
    const std::size_t first = text.find_first_not_of(space);
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(space) - first + 1);
}

bool hasPngExtension(const std::string& file) {
    std::string extension = std::filesystem::path(file).extension().string();
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension == ".png";
}

}  // namespace

ScreenshotRequest screenshotRequest(const std::string& argument) {
    static const std::string kFull = " --full";
    if (argument.size() > kFull.size() && argument.ends_with(kFull))
        return {trim(argument.substr(0, argument.size() - kFull.size())), true};
    return {argument, false};
}

std::optional<Step> parseStep(const std::string& line) {
    const std::string text = trim(line);
    if (text.empty() || text[0] == '#') return std::nullopt;

    const std::size_t space = text.find_first_of(" \t");
    const std::string word = text.substr(0, space);
    const std::string argument = space == std::string::npos ? "" : trim(text.substr(space));

    for (const StepWord& step : kSteps) {
        if (word != step.word) continue;
        if (step.argument == Argument::Required && argument.empty())
            throw StepError(word + " needs " + step.what);
        if (step.argument == Argument::None && !argument.empty())
            throw StepError(word + " takes no argument");
        // A script's expectations are checked as a whole before any step runs.
        if (step.kind == StepKind::Expect) parseExpectation(argument);
        // Pictures are written as PNG whatever the name says; a name that says otherwise
        // would mislead whoever opens the file.
        if (step.kind == StepKind::Screenshot && !hasPngExtension(screenshotRequest(argument).file))
            throw StepError("screenshot writes PNG pictures: name the file with .png, not '" +
                            argument + "'");
        return Step{step.kind, argument, text};
    }
    std::vector<std::string> words;
    for (const StepWord& step : kSteps)
        words.push_back(step.word);
    const std::string guess = didYouMean(word, words);
    throw StepError("unknown step '" + word + "'" + (guess.empty() ? " (try help)" : guess));
}

bool isStepWord(const std::string& word) {
    for (const StepWord& step : kSteps)
        if (word == step.word) return true;
    return false;
}

const char* stepHelp() {
    return "Steps act on the page on top of the navigation stack:\n"
           "  show                 print the page\n"
           "  open ROW             tap a link row: its page is made and pushed\n"
           "  back                 pop the top page\n"
           "  toggle ROW [on|off]  flip a switch (default: the opposite of what it shows)\n"
           "  tap ROW              tap a button row\n"
           "  choose TITLE         tap an action of the presented alert or sheet\n"
           "                       (choose Cancel also closes a mail composer or share sheet)\n"
           "  dismiss              tap outside the presented popover; cancel a mail composer\n"
           "                       or share sheet\n"
           "  pick FILE [--original-only]\n"
           "                       the photo picker returns the picture in FILE (PNG or JPEG),\n"
           "                       cropped, or only as the original\n"
           "  cancel               the photo picker, mail composer or share sheet is cancelled\n"
           "  notify NAME          another process posts the Darwin notification NAME\n"
           "  wait                 run the main queue until it is empty\n"
           "  screenshot FILE [--full]\n"
           "                       draw the page as the device shows it into a PNG file;\n"
           "                       --full: the whole page, as tall as its rows\n"
           "  scroll ROW           scroll the page until the row is on screen\n"
           "  expect ROW on|off|shown|hidden\n"
           "                       the switch shows on or off; the row is on the page or not\n"
           "  expect presented KIND\n"
           "                       alert, sheet, picker, mail, share, other, nothing or a class\n"
           "  expect file PATH exists|missing\n"
           "                       a device path (/var/mobile/...) under the device root\n"
           "  expect log TEXT      a log line holding TEXT was written since the last step that\n"
           "                       acts (show, help and expect only look)\n"
           "  reload               the page rebuilds its rows from the bundle's resources\n"
           "  watch [--redraws N] [--timeout SECONDS]\n"
           "                       redraw the page whenever the device's settings or the\n"
           "                       bundle's resources change, until Ctrl-C or end of input\n"
           "  help                 this list\n"
           "  quit                 end the session\n"
           "ROW is a row's identifier, else its label (\"...\" stands for \"\u2026\"), else #N "
           "for\n"
           "its index, else the one row that matches ignoring case. open skips group rows.\n"
           "Examples, on the demo device:\n"
           "  toggle Enabled on\n"
           "  open phone\n"
           "  toggle Pictures in Favorites off\n"
           "  expect Favorites off\n"
           "  back\n"
           "  open About\n"
           "  tap Share Velto\n"
           "  expect presented share\n"
           "  cancel\n"
           "  expect file /var/mobile/Library/Preferences/com.norvale.velto.plist exists\n";
}

std::vector<std::pair<std::string, bool>> stepWords() {
    std::vector<std::pair<std::string, bool>> words;
    for (const StepWord& step : kSteps)
        if (std::string(step.word) != "?")
            words.emplace_back(step.word, step.argument == Argument::Required);
    return words;
}

}  // namespace velto::app
