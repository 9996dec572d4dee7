#include "app/check/check_run.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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

int runWorker(const std::vector<DeviceConfig>& configs, std::size_t worker, std::size_t workers,
              const fs::path& resources, const fs::path& picture, const fs::path& out) {
    std::ofstream file(out);
    try {
        FindingSet findings;
        DeviceFarm farm(resources);
        Exerciser exerciser(findings, picture);
        PageMemo memo;
        std::size_t done = 0;
        for (const DeviceConfig& config : configs) {
            if ((config.index / kGroup) % workers != worker) continue;
            exerciser.run(config, farm.prepare(config), memo);
            ++done;
        }
        for (const Finding& finding : findings.all())
            file << nlohmann::json({{"finding", findingRecord(finding)}}).dump() << "\n";
        nlohmann::json lists = nlohmann::json::object();
        for (const auto& [list, classes] : exerciser.facts().listClasses)
            lists[list] = classes;
        file << nlohmann::json({{"devices", done},
                                {"steps", exerciser.steps()},
                                {"states", exerciser.states()},
                                {"bounded", exerciser.bounded()},
                                {"lists", lists},
                                {"images", exerciser.facts().imagesAsked}})
                    .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
             << "\n";
    } catch (const std::exception& e) {
        file << nlohmann::json({{"failure", e.what()}})
                    .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
             << "\n";
    }
    file.flush();
    return file ? 0 : 1;
}

void readWorker(const fs::path& path, FindingSet& findings, WorkerResult& total) {
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        const auto j = nlohmann::json::parse(line, nullptr, false);
        if (j.is_discarded()) continue;
        if (j.contains("finding")) {
            findings.add(findingFromRecord(j["finding"].get<std::string>()));
        } else if (j.contains("failure")) {
            total.failure = j["failure"].get<std::string>();
        } else {
            total.devices += j.value("devices", std::size_t{0});
            total.steps += j.value("steps", std::size_t{0});
            total.states += j.value("states", std::size_t{0});
            total.bounded |= j.value("bounded", false);
            for (const auto& [list, classes] : j["lists"].items())
                for (const auto& name : classes)
                    total.facts.listClasses[list].insert(name.get<std::string>());
            for (const auto& image : j["images"])
                total.facts.imagesAsked.insert(image.get<std::string>());
        }
    }
}

}  // namespace

CheckOutcome checkBundle(const fs::path& resources, const std::vector<DeviceConfig>& configs) {
    CheckOutcome outcome;
    WorkerResult total;
    velto::registerBundleClasses();
    WorkFolder work;
    const fs::path picture = writePicture(work.path());
    const std::size_t workers = workerCount();
    std::vector<pid_t> children;
    for (std::size_t w = 0; w < workers; ++w) {
        const fs::path out = work.path() / ("worker-" + std::to_string(w) + ".jsonl");
        const pid_t pid = ::fork();
        if (pid < 0) throw std::runtime_error("cannot start a check worker");
        if (pid == 0) ::_exit(runWorker(configs, w, workers, resources, picture, out));
        children.push_back(pid);
    }
    bool failed = false;
    for (pid_t pid : children) {
        int status = 0;
        failed |= ::waitpid(pid, &status, 0) < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0;
    }
    for (std::size_t w = 0; w < workers; ++w)
        readWorker(work.path() / ("worker-" + std::to_string(w) + ".jsonl"), outcome.findings,
                   total);
    if (failed && total.failure.empty()) total.failure = "a check worker ended abnormally";
    if (!total.failure.empty()) throw std::runtime_error(total.failure);
    checkResources(resources, total.facts, outcome.findings);
    outcome.devices = total.devices;
    outcome.steps = total.steps;
    outcome.states = total.states;
    outcome.bounded = total.bounded;
    return outcome;
}

}  // namespace velto::app
