#include "app/session/watch_run.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <sstream>

#include "app/render/renderer.h"
#include "app/session/device_watch.h"
#include "app/session/step_error.h"
#include "app/session/step_runner.h"
#include "app/session/stop_signals.h"

namespace velto::app {

namespace fs = std::filesystem;

namespace {

// How often the folders are looked at.
constexpr int kLookMilliseconds = 200;

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
    DeviceWatch watch(places);
    StopSignals interruptible;
    int input = places.input;

    runner.run(showStep());
    const auto started = std::chrono::steady_clock::now();
    const auto timedOut = [&] {
        return limits.seconds &&
               std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count() >=
                   *limits.seconds;
    };
    long redraws = 0;
    while (!StopSignals::requested() && !timedOut()) {
        if (!waitForLook(input, kLookMilliseconds)) break;
        const auto changed = watch.settledChanges(StopSignals::requested);
        if (changed.empty()) continue;
        renderer.note(watch.note(changed));
        try {
            watch.reinstallIfNeeded(changed);
        } catch (const std::exception& e) {
            renderer.error("watch", e.what());
        }
        // The page is made again from what is stored now, as the developer wants to see it.
        runner.run(Step{StepKind::Reload, "", "reload"});
        watch.forget();
        runner.run(showStep());
        if (limits.redraws && ++redraws >= *limits.redraws) break;
    }
}

}  // namespace velto::app
