#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "app/serve/event_hub.h"
#include "app/serve/record_collector.h"
#include "app/session/device_watch.h"
#include "app/session/session.h"
#include "app/session/step_runner.h"
#include "platform/foundation/value.h"

namespace velto::app {

// What a request made the session do: the program's exit status for it and the records it
// printed (docs/json.md), as `run --json` would.
struct SessionAnswer {
    int status = 0;
    nlohmann::ordered_json records = nlohmann::ordered_json::array();
    // The step a tap became, for a tap.
    std::optional<std::string> step;
};

// A device the server may show, with where its watch looks.
struct ServedDevice {
    std::filesystem::path folder;
    // The folder the bundle is installed from afresh, for the demo device.
    std::optional<std::filesystem::path> resources;
};

// The one session the server holds, on one of its devices at a time. The server answers on
// several threads and the session is not made for that: every call takes the one lock. After
// anything that may change the page, the page is shown again, and every record (the pages, the
// notes, the errors) goes to the event stream as well.
class PreviewSession {
  public:
    // Opens a session on the first device. Throws std::runtime_error when it cannot start.
    PreviewSession(std::vector<ServedDevice> devices, EventHub& hub);
    ~PreviewSession();

    // {"devices": [{"index", "path", "current"}], "screen": {"width", "height", "scale"}}.
    nlohmann::ordered_json devices();
    // Closes the session and opens one on another device; false for an index it does not have.
    SessionAnswer selectDevice(std::size_t index);

    // The top page's record as `show` prints it now.
    nlohmann::ordered_json page();
    // The picture `screenshot` draws of the top page.
    plat::Bytes screenshot();

    // Runs steps as `run` does, stopping at the first that fails. A step that does not parse,
    // or one the server does not run (it would read or write the host's files, or hold the
    // session), fails them all before anything happens, with the usage status.
    SessionAnswer runSteps(const std::vector<std::string>& steps);
    // What a finger's tap at (x, y) points does.
    SessionAnswer tap(double x, double y);
    // The photo picker is handed a picture (the bytes of a PNG or JPEG file).
    SessionAnswer pick(const std::string& picture, bool originalOnly);

    // Redraws the page when the device's settings or the bundle changed since the last look,
    // as `watch` does.
    void lookForChanges(const std::function<bool()>& stop);

  private:
    void open(std::size_t index);
    void requireSession() const;
    // Runs parsed steps and shows the page afterwards; the lock is held.
    SessionAnswer runLocked(const std::vector<Step>& steps);
    void showToStream();
    // Shows what the change of these files made of the page, as `watch` does; nothing when
    // none changed. The lock is held.
    void redrawFor(const std::vector<std::filesystem::path>& changed);

    std::mutex mutex_;
    std::vector<ServedDevice> devices_;
    std::size_t current_ = 0;
    EventHub& hub_;
    RecordCollector collector_;
    std::unique_ptr<Session> session_;
    std::unique_ptr<StepRunner> runner_;
    std::unique_ptr<DeviceWatch> watch_;
};

}  // namespace velto::app
