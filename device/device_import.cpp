#include "device/device_import.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <iterator>
#include <optional>
#include <regex>
#include <stdexcept>
#include <vector>

#include "device/plist_writing.h"
#include "platform/system/device_root.h"

extern char** environ;

namespace velto::device {

namespace {

namespace fs = std::filesystem;

struct Wanted {
    const char* folder;  // where to look, relative to the device's /
    int depth;           // how many folders down the files lie
    const char* files;   // the files taken, as a pattern on the path relative to the folder
};

constexpr std::array<Wanted, 6> kWanted = {{
    {"var/mobile/Library/Preferences", 0, "[^/]+\\.plist"},
    {"Applications", 1, "[^/]+\\.app/(Info\\.plist|[^/]+\\.png)"},
    {"var/containers/Bundle/Application", 2,
     "[^/]+/([^/]+\\.app/(Info\\.plist|[^/]+\\.png)|"
     "\\.com\\.apple\\.mobile_container_manager\\.metadata\\.plist)"},
    {"var/mobile/Containers/Data/Application", 1,
     "[^/]+/\\.com\\.apple\\.mobile_container_manager\\.metadata\\.plist"},
    {"var/lib/dpkg", 0, "status"},
    {"System/Library/CoreServices", 0, "SystemVersion\\.plist"},
}};

// Unpacked into a scratch folder removed with the object; tar recognises the compression.
class UnpackedArchive {
  public:
    explicit UnpackedArchive(const fs::path& archive)
        : folder_(fs::temp_directory_path() / ("velto-import-" + std::to_string(::getpid()))) {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
        const std::string file = archive.string(), into = folder_.string();
        // Owners and modes of the device's files mean nothing here, and must not fail the run.
        const char* argv[] = {"tar",
                              "-xf",
                              file.c_str(),
                              "-C",
                              into.c_str(),
                              "--no-same-owner",
                              "--no-same-permissions",
                              nullptr};
        pid_t pid = 0;
        int status = 0;
        if (::posix_spawnp(&pid, "tar", nullptr, nullptr, const_cast<char* const*>(argv),
                           environ) != 0 ||
            ::waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
            throw std::runtime_error("tar could not unpack " + archive.string());
    }
    ~UnpackedArchive() {
        std::error_code ec;
        fs::remove_all(folder_, ec);
    }
    UnpackedArchive(const UnpackedArchive&) = delete;
    UnpackedArchive& operator=(const UnpackedArchive&) = delete;
    const fs::path& folder() const { return folder_; }

  private:
    fs::path folder_;
};

plat::Bytes readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return plat::Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::size_t copyWanted(const plat::DeviceRoot& root, const fs::path& top, const Wanted& wanted) {
    // On the device /var is a link to /private/var; a copy may hold either.
    fs::path folder = top / wanted.folder;
    std::error_code ec;
    if (std::string(wanted.folder).starts_with("var/") &&
        !fs::is_directory(fs::symlink_status(folder, ec)))
        folder = top / "private" / wanted.folder;
    if (!fs::is_directory(fs::symlink_status(folder, ec))) return 0;

    const std::regex files(wanted.files);
    std::size_t copied = 0;
    for (auto it = fs::recursive_directory_iterator(folder, ec); !ec && it != fs::end(it);
         it.increment(ec)) {
        if (it->is_symlink(ec)) continue;
        if (it->is_directory(ec)) {
            if (it.depth() >= wanted.depth) it.disable_recursion_pending();
            continue;
        }
        const std::string relative = fs::relative(it->path(), folder, ec).generic_string();
        if (!it->is_regular_file(ec) || !std::regex_match(relative, files)) continue;
        const std::string target = "/" + std::string(wanted.folder) + "/" + relative;
        if (!root.createDirectory(parentOf(target), true) ||
            !root.writeFile(target, readFile(it->path()), true))
            throw std::runtime_error("cannot write " + target + " into the device at " +
                                     root.describe());
        ++copied;
    }
    return copied;
}

}  // namespace

std::size_t importDeviceFiles(const plat::DeviceRoot& root, const fs::path& source) {
    std::error_code ec;
    std::optional<UnpackedArchive> archive;
    if (fs::is_regular_file(source, ec))
        archive.emplace(source);
    else if (!fs::is_directory(source, ec))
        throw std::runtime_error("nothing to import at " + source.string());
    fs::path top = archive ? archive->folder() : source;
    std::size_t copied = 0;
    for (const Wanted& wanted : kWanted)
        copied += copyWanted(root, top, wanted);
    // An archive of the folder, rather than of its contents, has the device one level down.
    if (copied == 0 && archive) {
        std::vector<fs::path> entries;
        for (auto it = fs::directory_iterator(top, ec); !ec && it != fs::end(it); it.increment(ec))
            entries.push_back(it->path());
        if (entries.size() == 1 && fs::is_directory(fs::symlink_status(entries[0], ec)))
            for (const Wanted& wanted : kWanted)
                copied += copyWanted(root, entries[0], wanted);
    }
    if (copied == 0)
        throw std::runtime_error(source.string() +
                                 " holds no preferences, applications, package database or "
                                 "system version of a device");
    return copied;
}

}  // namespace velto::device
