#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velto::app {

class StepRunner;
class Renderer;

// What a watch looks at: the device's settings files and its copy of the bundle, and the
// folder the bundle is installed from when the device gets the bundle afresh at every start
// (the demo device).
struct WatchPlaces {
    std::filesystem::path device;
    std::optional<std::filesystem::path> resources;
    // A descriptor whose end of input ends the watch (Ctrl-D on a terminal, a closed pipe);
    // -1 when input is not ours to read.
    int input = -1;
};

// When a watch ends by itself: after a number of redraws, after some seconds.
struct WatchLimits {
    std::optional<long> redraws;
    std::optional<double> seconds;
};

// "[--redraws N] [--timeout SECONDS]"; StepError for anything else.
WatchLimits parseWatchLimits(const std::string& argument);

// Shows the top page, then rebuilds and shows it again whenever a settings file or a file of
// the bundle changes, until Ctrl-C, the end of input or a limit. A save made of several writes
// is one redraw; what the redraw itself writes is not a change.
void watchTopPage(StepRunner& runner, Renderer& renderer, const WatchPlaces& places,
                  const WatchLimits& limits);

}  // namespace velto::app
