#include "platform/system/host_device_root.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <system_error>

#include "platform/system/host_file_writes.h"

namespace plat {

namespace fs = std::filesystem;

namespace {

// Where a host path really lies, symbolic links followed, the way realpath(3) would answer
// but tolerating a missing tail. A dangling link is followed too (weakly_canonical would stop
// in front of it), because writing through it would create its target.
// `from` is where the walk starts (a real location already); `path` is relative to it, or
// absolute.
std::optional<fs::path> realLocation(const fs::path& path, fs::path from = "/") {
    std::deque<fs::path> todo(path.begin(), path.end());
    fs::path result = std::move(from);
    if (!todo.empty() && todo.front() == "/") todo.pop_front();
    int links = 0;
    while (!todo.empty()) {
        fs::path component = std::move(todo.front());
        todo.pop_front();
        if (component.empty() || component == ".") continue;
        if (component == "..") {
            result = result.parent_path();
            continue;
        }
        fs::path next = result / component;
        std::error_code ec;
        auto status = fs::symlink_status(next, ec);
        if (!ec && fs::is_symlink(status)) {
            if (++links > 40) return std::nullopt;  // ELOOP, as the kernel would say
            fs::path target = fs::read_symlink(next, ec);
            if (ec) return std::nullopt;
            if (target.is_absolute()) result = "/";
            std::deque<fs::path> expanded(target.begin(), target.end());
            if (!expanded.empty() && expanded.front() == "/") expanded.pop_front();
            todo.insert(todo.begin(), expanded.begin(), expanded.end());
            continue;
        }
        result = std::move(next);
    }
    return result;
}

// Where an existing host path really lies, by the kernel's own walk: one open, and the location
// read back from the descriptor. Every file access resolves its path, and a walk of our own
// costs an lstat per component. Nothing when the path or a link on it leads nowhere; the walk
// above answers those.
std::optional<fs::path> kernelLocation(const fs::path& path) {
    const int fd = ::open(path.c_str(), O_PATH | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    char buffer[PATH_MAX];
    const std::string descriptor = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t n = ::readlink(descriptor.c_str(), buffer, sizeof buffer);
    ::close(fd);
    if (n <= 0 || static_cast<std::size_t>(n) >= sizeof buffer || buffer[0] != '/')
        return std::nullopt;
    return fs::path(std::string(buffer, static_cast<std::size_t>(n)));
}

// Where a path that is not there would be made: below the nearest folder on it that is there,
// when the name right under that folder is truly absent (not a link leading nowhere, which the
// walk must follow). Asked most often for a file not made yet, or a table a bundle lacks.
std::optional<fs::path> missingLocation(const fs::path& inside, const fs::path& realRoot) {
    std::vector<fs::path> absent;
    for (fs::path at = inside; !at.empty(); at = at.parent_path()) {
        absent.push_back(at.filename());
        const fs::path above = at.parent_path();
        auto folder =
            above.empty() ? std::optional<fs::path>(realRoot) : kernelLocation(realRoot / above);
        if (!folder) {
            if (errno != ENOENT) return std::nullopt;
            continue;
        }
        struct stat status;
        if (::lstat((*folder / absent.back()).c_str(), &status) == 0 || errno != ENOENT)
            return std::nullopt;
        fs::path real = *folder;
        for (auto name = absent.rbegin(); name != absent.rend(); ++name)
            real /= *name;
        return real;
    }
    return std::nullopt;
}

bool isWithin(const fs::path& path, const fs::path& folder) {
    auto p = path.begin();
    for (auto f = folder.begin(); f != folder.end(); ++f, ++p) {
        if (f->empty()) continue;  // a trailing separator on the folder
        if (p == path.end() || *p != *f) return false;
    }
    return true;
}

std::string errnoText(int error) {
    return std::strerror(error);
}

// "Cannot read /var/x: No such file or directory".
PortStatus failed(std::string_view verb, std::string_view devicePath, const std::string& why) {
    std::string text = "Cannot ";
    text += verb;
    text += ' ';
    text += devicePath;
    text += ": ";
    text += why;
    return portFailure(std::move(text));
}

template <class T>
PortResult<T> failedWith(const PortStatus& failure) {
    return PortResult<T>::failure(failure.error());
}

const char* const kOutside = "outside the device";
// A second name for a file may lie anywhere on the host's file system, and nothing tells where:
// such a file is refused as a link leading outside would be.
const char* const kHardLinked = "a hard link (the file has another name, maybe outside the device)";

FileStatus statusOf(const struct stat& info) {
    FileStatus status;
    status.kind = S_ISREG(info.st_mode)   ? FileKind::File
                  : S_ISDIR(info.st_mode) ? FileKind::Folder
                                          : FileKind::Other;
    status.version.device = static_cast<std::uint64_t>(info.st_dev);
    status.version.inode = static_cast<std::uint64_t>(info.st_ino);
    status.version.size = static_cast<std::uint64_t>(info.st_size);
    status.version.modified =
        static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
    return status;
}

}  // namespace

HostDeviceRoot::HostDeviceRoot(fs::path hostRoot)
    : hostRoot_(fs::absolute(std::move(hostRoot)).lexically_normal()) {
    // "/tmp/root/" and "/tmp/root" must resolve alike.
    if (!hostRoot_.has_filename() && hostRoot_.has_parent_path() &&
        hostRoot_ != hostRoot_.root_path())
        hostRoot_ = hostRoot_.parent_path();
}

std::optional<fs::path> HostDeviceRoot::resolve(std::string_view devicePath) const {
    observe(devicePath);
    // Lexically first, then for real below.
    const auto parts = devicePathComponents(devicePath);
    fs::path host = hostRoot_, inside;
    for (auto part : parts) {
        host /= fs::path(std::string(part));
        inside /= fs::path(std::string(part));
    }

    // Then for real: a symbolic link inside the root may point anywhere on the host. The walk
    // starts at the root's real location, found once: every file access passes here.
    std::optional<fs::path> realRoot;
    {
        std::lock_guard lock(realRootMutex_);
        if (!realRoot_) realRoot_ = realLocation(hostRoot_);
        realRoot = realRoot_;
    }
    if (!realRoot) return std::nullopt;
    auto real = kernelLocation(host);
    if (!real) real = missingLocation(inside, *realRoot);
    if (!real) real = realLocation(inside, *realRoot);
    if (!real || !isWithin(*real, *realRoot)) return std::nullopt;
    return host;
}

PortResult<FileStatus> HostDeviceRoot::status(std::string_view devicePath) const {
    auto host = resolve(devicePath);
    if (!host) return failedWith<FileStatus>(failed("look at", devicePath, kOutside));
    struct stat info {};
    if (::stat(host->c_str(), &info) != 0)
        return failedWith<FileStatus>(failed("look at", devicePath, errnoText(errno)));
    return statusOf(info);
}

PortResult<Bytes> HostDeviceRoot::readFile(std::string_view devicePath, std::uint64_t limit) const {
    const auto refused = [&](const std::string& why) {
        return failedWith<Bytes>(failed("read", devicePath, why));
    };
    const std::string tooLarge = "larger than " + std::to_string(limit) + " bytes";
    auto host = resolve(devicePath);
    if (!host) return refused(kOutside);
    // The type and size first: opening a FIFO for reading waits for a writer for ever.
    struct stat info {};
    if (::stat(host->c_str(), &info) != 0) return refused(errnoText(errno));
    if (!S_ISREG(info.st_mode)) return refused("not a regular file");
    if (static_cast<std::uint64_t>(info.st_size) > limit) return refused(tooLarge);
    // Non-blocking as well, for whatever replaced the file since.
    int fd = ::open(host->c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return refused(errnoText(errno));
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) ||
        static_cast<std::uint64_t>(info.st_size) > limit) {
        ::close(fd);
        return refused("changed while it was opened");
    }
    if (info.st_nlink > 1) {
        ::close(fd);
        return refused(kHardLinked);
    }
    Bytes bytes;
    bytes.reserve(static_cast<std::size_t>(info.st_size));
    std::uint8_t chunk[16384];
    for (;;) {
        ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n < 0) {
            if (errno == EINTR) continue;
            const int error = errno;
            ::close(fd);
            return refused(errnoText(error));
        }
        if (n == 0) break;
        // A file growing while we read stops at the limit too.
        if (bytes.size() + static_cast<std::size_t>(n) > limit) {
            ::close(fd);
            return refused(tooLarge);
        }
        bytes.insert(bytes.end(), chunk, chunk + n);
    }
    ::close(fd);
    return bytes;
}

