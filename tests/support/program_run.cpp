#include "tests/support/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

extern char** environ;

namespace apptest {

namespace {

std::vector<nlohmann::json> parseLines(const std::string& text) {
    std::vector<nlohmann::json> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.empty()) continue;
        auto parsed = nlohmann::json::parse(line, nullptr, false);
        EXPECT_FALSE(parsed.is_discarded()) << "not a JSON line: " << line;
        lines.push_back(parsed);
    }
    return lines;
}

const std::filesystem::path& scratchStateHome() {
    static const ScratchFolder home;
    return home.path();
}

void pump(int outFd, int errFd, int inFd, const std::string& input, ProgramResult& result) {
    std::size_t written = 0;
    if (input.empty() && inFd >= 0) {
        ::close(inFd);
        inFd = -1;
    }
    while (outFd >= 0 || errFd >= 0) {
        std::vector<pollfd> fds;
        if (outFd >= 0) fds.push_back({outFd, POLLIN, 0});
        if (errFd >= 0) fds.push_back({errFd, POLLIN, 0});
        if (inFd >= 0) fds.push_back({inFd, POLLOUT, 0});
        if (::poll(fds.data(), fds.size(), -1) < 0) {
            if (errno == EINTR) continue;
            return;
        }
        for (const pollfd& fd : fds) {
            if (!fd.revents) continue;
            if (fd.fd == inFd) {
                const ssize_t n = ::write(inFd, input.data() + written, input.size() - written);
                if (n > 0) written += static_cast<std::size_t>(n);
                if (n < 0 || written == input.size()) {
                    ::close(inFd);
                    inFd = -1;
                }
                continue;
            }
            char buffer[8192];
            const ssize_t n = ::read(fd.fd, buffer, sizeof buffer);
            std::string& into = fd.fd == outFd ? result.out : result.err;
            if (n > 0) {
                into.append(buffer, static_cast<std::size_t>(n));
            } else if (n == 0 || errno != EINTR) {
                ::close(fd.fd);
                (fd.fd == outFd ? outFd : errFd) = -1;
            }
        }
    }
    if (inFd >= 0) ::close(inFd);
}

}  // namespace

std::vector<nlohmann::json> ProgramResult::outLines() const {
    return parseLines(out);
}
std::vector<nlohmann::json> ProgramResult::errLines() const {
    return parseLines(err);
}

std::filesystem::path programPath() {
    const char* binaryDir = std::getenv("VELTO_BINARY_DIR");
    if (!binaryDir) {
        ADD_FAILURE() << "VELTO_BINARY_DIR is not set (run the tests through ctest)";
        return "velto-settings";
    }
    return std::filesystem::path(binaryDir) / "app" / "velto-settings";
}

ProgramResult runProgram(const std::vector<std::string>& arguments, const std::string& input,
                         const std::map<std::string, std::string>& environment) {
    std::map<std::string, std::string> variables;
    for (char** e = environ; e && *e; ++e) {
        const std::string entry(*e);
        const std::size_t equals = entry.find('=');
        if (equals != std::string::npos)
            variables[entry.substr(0, equals)] = entry.substr(equals + 1);
    }
    variables["XDG_STATE_HOME"] = scratchStateHome().string();
    variables.erase("VELTO_RESOURCES");
    for (const auto& [name, value] : environment)
        variables[name] = value;

    std::vector<std::string> envStrings;
    for (const auto& [name, value] : variables)
        envStrings.push_back(name + "=" + value);
    std::vector<char*> envp;
    for (auto& s : envStrings)
        envp.push_back(s.data());
    envp.push_back(nullptr);

    const std::string program = programPath().string();
    std::vector<std::string> argStrings{program};
    argStrings.insert(argStrings.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& s : argStrings)
        argv.push_back(s.data());
    argv.push_back(nullptr);

    // A program that exits before reading its input must fail the test, not kill it.
    ::signal(SIGPIPE, SIG_IGN);
    int in[2], out[2], err[2];
    if (::pipe2(in, O_CLOEXEC) || ::pipe2(out, O_CLOEXEC) || ::pipe2(err, O_CLOEXEC)) {
        ADD_FAILURE() << "pipe failed";
        return {};
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(in[0], STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        ::execve(program.c_str(), argv.data(), envp.data());
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    ::close(err[1]);

    ProgramResult result;
    result.arguments = arguments;
    pump(out[0], err[0], in[1], input, result);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

::testing::AssertionResult ended(const ProgramResult& result, int status, const std::string& says) {
    if (result.status == status && result.err.find(says) != std::string::npos)
        return ::testing::AssertionSuccess();
    std::string arguments;
    for (const std::string& argument : result.arguments)
        arguments += " '" + argument + "'";
    return ::testing::AssertionFailure()
           << "velto-settings" << arguments << "\nended " << result.status << ", wanted " << status
           << (says.empty() ? "" : " saying \"" + says + "\"") << "\nout: " << result.out
           << "\nerr: " << result.err;
}

ScratchFolder::ScratchFolder() {
    static std::atomic<int> counter{0};
    path_ = std::filesystem::temp_directory_path() /
            ("velto-app-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void initDevice(const std::string& folder, const std::vector<std::string>& options) {
    ASSERT_TRUE(ended(runProgram(joined({"device", "init", folder}, options)), 0));
}

std::vector<nlohmann::json> journalOf(const nlohmann::json& page, const std::string& kind) {
    std::vector<nlohmann::json> entries;
    for (const auto& entry : page.at("journal"))
        if (entry.at("kind") == kind) entries.push_back(entry);
    return entries;
}

std::vector<std::string> joined(std::vector<std::string> arguments,
                                const std::vector<std::string>& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

const nlohmann::json* row(const nlohmann::json& page, const std::string& idOrLabel) {
    for (const auto& shown : page.at("rows"))
        if (shown.at("id") == idOrLabel || shown.at("label") == idOrLabel) return &shown;
    return nullptr;
}

nlohmann::json rowValue(const nlohmann::json& page, const std::string& idOrLabel) {
    const nlohmann::json* found = row(page, idOrLabel);
    return found ? found->value("value", nlohmann::json()) : nlohmann::json();
}

std::string fileText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void putFile(const std::filesystem::path& path, const std::string& bytes) {
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

}  // namespace apptest
