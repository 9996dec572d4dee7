#include "tests/support/program_run.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
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

// An anonymous file holding `bytes`, to be read from its start: a run's input or output
// needs no pipe to drain while the program runs.
int memoryFile(const std::string& bytes) {
    const int fd = ::memfd_create("velto-test", MFD_CLOEXEC);
    if (fd >= 0 && !bytes.empty() &&
        ::write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        ADD_FAILURE() << "the input was not written whole";
    ::lseek(fd, 0, SEEK_SET);
    return fd;
}

// Everything the file holds; the file is closed.
std::string takeText(int fd) {
    std::string text;
    char buffer[8192];
    ::lseek(fd, 0, SEEK_SET);
    for (ssize_t n; (n = ::read(fd, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(n));
    ::close(fd);
    return text;
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
                         std::map<std::string, std::string> environment) {
    std::map<std::string, std::string> variables;  // name: "name=value"
    for (char** entry = environ; *entry; ++entry)
        variables.emplace(std::string(*entry, std::strcspn(*entry, "=")), *entry);
    variables.erase("VELTO_RESOURCES");
    environment.emplace("XDG_STATE_HOME", scratchStateHome().string());
    for (const auto& [name, value] : environment)
        variables[name] = name + "=" + value;
    std::vector<char*> envp;
    for (auto& [name, entry] : variables)
        envp.push_back(entry.data());
    envp.push_back(nullptr);

    std::vector<std::string> argStrings = joined({programPath().string()}, arguments);
    std::vector<char*> argv;
    for (std::string& argument : argStrings)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    const int in = memoryFile(input), out = memoryFile(""), err = memoryFile("");
    if (in < 0 || out < 0 || err < 0) {
        ADD_FAILURE() << "memfd_create failed";
        return {};
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(in, STDIN_FILENO);
        ::dup2(out, STDOUT_FILENO);
        ::dup2(err, STDERR_FILENO);
        ::execve(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }
    ::close(in);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return {arguments, WIFEXITED(status) ? WEXITSTATUS(status) : -1, takeText(out), takeText(err)};
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
