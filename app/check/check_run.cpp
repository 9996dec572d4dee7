#include "app/check/check_run.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "app/check/check_exerciser.h"
#include "app/check/check_static.h"
#include "bundle/bundle_classes.h"
#include "platform/ui/image.h"

namespace velto::app {

namespace {

namespace fs = std::filesystem;

// A work folder for the check's devices, gone when the check ends.
class WorkFolder {
  public:
    WorkFolder() {
        // Thousands of small files are written and read: memory is the place for them when
        // the machine has it.
        std::error_code ec;
        const fs::path base =
            fs::is_directory("/dev/shm", ec) ? fs::path("/dev/shm") : fs::temp_directory_path();
        std::string pattern = (base / "velto-check-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("cannot make a work folder");
        path_ = pattern;
    }
    ~WorkFolder() {
        std::error_code ec;
        fs::remove_all(path_, ec);
    }
    const fs::path& path() const { return path_; }

  private:
    fs::path path_;
};

// The picture the photo pickers are answered with.
fs::path writePicture(const fs::path& folder) {
    const fs::path file = folder / "picture.png";
    auto png = plat::UIImagePNGRepresentation(plat::Image::blank(120, 120, 1).get());
    std::ofstream out(file, std::ios::binary);
    if (!png || !out.write(reinterpret_cast<const char*>(png->data()),
                           static_cast<std::streamsize>(png->size())))
        throw std::runtime_error("cannot write " + file.string());
    return file;
}

// What one worker process did, as it tells the process that reports.
struct WorkerResult {
    ExerciseFacts facts;
    std::size_t devices = 0;
    std::size_t steps = 0;
    std::size_t states = 0;
    bool bounded = false;
    std::string failure;
};

// Workers share the devices out by family and application set (the four devices of a group
// differ only in files that are rewritten between them, and a worker's pages are exercised
// once per distinct device it sees). The machine's cores run them side by side.
std::size_t workerCount() {
    // VELTO_CHECK_WORKERS overrides, for comparing runs: the findings do not depend on it.
    if (const char* forced = std::getenv("VELTO_CHECK_WORKERS"))
        return std::clamp<std::size_t>(std::strtoul(forced, nullptr, 10), 1, 16);
    const unsigned cores = std::thread::hardware_concurrency();
    return std::clamp<std::size_t>(cores == 0 ? 1 : cores, 1, 4);
}

constexpr std::size_t kGroup = 4;

// Writes all of a line to the pipe, so that lines of several writes never interleave.
bool writeLine(int fd, std::string line) {
    line += '\n';
    for (std::size_t done = 0; done < line.size();) {
        const ssize_t n = ::write(fd, line.data() + done, line.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

std::string dumped(const nlohmann::json& j) {
    return j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// A worker tells the parent through its pipe, a line each: a finding when it first finds it,
// its progress after each device, then its findings as they ended up (the smallest state of
// each, with the count of states) and its totals.
int runWorker(const std::vector<DeviceConfig>& configs, std::size_t worker, std::size_t workers,
              const fs::path& resources, const fs::path& picture, int out) {
    bool written = true;
    try {
        FindingSet findings;
        findings.onNew([&](const Finding& finding) {
            written &= writeLine(out, dumped({{"found", findingRecord(finding)}}));
        });
        DeviceFarm farm(resources);
        Exerciser exerciser(findings, picture);
        PageMemo memo;
        std::size_t done = 0;
        for (const DeviceConfig& config : configs) {
            if ((config.index / kGroup) % workers != worker) continue;
            exerciser.run(config, farm.prepare(config), memo);
            ++done;
            written &= writeLine(out, dumped({{"progress",
                                               {{"devices", done},
                                                {"pages", exerciser.pages()},
                                                {"states", exerciser.states()}}}}));
        }
        for (const Finding& finding : findings.all())
            written &= writeLine(out, dumped({{"finding", findingRecord(finding)}}));
        nlohmann::json lists = nlohmann::json::object();
        for (const auto& [list, classes] : exerciser.facts().listClasses)
            lists[list] = classes;
        written &= writeLine(out, dumped({{"devices", done},
                                          {"steps", exerciser.steps()},
                                          {"states", exerciser.states()},
                                          {"bounded", exerciser.bounded()},
                                          {"lists", lists},
                                          {"images", exerciser.facts().imagesAsked}}));
    } catch (const std::exception& e) {
        written &= writeLine(out, dumped({{"failure", e.what()}}));
    }
    return written ? 0 : 1;
}

// What the parent makes of its workers' lines as they arrive.
class WorkerReader {
  public:
    WorkerReader(std::size_t workers, std::size_t totalDevices, FindingSet& findings,
                 const CheckListener& listener)
        : progress_(workers), findings_(findings), listener_(listener) {
        total_.devices = totalDevices;
        if (listener_.found) heard_.onNew(listener_.found);
    }

    void line(std::size_t worker, const std::string& text) {
        const auto j = nlohmann::json::parse(text, nullptr, false);
        if (j.is_discarded() || !j.is_object()) return;
        if (j.contains("found")) {
            heard_.add(findingFromRecord(j["found"].get<std::string>()));
        } else if (j.contains("progress")) {
            progress_[worker] = j["progress"];
            if (listener_.progress) listener_.progress(progress());
        } else if (j.contains("finding")) {
            findings_.add(findingFromRecord(j["finding"].get<std::string>()));
        } else if (j.contains("failure")) {
            result_.failure = j["failure"].get<std::string>();
        } else {
            result_.devices += j.value("devices", std::size_t{0});
            result_.steps += j.value("steps", std::size_t{0});
            result_.states += j.value("states", std::size_t{0});
            result_.bounded |= j.value("bounded", false);
            for (const auto& [list, classes] : j["lists"].items())
                for (const auto& name : classes)
                    result_.facts.listClasses[list].insert(name.get<std::string>());
            for (const auto& image : j["images"])
                result_.facts.imagesAsked.insert(image.get<std::string>());
        }
    }

    // Findings found after the workers, by the static checks.
    void found(const Finding& finding) {
        heard_.add(finding);
        findings_.add(finding);
    }

    WorkerResult& result() { return result_; }

  private:
    CheckProgress progress() const {
        CheckProgress sum{0, total_.devices, 0, 0};
        for (const nlohmann::json& p : progress_) {
            if (!p.is_object()) continue;
            sum.devices += p.value("devices", std::size_t{0});
            sum.pages += p.value("pages", std::size_t{0});
            sum.states += p.value("states", std::size_t{0});
        }
        return sum;
    }

    std::vector<nlohmann::json> progress_;
    CheckProgress total_;
    FindingSet& findings_;
    // What the listener has heard: each finding once, the first state found of it.
    FindingSet heard_;
    const CheckListener& listener_;
    WorkerResult result_;
};

// Reads every worker's pipe as lines arrive, until each has closed its end.
void readWorkers(std::vector<int>& fds, WorkerReader& reader) {
    std::vector<std::string> pending(fds.size());
    std::size_t open = fds.size();
    while (open > 0) {
        std::vector<pollfd> polled;
        std::vector<std::size_t> workers;
        for (std::size_t w = 0; w < fds.size(); ++w)
            if (fds[w] >= 0) {
                polled.push_back({fds[w], POLLIN, 0});
                workers.push_back(w);
            }
        if (::poll(polled.data(), polled.size(), -1) < 0) {
            if (errno == EINTR) continue;
            throw std::runtime_error("cannot hear the check workers");
        }
        for (std::size_t i = 0; i < polled.size(); ++i) {
            if (!(polled[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            const std::size_t w = workers[i];
            char buffer[65536];
            const ssize_t n = ::read(fds[w], buffer, sizeof buffer);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                ::close(fds[w]);
                fds[w] = -1;
                --open;
                continue;
            }
            std::string& text = pending[w];
            text.append(buffer, static_cast<std::size_t>(n));
            std::size_t begin = 0;
            for (std::size_t end; (end = text.find('\n', begin)) != std::string::npos;
                 begin = end + 1)
                reader.line(w, text.substr(begin, end - begin));
            text.erase(0, begin);
        }
    }
}

}  // namespace

CheckOutcome checkBundle(const fs::path& resources, const std::vector<DeviceConfig>& configs,
                         const CheckListener& listener) {
    CheckOutcome outcome;
    velto::registerBundleClasses();
    WorkFolder work;
    const fs::path picture = writePicture(work.path());
    const std::size_t workers = workerCount();
    std::vector<pid_t> children;
    std::vector<int> fds;
    for (std::size_t w = 0; w < workers; ++w) {
        int ends[2];
        if (::pipe(ends) < 0) throw std::runtime_error("cannot make a pipe for a check worker");
        const pid_t pid = ::fork();
        if (pid < 0) throw std::runtime_error("cannot start a check worker");
        if (pid == 0) {
            ::close(ends[0]);
            for (int fd : fds)
                ::close(fd);
            ::_exit(runWorker(configs, w, workers, resources, picture, ends[1]));
        }
        // Only the worker may hold the writing end, or the pipe never reads as closed.
        ::close(ends[1]);
        children.push_back(pid);
        fds.push_back(ends[0]);
    }
    WorkerReader reader(workers, configs.size(), outcome.findings, listener);
    readWorkers(fds, reader);
    bool failed = false;
    for (pid_t pid : children) {
        int status = 0;
        failed |= ::waitpid(pid, &status, 0) < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0;
    }
    WorkerResult& total = reader.result();
    if (failed && total.failure.empty()) total.failure = "a check worker ended abnormally";
    if (!total.failure.empty()) throw std::runtime_error(total.failure);
    FindingSet found;
    checkResources(resources, total.facts, found);
    for (const Finding& finding : found.all())
        reader.found(finding);
    outcome.devices = total.devices;
    outcome.steps = total.steps;
    outcome.states = total.states;
    outcome.bounded = total.bounded;
    return outcome;
}

}  // namespace velto::app
