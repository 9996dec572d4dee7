#include "app/session/ui_restart.h"

#include <sstream>
#include <vector>

namespace velto::app {

namespace {

std::vector<std::string> words(const std::string& command) {
    std::istringstream in(command);
    std::vector<std::string> out;
    for (std::string word; in >> word;) {
        // Quoting is stripped the simple way: the bundle's commands never nest quotes.
        if (word.size() >= 2 && (word.front() == '\'' || word.front() == '"') &&
            word.back() == word.front())
            word = word.substr(1, word.size() - 2);
        out.push_back(word);
    }
    return out;
}

std::string programName(const std::string& word) {
    return word.substr(word.rfind('/') + 1);
}

}  // namespace

std::optional<plat::ShellResult> interceptRestart(const std::string& command,
                                                  const std::function<void()>& requestRestart) {
    const std::vector<std::string> parts = words(command);
    if (parts.empty()) return std::nullopt;
    const std::string program = programName(parts[0]);
    if (program == "sbreload") {
        requestRestart();
        return plat::ShellResult{0, ""};
    }
    if (program != "killall") return std::nullopt;

    bool restart = false;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (parts[i].empty() || parts[i][0] == '-') continue;
        if (parts[i] == "backboardd" || parts[i] == "SpringBoard") restart = true;
    }
    if (!restart) return plat::ShellResult{1, ""};
    requestRestart();
    return plat::ShellResult{0, ""};
}

}  // namespace velto::app
