#include "app/session/line_editor.h"

#include <histedit.h>
#include <langinfo.h>

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include "app/commands/device_location.h"
#include "app/session/history_file.h"

namespace velto::app {

namespace {

constexpr int kHistorySize = 1000;
// Marks the start and end of the prompt's colour codes, which take no room on the screen.
constexpr char kInvisible = '\1';

volatile std::sig_atomic_t lineInterrupted = 0;

void onLineInterrupt(int) {
    lineInterrupted = 1;
}

// Ctrl-C at the prompt throws the line away, as a shell does, instead of ending the session.
// The editor's own handler puts the terminal back and passes the signal on to this one, whose
// interruption of the read ends el_gets.
class PromptInterruptScope {
  public:
    PromptInterruptScope() {
        struct sigaction action {};
        action.sa_handler = onLineInterrupt;
        sigemptyset(&action.sa_mask);
        action.sa_flags = 0;  // no restart: the read must end
        ::sigaction(SIGINT, &action, &previous_);
    }
    ~PromptInterruptScope() { ::sigaction(SIGINT, &previous_, nullptr); }
    PromptInterruptScope(const PromptInterruptScope&) = delete;
    PromptInterruptScope& operator=(const PromptInterruptScope&) = delete;

  private:
    struct sigaction previous_ {};
};

// Labels are UTF-8; the editor must count "…" as one character, whatever the locale says.
void useUtf8Input() {
    if (std::setlocale(LC_CTYPE, "") && std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0) return;
    std::setlocale(LC_CTYPE, "C.UTF-8");
}

std::size_t characters(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

// The candidates under the line, in as many columns as the terminal holds.
void list(const std::vector<std::string>& candidates, int width) {
    std::size_t widest = 0;
    for (const std::string& candidate : candidates)
        widest = std::max(widest, characters(candidate));
    const std::size_t column = widest + 2;
    const std::size_t perLine =
        std::max<std::size_t>(1, static_cast<std::size_t>(std::max(width, 20)) / column);
    std::string text = "\n";
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const bool last = (i + 1) % perLine == 0 || i + 1 == candidates.size();
        text += candidates[i];
        if (!last) text += std::string(column - characters(candidates[i]), ' ');
        if (last) text += "\n";
    }
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
}

}  // namespace

LineEditor::LineEditor(std::filesystem::path historyFile, Completer completer, bool colour)
    : historyFile_(std::move(historyFile)), completer_(std::move(completer)), colour_(colour) {
    useUtf8Input();
    history_ = history_init();
    editor_ = el_init("velto-settings", stdin, stdout, stderr);
    if (!history_ || !editor_) throw std::runtime_error("the line editor could not start");
    HistEvent event;
    history(history_, &event, H_SETSIZE, kHistorySize);
    history(history_, &event, H_SETUNIQUE, 1);
    if (!historyFile_.empty()) steps_ = loadHistory(historyFile_, kHistorySize);
    for (const std::string& step : steps_)
        history(history_, &event, H_ENTER, step.c_str());

    el_set(editor_, EL_CLIENTDATA, this);
    el_set(editor_, EL_EDITOR, "emacs");
    // The terminal is put back as it was when the session is stopped or interrupted.
    el_set(editor_, EL_SIGNAL, 1);
    el_set(editor_, EL_HIST, history, history_);
    el_set(editor_, EL_PROMPT_ESC, &LineEditor::promptOf, kInvisible);
    // The wide form keeps the names as given: the narrow one copies them and never frees the
    // copies, which LeakSanitizer reports at every exit.
    el_wset(editor_, EL_ADDFN, L"velto-complete", L"complete a step, row or action",
            &LineEditor::onTab);
    el_set(editor_, EL_BIND, "^I", "velto-complete", nullptr);
    el_set(editor_, EL_BIND, "^L", "ed-clear-screen", nullptr);
    // A user's ~/.editrc may choose vi keys or bind more.
    el_source(editor_, nullptr);
}

LineEditor::~LineEditor() {
    if (editor_) el_end(editor_);
    if (history_) history_end(history_);
}

std::filesystem::path LineEditor::defaultHistoryFile() {
    try {
        const std::filesystem::path folder = demoDeviceFolder().parent_path();
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error) return {};
        return folder / "history";
    } catch (const std::exception&) {
        return {};
    }
}

std::optional<std::string> LineEditor::read(const std::string& prompt) {
    prompt_ = prompt;
    int count = 0;
    const char* line = nullptr;
    const PromptInterruptScope interrupts;
    for (;;) {
        lineInterrupted = 0;
        errno = 0;
        line = el_gets(editor_, &count);
        if (lineInterrupted) {
            std::fputs("^C\n", stdout);
            std::fflush(stdout);
            continue;
        }
        if (line || count >= 0 || errno != EINTR) break;
    }
    if (!line || count <= 0) return std::nullopt;
    std::string text(line);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    if (text.find_first_not_of(" \t") != std::string::npos) {
        HistEvent event;
        history(history_, &event, H_ENTER, text.c_str());
        if (steps_.empty() || steps_.back() != text) steps_.push_back(text);
        if (steps_.size() > static_cast<std::size_t>(kHistorySize)) steps_.erase(steps_.begin());
        if (!historyFile_.empty()) saveHistory(historyFile_, steps_);
    }
    return text;
}

const char* LineEditor::promptOf(editline* editor) {
    void* data = nullptr;
    el_get(editor, EL_CLIENTDATA, &data);
    auto* self = static_cast<LineEditor*>(data);
    static thread_local std::string shown;
    shown = self->prompt_;
    if (self->colour_ && !shown.empty()) {
        const std::size_t end = shown.find_last_not_of(' ') + 1;
        shown = std::string(1, kInvisible) + "\033[1;36m" + kInvisible + shown.substr(0, end) +
                kInvisible + "\033[0m" + kInvisible + shown.substr(end);
    }
    return shown.c_str();
}

unsigned char LineEditor::onTab(editline* editor, int) {
    void* data = nullptr;
    el_get(editor, EL_CLIENTDATA, &data);
    return static_cast<LineEditor*>(data)->completeLine();
}

unsigned char LineEditor::completeLine() {
    const LineInfo* info = el_line(editor_);
    const std::string typed(info->buffer, info->cursor);
    const Completion found = completer_(typed);
    if (found.candidates.empty() || found.start > typed.size()) return CC_ERROR;

    const std::string replaced = typed.substr(found.start);
    const std::string prefix = commonPrefix(found.candidates);
    if (prefix.size() >= replaced.size() && prefix != replaced) {
        el_deletestr(editor_, static_cast<int>(characters(replaced)));
        if (el_insertstr(editor_, prefix.c_str()) != 0) return CC_ERROR;
        return CC_REFRESH;
    }
    if (found.candidates.size() == 1) return CC_REFRESH;
    int width = 80;
    el_get(editor_, EL_GETTC, "co", &width, nullptr);
    list(found.candidates, width);
    return CC_REDISPLAY;
}

}  // namespace velto::app
