#pragma once

#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/session/completion.h"

// libedit's handles, kept out of the headers of everyone who reads lines.
struct editline;
struct history;

namespace velto::app {

// A line of input at a terminal, edited as in a shell (libedit): emacs keys or the user's
// ~/.editrc, history kept in a file across sessions, Tab completing from what the completer
// offers, Ctrl-L clearing the screen.
class LineEditor {
  public:
    using Completer = std::function<Completion(const std::string& typed)>;

    // `historyFile` empty keeps the history for this session only. `colour` paints the prompt.
    LineEditor(std::filesystem::path historyFile, Completer completer, bool colour);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    // The next line without its newline; nullopt at end of input (Ctrl-D on an empty line).
    // A line with anything but blanks goes into the history, and the history file is saved
    // at once, so a session that is killed loses nothing.
    std::optional<std::string> read(const std::string& prompt);

    // Where the session's history is kept: history in the simulator's state folder, beside the
    // demo device; empty when there is no state folder.
    static std::filesystem::path defaultHistoryFile();

  private:
    static unsigned char onTab(editline* editor, int key);
    static const char* promptOf(editline* editor);
    unsigned char completeLine();

    editline* editor_ = nullptr;
    history* history_ = nullptr;
    std::filesystem::path historyFile_;
    Completer completer_;
    bool colour_;
    std::string prompt_;
    std::vector<std::string> steps_;  // the history as it is saved, oldest first
};

}  // namespace velto::app
