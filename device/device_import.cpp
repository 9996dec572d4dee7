#include "device/device_import.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
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

// What an archive's listing may hold before it is taken for hostile: a device has some
// hundred thousand files.
constexpr std::size_t kMaxListing = std::size_t{64} << 20;

void checkStop(const std::atomic<bool>* stop) {
    if (stop && stop->load()) throw std::runtime_error("interrupted");
}

// A descriptor that closes itself.
class Fd {
  public:
    explicit Fd(int fd = -1) : fd_(fd) {}
    ~Fd() {
        if (fd_ >= 0) ::close(fd_);
    }
    Fd(Fd&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
    Fd& operator=(Fd&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

  private:
    int fd_;
};

// `relative` under the folder `top`, opened one component at a time and none of them followed
// if it is a link: a copy holding "var/lib -> /var/lib" must not hand over the host's files.
Fd openBeneath(int top, const std::string& relative, int flags) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= relative.size();) {
        std::size_t end = relative.find('/', start);
        if (end == std::string::npos) end = relative.size();
        std::string part = relative.substr(start, end - start);
        if (part == "..") return Fd();
        if (!part.empty() && part != ".") parts.push_back(std::move(part));
        start = end + 1;
    }
    Fd at(::fcntl(top, F_DUPFD_CLOEXEC, 0));
    for (std::size_t i = 0; at && i < parts.size(); ++i) {
        const bool last = i + 1 == parts.size();
        at = Fd(::openat(at.get(), parts[i].c_str(),
                         (last ? flags : O_RDONLY | O_DIRECTORY) | O_NOFOLLOW | O_CLOEXEC));
    }
    return at;
}