PortStatus HostDeviceRoot::writeFile(std::string_view devicePath, const Bytes& bytes,
                                     bool atomically) const {
    auto host = resolve(devicePath);
    if (!host) return failed("write", devicePath, kOutside);
    if (!host->has_filename()) return failed("write", devicePath, "not a file name");

    if (!atomically) {
        // Same inode: whoever holds the file open, or links to it, sees the new contents.
        // Non-blocking: a FIFO without a reader fails at once instead of waiting for ever, and
        // anything but a regular file is refused before it is written.
        int fd = ::open(host->c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0644);
        if (fd < 0) return failed("write", devicePath, errnoText(errno));
        struct stat info {};
        if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
            ::close(fd);
            return failed("write", devicePath, "not a regular file");
        }
        if (info.st_nlink > 1) {
            ::close(fd);
            return failed("write", devicePath, kHardLinked);
        }
        bool ok = ::ftruncate(fd, 0) == 0 && writeAll(fd, bytes);
        int error = ok ? 0 : errno;
        if (::close(fd) != 0 && ok) {
            ok = false;
            error = errno;
        }
        if (!ok) return failed("write", devicePath, errnoText(error));
        return portSuccess();
    }

    // Readers see the old file or the new one, never half of it. A link inside the device is
    // written through and stays a link, and the new file keeps the old one's permissions.
    fs::path target = *host;
    struct stat existing {};
    if (::lstat(host->c_str(), &existing) == 0 && S_ISLNK(existing.st_mode))
        if (auto real = kernelLocation(*host)) target = std::move(*real);
    mode_t mode = 0644;
    if (::stat(target.c_str(), &existing) == 0 && S_ISREG(existing.st_mode))
        mode = existing.st_mode & 07777;
    if (const int error = replaceHostFile(target, bytes, mode))
        return failed("write", devicePath, errnoText(error));
    return portSuccess();
}

