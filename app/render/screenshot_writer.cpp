#include "app/render/screenshot_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "app/session/step_error.h"
#include "platform/system/device_facts.h"
#include "screen/screenshot.h"

namespace velto::app {

namespace {

// The row the package adds to Settings' own list, as its loader entry names it: the label and
// the bundle's icon.
screen::SettingsEntry settingsEntry(Session& session) {
    const auto pages = session.pages();
    if (pages.empty()) return {"Velto 2", nullptr};
    return {"Velto 2", plat::Image::imageNamed("Velto", pages.front()->bundle())};
}

bool writeAll(int fd, const plat::Bytes& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

// Beside the target and renamed over it: a full disk leaves the old picture whole, and a FIFO
// or a device in its place is refused rather than written to (or waited on for ever).
void replaceFile(const std::string& file, const plat::Bytes& png) {
    struct stat info {};
    mode_t mode = 0644;
    if (::stat(file.c_str(), &info) == 0) {
        if (!S_ISREG(info.st_mode))
            throw StepError("cannot write " + file + ": not a regular file");
        mode = info.st_mode & 07777;
    } else if (errno != ENOENT) {
        throw StepError("cannot write " + file + ": " + std::strerror(errno));
    }
    const std::filesystem::path target(file);
    const std::filesystem::path folder =
        target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
    std::string temp = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) throw StepError("cannot write " + file + ": " + std::strerror(errno));
    bool ok = ::fchmod(fd, mode) == 0 && writeAll(fd, png);
    int error = ok ? 0 : errno;
    if (::close(fd) != 0 && ok) {
        ok = false;
        error = errno;
    }
    if (ok && ::rename(temp.c_str(), file.c_str()) != 0) {
        ok = false;
        error = errno;
    }
    if (ok) return;
    ::unlink(temp.c_str());
    throw StepError("cannot write " + file + ": " + std::strerror(error));
}

}  // namespace

std::size_t writeScreenshot(Session& session, const std::string& file) {
    const auto look = screen::Look::forDevice(plat::DeviceFacts::read(session.process().root()));
    const plat::Bytes png =
        screen::pngBytes(screen::drawScreenshot(*session.topPage(), look, settingsEntry(session)));
    if (png.empty()) throw StepError("cannot write " + file);
    replaceFile(file, png);
    return png.size();
}

}  // namespace velto::app
