#pragma once

#include "app/render/renderer.h"
#include "app/session/row_lookup.h"
#include "app/session/session.h"
#include "app/session/step.h"
#include "app/session/watch_run.h"

#include <cstdint>
#include <string>

namespace velto::app {

// The most a picture handed to the photo picker (`pick`) may weigh: what a phone's photo
// library would hand over, and never the machine's memory.
inline constexpr std::uintmax_t kPickLimit = std::uintmax_t{64} << 20;

// Carries out steps on a session as the user of the Settings application would, and shows
// pages through a renderer.
class StepRunner {
  public:
    StepRunner(Session& session, Renderer& renderer) : session_(session), renderer_(renderer) {}

    // Unmet: an `expect` step found the session otherwise.
    enum class Outcome { Done, Failed, Unmet, Quit };

    // Runs one step, then lets the main queue and notification delivery settle. A step that
    // cannot be carried out, or that the bundle raises from, is reported to the renderer as
    // an error of the step and answers Failed; nothing escapes.
    Outcome run(const Step& step);

    // Shows the top page with what happened since the previous page was shown.
    void show();

    // With a folder, every shown page is also drawn into it as 001.png, 002.png...
    void setScreenshotFolder(std::string folder) { screenshotFolder_ = std::move(folder); }

    // Where `watch` looks besides the session's device (by default: that device only, and no
    // input).
    void setWatchPlaces(WatchPlaces places) { watchPlaces_ = std::move(places); }

    // Carries out one step without reporting or settling: what the step or the bundle raises
    // reaches the caller.
    void perform(const Step& step);

  private:
    void toggle(const std::string& argument);
    void tap(const std::string& argument);
    void choose(const std::string& title);
    void dismiss();
    void pick(const std::string& argument, const std::filesystem::path& folder);
    void cancel();
    void expect(const std::string& argument);
    // What the switch of a row shows on the page, nullopt when the row is not a switch.
    std::optional<bool> switchShows(plat::ListController& page, const RowRef& row);

    Session& session_;
    Renderer& renderer_;
    std::string screenshotFolder_;
    int screenshotsTaken_ = 0;
    // Where the journal stood when the last step that acts began; `expect log` reads from it.
    std::size_t actionMark_ = 0;
    std::optional<WatchPlaces> watchPlaces_;
};

}  // namespace velto::app
