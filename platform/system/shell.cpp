#include "platform/system/shell.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

#include "platform/system/device_root.h"
#include "platform/system/journal.h"

extern char** environ;

namespace plat {

namespace {

// What the commands a bundle runs read of the device: dpkg-query's package database.
constexpr std::string_view kPackageFolder = "/var/lib/dpkg";

// An interceptor speaks in exit statuses; pclose and system answer wait statuses.
int waitStatusForExit(int exitStatus) {
    return (exitStatus & 0xff) << 8;
}

// Everything the child needs, built before it starts.
struct Launch {
    std::string command;
    std::string workingDirectory;
    std::vector<std::string> environment;
    std::vector<char*> argv;
    std::vector<char*> envp;

    // `top` is the host folder that stands for the device's "/".
    Launch(const std::string& cmd, const std::filesystem::path& top) : command(cmd) {
        workingDirectory = top.string();
        // dpkg-query and friends read the device's package database, not the host's.
        const std::string admin = "DPKG_ADMINDIR=";
        for (char** e = environ; e && *e; ++e)
            if (std::string_view(*e).substr(0, admin.size()) != admin) environment.emplace_back(*e);
        environment.push_back(admin + (top / "var/lib/dpkg").string());
        for (auto& e : environment)
            envp.push_back(e.data());
        envp.push_back(nullptr);
        static char sh[] = "sh";
        static char dashC[] = "-c";
        argv = {sh, dashC, command.data(), nullptr};
    }

    // Starts "sh -c command" with its standard output on stdoutFd (< 0 keeps ours); -1 when it
    // cannot start (the shell would then have exited 127). posix_spawn rather than fork: a fork
    // of a large process copies its page tables for every version lookup, and the resource
    // check runs thousands of them.
    pid_t spawn(int stdoutFd, bool discardStderr) {
        posix_spawn_file_actions_t actions;
        if (posix_spawn_file_actions_init(&actions) != 0) return -1;
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (stdoutFd >= 0) posix_spawn_file_actions_adddup2(&actions, stdoutFd, STDOUT_FILENO);
        if (discardStderr)
            posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        // The device's working directory is its "/".
        posix_spawn_file_actions_addchdir_np(&actions, workingDirectory.c_str());
        pid_t pid = -1;
        const int error =
            ::posix_spawn(&pid, "/bin/sh", &actions, nullptr, argv.data(), envp.data());
        posix_spawn_file_actions_destroy(&actions);
        return error == 0 ? pid : -1;
    }
};

int waitFor(pid_t pid) {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return -1;
    }
    return status;
}

// Reading side shared by both kinds of pipe: C fgets over a byte source.
class LinePipe : public Pipe {
  public:
    bool fgets(char* buffer, int size) override {
        if (!buffer || size <= 0) return false;
        std::size_t room = static_cast<std::size_t>(size) - 1;
        std::size_t n = 0;
        while (n < room) {
            if (pos_ == buffered_.size() && !refill()) break;
            char c = buffered_[pos_++];
            buffer[n++] = c;
            if (c == '\n') break;
        }
        // Nothing read at end of input: fgets answers NULL and leaves the buffer alone.
        if (n == 0 && room > 0) return false;
        buffer[n] = '\0';
        return true;
    }

  protected:
    // Puts the next bytes into `into`; false at end of input.
    virtual bool more(std::string& into) = 0;

  private:
    bool refill() {
        buffered_.clear();
        pos_ = 0;
        return more(buffered_) && !buffered_.empty();
    }

    std::string buffered_;
    std::size_t pos_ = 0;
};

// What an interceptor answered, served from memory.
class MemoryPipe final : public LinePipe {
  public:
    MemoryPipe(std::string output, int status) : output_(std::move(output)), status_(status) {}
    int pclose() override { return status_; }

  protected:
    bool more(std::string& into) override {
        if (taken_) return false;
        taken_ = true;
        into = std::move(output_);
        return true;
    }

  private:
    std::string output_;
    int status_;
    bool taken_ = false;
};

// A real child's standard output.
class ProcessPipe final : public LinePipe {
  public:
    ProcessPipe(int fd, pid_t pid) : fd_(fd), pid_(pid) {}
    ~ProcessPipe() override {
        // Never leave a zombie behind, even when the caller forgot pclose.
        if (pid_ > 0) pclose();
    }

    int pclose() override {
        if (pid_ <= 0) return -1;
        if (fd_ >= 0) ::close(fd_);
        fd_ = -1;
        int status = waitFor(pid_);
        pid_ = -1;
        return status;
    }

  protected:
    bool more(std::string& into) override {
        if (fd_ < 0) return false;
        char chunk[4096];
        for (;;) {
            ssize_t n = ::read(fd_, chunk, sizeof chunk);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return false;
            into.assign(chunk, static_cast<std::size_t>(n));
            return true;
        }
    }

  private:
    int fd_;
    pid_t pid_;
};

}  // namespace

std::unique_ptr<Pipe> Shell::popen(const std::string& command, const std::string& mode) {
    journal_.append(journal::Shell{command});

    if (mode != "r") return nullptr;
    if (interceptor_) {
        if (auto result = interceptor_(command))
            return std::make_unique<MemoryPipe>(std::move(result->output),
                                                waitStatusForExit(result->status));
    }

    if (remembered_) {
        if (auto found = remembered_->find(command); found != remembered_->end())
            return std::make_unique<MemoryPipe>(found->second.second, found->second.first);
    }

    const auto top = root_.hostFolderHolding(kPackageFolder);
    if (!top) return std::make_unique<MemoryPipe>(std::string(), waitStatusForExit(127));
    Launch launch(command, *top);
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return nullptr;
    pid_t pid = launch.spawn(fds[1], true);
    ::close(fds[1]);
    if (pid < 0) {
        ::close(fds[0]);
        return std::make_unique<MemoryPipe>(std::string(), waitStatusForExit(127));
    }
    if (!remembered_) return std::make_unique<ProcessPipe>(fds[0], pid);

    std::string output;
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(fds[0], buffer, sizeof buffer);
        if (n > 0) {
            output.append(buffer, static_cast<std::size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            break;
        }
    }
    ::close(fds[0]);
    const int status = waitFor(pid);
    (*remembered_)[command] = {status, output};
    return std::make_unique<MemoryPipe>(std::move(output), status);
}

int Shell::system(const std::string& command) {
    journal_.append(journal::Shell{command});

    if (interceptor_) {
        if (auto result = interceptor_(command)) return waitStatusForExit(result->status);
    }

    const auto top = root_.hostFolderHolding(kPackageFolder);
    if (!top) return waitStatusForExit(127);
    Launch launch(command, *top);
    pid_t pid = launch.spawn(-1, false);
    if (pid < 0) return waitStatusForExit(127);
    return waitFor(pid);
}

}  // namespace plat