PortStatus HostDeviceRoot::createDirectory(std::string_view devicePath,
                                           bool withIntermediates) const {
    auto host = resolve(devicePath);
    if (!host) return failed("create", devicePath, kOutside);
    std::error_code ec;
    if (withIntermediates) {
        // An existing folder is success here, as it is for the Foundation call.
        fs::create_directories(*host, ec);
        if (!ec && fs::is_directory(*host, ec)) return portSuccess();
        if (!ec) ec = std::make_error_code(std::errc::file_exists);
    } else {
        bool made = fs::create_directory(*host, ec);
        if (made) return portSuccess();
        if (!ec) ec = std::make_error_code(std::errc::file_exists);
    }
    return failed("create", devicePath, ec.message());
}

PortStatus HostDeviceRoot::removeItem(std::string_view devicePath) const {
    auto host = resolve(devicePath);
    if (!host) return failed("remove", devicePath, kOutside);
    if (*host == hostRoot_) return failed("remove", devicePath, errnoText(EPERM));
    std::error_code ec;
    // symlink_status: a link is removed itself, never what it points to.
    if (!fs::exists(fs::symlink_status(*host, ec)))
        return failed("remove", devicePath, errnoText(ENOENT));
    fs::remove_all(*host, ec);
    if (ec) return failed("remove", devicePath, ec.message());
    return portSuccess();
}

