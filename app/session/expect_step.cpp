#include "app/session/expect_step.h"

#include <array>
#include <cctype>

#include "app/render/page_view.h"
#include "app/session/step_error.h"

namespace velto::app {

namespace {

const char* const kForms =
    "expect needs ROW on|off|shown|hidden, presented KIND, file PATH exists|missing or log TEXT";

constexpr std::array<const char*, 7> kPresentedKinds = {"alert", "sheet", "picker", "mail",
                                                        "share", "other", "nothing"};

std::string trimmed(const std::string& text) {
    const char* space = " \t";
    const std::size_t first = text.find_first_not_of(space);
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(space) - first + 1);
}

// The text split at its last blank: what comes before, and the last word.
std::pair<std::string, std::string> splitLast(const std::string& text) {
    const std::size_t space = text.find_last_of(" \t");
    if (space == std::string::npos) return {"", text};
    return {trimmed(text.substr(0, space)), text.substr(space + 1)};
}

bool isClassName(const std::string& word) {
    if (word.empty() || word[0] < 'A' || word[0] > 'Z') return false;
    for (char c : word)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
    return true;
}

Expectation parsePresented(const std::string& kind) {
    for (const char* known : kPresentedKinds)
        if (kind == known) return {Expectation::Kind::Presented, kind};
    if (isClassName(kind)) return {Expectation::Kind::Presented, kind};
    throw StepError(
        "expect presented needs alert, sheet, picker, mail, share, other, nothing "
        "or a class name");
}

Expectation parseFile(const std::string& rest) {
    const auto [path, state] = splitLast(rest);
    if (path.empty() || (state != "exists" && state != "missing"))
        throw StepError("expect file needs a PATH and exists or missing");
    if (path[0] != '/') throw StepError("expect file needs a device path, from /");
    return {state == "exists" ? Expectation::Kind::FileExists : Expectation::Kind::FileMissing,
            path};
}

std::string describe(const PresentedView& shown) {
    std::string text = shown.kind == "other" ? shown.className : shown.kind;
    if (shown.title) text += " '" + *shown.title + "'";
    return text;
}

void checkRow(const Expectation& expectation, const ExpectScene& scene) {
    using Kind = Expectation::Kind;
    const auto row = findRow(scene.page.heldSpecifiers(), expectation.subject);
    if (expectation.kind == Kind::Hidden) {
        if (row)
            throw ExpectationFailed("'" + expectation.subject + "' is shown (#" +
                                    std::to_string(row->index) + ")");
        return;
    }
    if (!row)
        throw ExpectationFailed(rowMissMessage(scene.page.heldSpecifiers(), expectation.subject));
    if (expectation.kind == Kind::Shown) return;
    const auto shows = scene.switchShows(*row);
    if (!shows)
        throw ExpectationFailed("row '" + typedName(scene.page.heldSpecifiers(), *row) +
                                "' is not a switch");
    const bool wanted = expectation.kind == Kind::SwitchOn;
    if (*shows != wanted)
        throw ExpectationFailed("'" + typedName(scene.page.heldSpecifiers(), *row) + "' is " +
                                (*shows ? "on" : "off"));
}

void checkPresented(const std::string& wanted, const ExpectScene& scene) {
    const auto controller = plat::frontmostPresented(scene.page);
    if (!controller) {
        if (wanted != "nothing") throw ExpectationFailed("nothing is presented");
        return;
    }
    const PresentedView shown = presentedViewOf(*controller);
    if (wanted != shown.kind && wanted != shown.className)
        throw ExpectationFailed("presented is " + describe(shown));
}

void checkLog(const std::string& wanted, const ExpectScene& scene) {
    std::string written;
    int lines = 0;
    for (const plat::JournalEntry& entry : scene.sinceLastAction) {
        const auto* log = std::get_if<plat::journal::Log>(&entry);
        if (!log) continue;
        if (log->text.find(wanted) != std::string::npos) return;
        if (++lines <= 3) written += (lines > 1 ? ", '" : "'") + log->text + "'";
    }
    if (lines == 0) throw ExpectationFailed("no line was logged since the last step");
    throw ExpectationFailed("no log line holds '" + wanted + "'; logged: " + written +
                            (lines > 3 ? " and " + std::to_string(lines - 3) + " more" : ""));
}

}  // namespace

Expectation parseExpectation(const std::string& argument) {
    const std::string text = trimmed(argument);
    const std::size_t space = text.find_first_of(" \t");
    const std::string first = text.substr(0, space);
    const std::string rest = space == std::string::npos ? "" : trimmed(text.substr(space));
    if (first == "presented") return parsePresented(rest);
    if (first == "file") return parseFile(rest);
    if (first == "log") {
        if (rest.empty()) throw StepError("expect log needs the TEXT of a log line");
        return {Expectation::Kind::Log, rest};
    }
    const auto [row, state] = splitLast(text);
    using Kind = Expectation::Kind;
    if (row.empty()) throw StepError(kForms);
    if (state == "on") return {Kind::SwitchOn, row};
    if (state == "off") return {Kind::SwitchOff, row};
    if (state == "shown") return {Kind::Shown, row};
    if (state == "hidden") return {Kind::Hidden, row};
    throw StepError(kForms);
}

void checkExpectation(const Expectation& expectation, const ExpectScene& scene) {
    using Kind = Expectation::Kind;
    switch (expectation.kind) {
        case Kind::SwitchOn:
        case Kind::SwitchOff:
        case Kind::Shown:
        case Kind::Hidden:
            checkRow(expectation, scene);
            return;
        case Kind::Presented:
            checkPresented(expectation.subject, scene);
            return;
        case Kind::FileExists:
            if (!scene.root.fileExists(expectation.subject))
                throw ExpectationFailed(expectation.subject + " does not exist");
            return;
        case Kind::FileMissing:
            if (scene.root.fileExists(expectation.subject))
                throw ExpectationFailed(expectation.subject + " exists");
            return;
        case Kind::Log:
            checkLog(expectation.subject, scene);
            return;
    }
}

}  // namespace velto::app
