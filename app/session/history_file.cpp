#include "app/session/history_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>

#include "app/host_files.h"
#include "platform/foundation/strings.h"

namespace velto::app {

namespace {

constexpr off_t kMaxHistoryBytes = 1 << 20;
// The first line of a file the line editor wrote itself.
constexpr const char* kEditorHeader = "_HiStOrY_V2_";

bool isOctal(char c) {
    return c >= '0' && c <= '7';
}

// The editor's escapes that its own saves hold: "\ooo" and "\\". Anything else stays as it is.
std::string unescaped(const std::string& line) {
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\' && i + 3 < line.size() && isOctal(line[i + 1]) &&
            isOctal(line[i + 2]) && isOctal(line[i + 3])) {
            text.push_back(static_cast<char>((line[i + 1] - '0') * 64 + (line[i + 2] - '0') * 8 +
                                             (line[i + 3] - '0')));
            i += 3;
        } else if (line[i] == '\\' && i + 1 < line.size() && line[i + 1] == '\\') {
            text.push_back('\\');
            ++i;
        } else {
            text.push_back(line[i]);
        }
    }
    return text;
}

bool isStepText(const std::string& text) {
    if (text.empty() || !plat::isValidUTF8(text)) return false;
    for (unsigned char c : text)
        if (c < 0x20 || c == 0x7f) return false;
    return true;
}

}  // namespace

std::vector<std::string> loadHistory(const std::filesystem::path& file, std::size_t most) {
    std::vector<std::string> steps;
    const int fd = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return steps;
    struct stat info {};
    std::string bytes;
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size <= kMaxHistoryBytes) {
        char chunk[16384];
        for (ssize_t n; (n = ::read(fd, chunk, sizeof chunk)) != 0;) {
            if (n < 0 && errno == EINTR) continue;
            if (n < 0 || bytes.size() + static_cast<std::size_t>(n) > kMaxHistoryBytes) break;
            bytes.append(chunk, static_cast<std::size_t>(n));
        }
    }
    ::close(fd);
    std::size_t start = 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\n', start);
        if (end == std::string::npos) end = bytes.size();
        const std::string line = bytes.substr(start, end - start);
        start = end + 1;
        if (line == kEditorHeader) continue;
        const std::string step = unescaped(line);
        if (isStepText(step) && (steps.empty() || steps.back() != step)) steps.push_back(step);
    }
    if (steps.size() > most) steps.erase(steps.begin(), steps.end() - static_cast<long>(most));
    return steps;
}

bool saveHistory(const std::filesystem::path& file, const std::vector<std::string>& steps) {
    std::string text;
    for (const std::string& step : steps)
        text += step + "\n";
    // Beside the file and renamed over it, so a full disk never leaves half a history.
    return writeHostFile(file.string(), plat::Bytes(text.begin(), text.end()), std::cout)
        .has_value();
}

}  // namespace velto::app