// The whole of a regular file with no other name, or nothing.
std::optional<plat::Bytes> readAlone(int folder, const std::string& name,
                                     const std::string& shown) {
    Fd fd(::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (!fd || ::fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_nlink > 1)
        return std::nullopt;
    if (static_cast<std::uint64_t>(info.st_size) > plat::DeviceRoot::kReadLimit)
        throw std::runtime_error(shown + " is larger than 64 MB, the most a device file may be");
    plat::Bytes bytes(static_cast<std::size_t>(info.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::read(fd.get(), bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += static_cast<std::size_t>(n);
    }
    bytes.resize(done);
    return bytes;
}

struct Walk {
    const plat::DeviceRoot& root;
    const Wanted& wanted;
    const std::regex files;
    const std::atomic<bool>* stop;
    std::size_t copied = 0;

    void folder(int fd, const std::string& prefix, int depth) {
        DIR* listing = ::fdopendir(::fcntl(fd, F_DUPFD_CLOEXEC, 0));
        if (!listing) return;
        std::vector<std::string> names;
        while (const dirent* entry = ::readdir(listing))
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                names.emplace_back(entry->d_name);
        ::closedir(listing);
        for (const std::string& name : names) {
            checkStop(stop);
            struct stat info {};
            if (::fstatat(fd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) continue;
            const std::string relative = prefix + name;
            if (S_ISDIR(info.st_mode) && depth < wanted.depth) {
                Fd below(
                    ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
                if (below) folder(below.get(), relative + "/", depth + 1);
            } else if (S_ISREG(info.st_mode) && std::regex_match(relative, files)) {
                const std::string target = "/" + std::string(wanted.folder) + "/" + relative;
                const auto bytes = readAlone(fd, name, target);
                if (!bytes) continue;
                if (!root.createDirectory(parentOf(target), true) ||
                    !root.writeFile(target, *bytes, true))
                    throw std::runtime_error("cannot write " + target + " into the device at " +
                                             root.describe());
                ++copied;
            }
        }
    }
};

std::size_t copyWanted(const plat::DeviceRoot& root, int top, const Wanted& wanted,
                       const std::atomic<bool>* stop) {
    // On the device /var is a link to /private/var; a copy may hold either.
    Fd folder = openBeneath(top, wanted.folder, O_RDONLY | O_DIRECTORY);
    if (!folder && std::string(wanted.folder).starts_with("var/"))
        folder = openBeneath(top, std::string("private/") + wanted.folder, O_RDONLY | O_DIRECTORY);
    if (!folder) return 0;
    Walk walk{root, wanted, std::regex(wanted.files), stop};
    walk.folder(folder.get(), "", 0);
    return walk.copied;
}

std::size_t copyAll(const plat::DeviceRoot& root, int top, const std::atomic<bool>* stop) {
    std::size_t copied = 0;
    for (const Wanted& wanted : kWanted)
        copied += copyWanted(root, top, wanted, stop);
    return copied;
}

// Whether an archive member is one of the files wanted: under the device's /, its /private,
// or one folder down (an archive of the folder rather than of its contents).
bool isWanted(std::string name) {
    if (name.starts_with("./")) name.erase(0, 2);
    std::vector<std::string> places{name};
    if (const auto slash = name.find('/'); slash != std::string::npos)
        places.push_back(name.substr(slash + 1));
    for (std::size_t i = 0, n = places.size(); i < n; ++i)
        if (places[i].starts_with("private/var/")) places.push_back(places[i].substr(8));
    for (const Wanted& wanted : kWanted) {
        const std::string folder = std::string(wanted.folder) + "/";
        for (const std::string& place : places)
            if (place.starts_with(folder) &&
                std::regex_match(place.substr(folder.size()), std::regex(wanted.files)))
                return true;
    }
    return false;
}

// tar with its output, when asked for, through a pipe; the exit status, or a failure.
// An interrupt stops tar too (it may not be in our terminal's process group).
int runTar(const std::vector<std::string>& arguments, std::string* output,
           const std::atomic<bool>* stop) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    int pipeFds[2] = {-1, -1};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output) {
        if (::pipe2(pipeFds, O_CLOEXEC) != 0) return -1;
        posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
    }
    pid_t pid = 0;
    const int spawned = ::posix_spawnp(&pid, "tar", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (output) ::close(pipeFds[1]);
    if (spawned != 0) {
        if (output) ::close(pipeFds[0]);
        return -1;
    }
    bool overflow = false;
    if (output) {
        char chunk[65536];
        for (;;) {
            const ssize_t n = ::read(pipeFds[0], chunk, sizeof chunk);
            if (n < 0 && errno == EINTR && !(stop && stop->load())) continue;
            if (n <= 0) break;
            output->append(chunk, static_cast<std::size_t>(n));
            if (output->size() > kMaxListing) {
                overflow = true;
                break;
            }
        }
        ::close(pipeFds[0]);
    }
    if (overflow || (stop && stop->load())) ::kill(pid, SIGTERM);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return -1;
        if (stop && stop->load()) ::kill(pid, SIGTERM);
    }
    checkStop(stop);
    if (overflow) throw std::runtime_error("the archive lists more than tar may list here");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A private scratch folder, gone with the object on every way out (an interrupt included:
// it turns into an exception that unwinds to here).
class Scratch {
  public:
    Scratch() {
        std::string pattern = (fs::temp_directory_path() / "velto-import-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("cannot make a scratch folder: " +
                                     std::string(std::strerror(errno)));
        folder_ = pattern;
    }
    ~Scratch() {
        std::error_code ec;
        fs::remove_all(folder_, ec);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    const fs::path& folder() const { return folder_; }

  private:
    fs::path folder_;
};

// Only the wanted members come out of the archive: a device image of gigabytes holds a few
// megabytes the Settings application reads. tar recognises the compression.
std::size_t importArchive(const plat::DeviceRoot& root, const fs::path& archive,
                          const std::atomic<bool>* stop) {
    std::string listing;
    if (runTar({"tar", "-tf", archive.string()}, &listing, stop) != 0)
        throw std::runtime_error("tar could not read " + archive.string());
    // tar lists names with its escapes and reads them back the same way from -T.
    std::string chosen;
    for (std::size_t start = 0; start < listing.size();) {
        std::size_t end = listing.find('\n', start);
        if (end == std::string::npos) end = listing.size();
        const std::string name = listing.substr(start, end - start);
        if (isWanted(name)) chosen += name + "\n";
        start = end + 1;
    }
    if (chosen.empty()) return 0;
    Scratch scratch;
    const fs::path list = scratch.folder() / "wanted", tree = scratch.folder() / "tree";
    {
        Fd out(::open(list.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!out ||
            ::write(out.get(), chosen.data(), chosen.size()) != static_cast<ssize_t>(chosen.size()))
            throw std::runtime_error("cannot write the scratch folder " +
                                     scratch.folder().string());
    }
    fs::create_directory(tree);
    // Owners and modes of the device's files mean nothing here, and must not fail the run.
    if (runTar({"tar", "-xf", archive.string(), "-C", tree.string(), "--no-same-owner",
                "--no-same-permissions", "--no-recursion", "-T", list.string()},
               nullptr, stop) != 0)
        throw std::runtime_error("tar could not unpack " + archive.string());
    Fd top(::open(tree.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::size_t copied = copyAll(root, top.get(), stop);
    // An archive of the folder, rather than of its contents, has the device one level down.
    if (copied == 0) {
        std::vector<std::string> entries;
        for (const auto& entry : fs::directory_iterator(tree))
            entries.push_back(entry.path().filename().string());
        if (entries.size() == 1)
            if (Fd below = openBeneath(top.get(), entries[0], O_RDONLY | O_DIRECTORY))
                copied = copyAll(root, below.get(), stop);
    }
    return copied;
}

}  // namespace

std::size_t importDeviceFiles(const plat::DeviceRoot& root, const fs::path& source,
                              const std::atomic<bool>* stop) {
    std::error_code ec;
    std::size_t copied = 0;
    if (fs::is_regular_file(source, ec)) {
        copied = importArchive(root, source, stop);
    } else if (fs::is_directory(source, ec)) {
        Fd top(::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!top) throw std::runtime_error("cannot read " + source.string());
        copied = copyAll(root, top.get(), stop);
    } else {
        throw std::runtime_error("nothing to import at " + source.string());
    }
    if (copied == 0)
        throw std::runtime_error(source.string() +
                                 " holds no preferences, applications, package database or "
                                 "system version of a device");
    return copied;
}

}  // namespace velto::device
