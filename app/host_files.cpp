#include "app/host_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "platform/system/host_file_writes.h"

namespace velto::app {

namespace {

const std::string kTooLarge = "larger than 64 MB, the most a property list may hold here";

plat::PortResult<plat::Bytes> unreadable(std::string why) {
    return plat::PortResult<plat::Bytes>::failure(std::move(why));
}

mode_t currentUmask() {
    const mode_t mask = ::umask(022);
    ::umask(mask);
    return mask;
}

}  // namespace

plat::PortResult<plat::Bytes> readHostFile(const std::string& path, std::istream& standardInput) {
    plat::Bytes bytes;
    char chunk[65536];
    if (path == "-") {
        while (standardInput.read(chunk, sizeof chunk) || standardInput.gcount() > 0) {
            bytes.insert(bytes.end(), chunk, chunk + standardInput.gcount());
            if (bytes.size() > kHostReadLimit) return unreadable("standard input is " + kTooLarge);
        }
        if (standardInput.bad()) return unreadable("cannot read standard input");
        return bytes;
    }
    // Non-blocking, and the type checked on the open file: a FIFO must not hang the run.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return unreadable("cannot read " + path + ": " + std::strerror(errno));
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return unreadable("cannot read " + path + ": not a regular file");
    }
    if (static_cast<std::uint64_t>(info.st_size) > kHostReadLimit) {
        ::close(fd);
        return unreadable(path + " is " + kTooLarge);
    }
    for (;;) {
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            const int error = errno;
            ::close(fd);
            return unreadable("cannot read " + path + ": " + std::strerror(error));
        }
        if (n == 0) break;
        bytes.insert(bytes.end(), chunk, chunk + n);
        if (bytes.size() > kHostReadLimit) {  // grown since the size was taken
            ::close(fd);
            return unreadable(path + " is " + kTooLarge);
        }
    }
    ::close(fd);
    return bytes;
}

plat::PortStatus writeHostFile(const std::string& path, const plat::Bytes& bytes,
                               std::ostream& standardOutput) {
    namespace fs = std::filesystem;
    const auto refused = [&](const std::string& why) {
        return plat::portFailure("cannot write " + path + ": " + why);
    };
    if (path == "-") {
        standardOutput.write(reinterpret_cast<const char*>(bytes.data()),
                             static_cast<std::streamsize>(bytes.size()));
        standardOutput.flush();
        return standardOutput ? plat::portSuccess() : refused("standard output is closed");
    }
    std::error_code ec;
    fs::path target(path);
    if (fs::is_symlink(fs::symlink_status(target, ec))) {
        target = fs::weakly_canonical(target, ec);
        if (ec) return refused(ec.message());
    }
    mode_t mode = 0666 & ~currentUmask();
    struct stat info {};
    if (::stat(target.c_str(), &info) == 0) {
        if (!S_ISREG(info.st_mode)) return refused("not a regular file");
        mode = info.st_mode & 07777;
    }
    if (const int error = plat::replaceHostFile(target, bytes, mode))
        return refused(std::strerror(error));
    return plat::portSuccess();
}

}  // namespace velto::app
