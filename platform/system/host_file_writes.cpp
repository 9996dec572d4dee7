#include "platform/system/host_file_writes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace plat {

bool writeAll(int fd, const Bytes& bytes) {
    return writeAll(fd,
                    std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

bool writeAll(int fd, std::string_view bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<std::size_t>(n);
    }
    return true;
}

int replaceHostFile(const std::filesystem::path& target, const Bytes& bytes, mode_t mode) {
    const std::filesystem::path folder =
        target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
    // Built by appending: GCC 12 at -O3 takes `"." + name` for an overlapping copy.
    std::string temp = folder / ".";
    temp += target.filename().string();
    temp += ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) return errno;
    bool ok = ::fchmod(fd, mode) == 0 && writeAll(fd, bytes);
    int error = ok ? 0 : errno;
    if (::close(fd) != 0 && ok) {
        ok = false;
        error = errno;
    }
    if (ok && std::rename(temp.c_str(), target.c_str()) != 0) {
        ok = false;
        error = errno;
    }
    if (!ok) ::unlink(temp.c_str());
    return ok ? 0 : error;
}

}  // namespace plat
