#include "app/session/watch_run.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <sstream>

#include "app/render/renderer.h"
#include "app/session/change_watch.h"
#include "app/session/step_error.h"
#include "app/session/step_runner.h"
#include "contract/catalogue.h"
#include "device/bundle_install.h"
#include "platform/system/host_device_root.h"

namespace velto::app {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSettingsFolder = folders::kPreferences;
// How often the folders are looked at, and how long a save is given to finish.
constexpr int kLookMilliseconds = 200;
constexpr int kSettleMilliseconds = 100;
constexpr int kSettleLooks = 10;

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int) {
    interrupted = 1;
}

// Ctrl-C ends the watch, not the program, for as long as the watch lasts.
class InterruptScope {
  public:
    InterruptScope() {
        interrupted = 0;
        struct sigaction action {};
        action.sa_handler = onInterrupt;
        sigemptyset(&action.sa_mask);
        action.sa_flags = 0;  // no restart: a wait ends at once
        ::sigaction(SIGINT, &action, &previous_);
    }
    ~InterruptScope() { ::sigaction(SIGINT, &previous_, nullptr); }
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

  private:
    struct sigaction previous_ {};
};

fs::path under(const fs::path& root, const char* devicePath) {
    return root / fs::path(devicePath).relative_path();
}

bool inside(const fs::path& path, const fs::path& folder) {
    const auto [end, rest] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end();
}

// A device path for what is on the device, the host path for the rest.
std::string shown(const fs::path& path, const fs::path& device) {
    if (inside(path, device)) return "/" + path.lexically_relative(device).generic_string();
    return path.string();
}

// Waits one look's time; false when the input ended.
bool waitForLook(int& input, int milliseconds) {
    pollfd watched{input, POLLIN, 0};
    const int ready = ::poll(&watched, input >= 0 ? 1 : 0, milliseconds);
    if (ready <= 0 || input < 0) return true;
    char buffer[256];
    const ssize_t got = ::read(input, buffer, sizeof buffer);
    if (got == 0) return false;
    // Input that cannot be read is no longer ours to watch.
    if (got < 0 && errno != EINTR && errno != EAGAIN) input = -1;
    return true;
}

}  // namespace

WatchLimits parseWatchLimits(const std::string& argument) {
    WatchLimits limits;
    std::istringstream words(argument);
    for (std::string word; words >> word;) {
        std::string value;
        if ((word != "--redraws" && word != "--timeout") || !(words >> value))
            throw StepError("watch takes --redraws N and --timeout SECONDS");
        try {
            std::size_t used = 0;
            if (word == "--redraws") {
                const long redraws = std::stol(value, &used);
                if (redraws < 1 || used != value.size()) throw std::invalid_argument(value);
                limits.redraws = redraws;
            } else {
                const double seconds = std::stod(value, &used);
                if (!(seconds > 0) || used != value.size()) throw std::invalid_argument(value);
                limits.seconds = seconds;
            }
        } catch (const std::logic_error&) {
            throw StepError(word + " needs a positive number, not '" + value + "'");
        }
    }
    return limits;
}

void watchTopPage(StepRunner& runner, Renderer& renderer, const WatchPlaces& places,
                  const WatchLimits& limits) {
    const fs::path bundle = under(places.device, device::kInstalledBundle);
    std::vector<fs::path> folders{under(places.device, kSettingsFolder), bundle};
    if (places.resources) folders.push_back(*places.resources);
    ChangeWatch watch(folders);
    InterruptScope interruptible;
    int input = places.input;

    runner.run(showStep());
    const auto started = std::chrono::steady_clock::now();
    const auto timedOut = [&] {
        return limits.seconds &&
               std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count() >=
                   *limits.seconds;
    };
    long redraws = 0;
    while (!interrupted && !timedOut()) {
        if (!waitForLook(input, kLookMilliseconds)) break;
        std::vector<fs::path> changed = watch.changes();
        if (changed.empty()) continue;
        for (int look = 0; look < kSettleLooks && !interrupted; ++look) {
            ::poll(nullptr, 0, kSettleMilliseconds);
            const auto more = watch.changes();
            if (more.empty()) break;
            changed.insert(changed.end(), more.begin(), more.end());
        }

        std::string note = "changed:";
        bool resourcesChanged = false;
        for (const fs::path& path : changed) {
            note += " " + shown(path, places.device);
            resourcesChanged = resourcesChanged || !inside(path, folders.front());
        }
        renderer.note(note + "\n");
        if (resourcesChanged && places.resources) {
            try {
                device::installBundle(plat::HostDeviceRoot(places.device), *places.resources);
            } catch (const std::exception& e) {
                renderer.error("watch", e.what());
            }
        }
        // The page is made again from what is stored now, as the developer wants to see it.
        runner.run(Step{StepKind::Reload, "", "reload"});
        // What the rebuild wrote is not a change; what anyone writes once the page is out is.
        watch.changes();
        runner.run(showStep());
        if (limits.redraws && ++redraws >= *limits.redraws) break;
    }
}

}  // namespace velto::app