PortStatus HostDeviceRoot::appendFile(std::string_view devicePath, const Bytes& bytes) const {
    auto host = resolve(devicePath);
    if (!host) return failed("append to", devicePath, kOutside);
    if (!host->has_filename()) return failed("append to", devicePath, "not a file name");
    int fd = ::open(host->c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0644);
    if (fd < 0) return failed("append to", devicePath, errnoText(errno));
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return failed("append to", devicePath, "not a regular file");
    }
    bool ok = writeAll(fd, bytes);
    int error = ok ? 0 : errno;
    if (::close(fd) != 0 && ok) {
        ok = false;
        error = errno;
    }
    if (!ok) return failed("append to", devicePath, errnoText(error));
    return portSuccess();
}

PortStatus HostDeviceRoot::moveItem(std::string_view from, std::string_view to) const {
    const auto source = resolve(from);
    const auto target = resolve(to);
    const std::string verb = "move " + std::string(from) + " to";
    if (!source || !target) return failed(verb, to, kOutside);
    // renameat2 with RENAME_NOREPLACE is not everywhere; a link-then-unlink would not move
    // folders. Racing writers of the destination are not a concern of this process.
    struct stat info {};
    if (::lstat(target->c_str(), &info) == 0) return failed(verb, to, errnoText(EEXIST));
    if (std::rename(source->c_str(), target->c_str()) != 0)
        return failed(verb, to, errnoText(errno));
    return portSuccess();
}

std::optional<fs::path> HostDeviceRoot::hostFolderHolding(std::string_view) const {
    return hostRoot_;
}

std::vector<std::string> HostDeviceRoot::contentsOfDirectory(std::string_view devicePath) const {
    std::vector<std::string> names;
    auto host = resolve(devicePath);
    if (!host) return names;
    std::error_code ec;
    for (fs::directory_iterator it(*host, ec), end; !ec && it != end; it.increment(ec))
        names.push_back(it->path().filename().string());
    if (ec) return {};
    std::sort(names.begin(), names.end());
    return names;
}

namespace {

// flock(2) excludes open files, not processes: a thread that takes a folder again while it
// holds it must reuse its descriptor, or it would wait for itself.
struct HeldFolder {
    int fd = -1;
    int depth = 0;
};
thread_local std::map<std::string, HeldFolder> heldFolders;

class FolderFlock final : public DeviceRoot::FolderLock {
  public:
    explicit FolderFlock(std::string key) : key_(std::move(key)) {}
    ~FolderFlock() override {
        auto held = heldFolders.find(key_);
        if (held == heldFolders.end() || --held->second.depth > 0) return;
        ::close(held->second.fd);  // and with it the lock
        heldFolders.erase(held);
    }
    FolderFlock(const FolderFlock&) = delete;
    FolderFlock& operator=(const FolderFlock&) = delete;

  private:
    std::string key_;
};

}  // namespace

std::unique_ptr<DeviceRoot::FolderLock> HostDeviceRoot::lockFolder(
    std::string_view devicePath) const {
    const auto host = resolve(devicePath);
    if (!host) return nullptr;
    const auto real = kernelLocation(*host);
    if (!real) return nullptr;
    const std::string key = real->string();
    if (auto held = heldFolders.find(key); held != heldFolders.end()) {
        ++held->second.depth;
        return std::make_unique<FolderFlock>(key);
    }
    const int fd = ::open(real->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return nullptr;
    while (::flock(fd, LOCK_EX) != 0) {
        if (errno == EINTR) continue;
        ::close(fd);
        return nullptr;
    }
    heldFolders[key] = HeldFolder{fd, 1};
    return std::make_unique<FolderFlock>(key);
}

}  // namespace plat
