#include "app/serve/preview_session.h"

#include <stdlib.h>
#include <unistd.h>

#include "app/exit_status.h"
#include "app/render/json_output.h"
#include "app/render/screenshot_writer.h"
#include "app/serve/tap_target.h"
#include "app/session/batch_run.h"
#include "app/session/step_error.h"
#include "platform/system/device_facts.h"
#include "platform/system/host_file_writes.h"

namespace velto::app {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

namespace {

// Steps that would read or write the host's files (the server hands pictures over itself) or
// hold the session for ever (the server watches by itself).
std::optional<std::string> refusedByServer(const Step& step) {
    switch (step.kind) {
        case StepKind::Pick:
            return "the server takes pictures for the picker at POST /api/pick";
        case StepKind::Screenshot:
            return "the server draws the page at GET /api/screenshot.png";
        case StepKind::Watch:
            return "the server watches the device by itself";
        case StepKind::Quit:
            return "Ctrl-C ends the server";
        default:
            return std::nullopt;
    }
}

SessionAnswer usage(const std::string& step, const std::string& message) {
    SessionAnswer answer;
    answer.status = kExitUsage;
    answer.records.push_back(errorLine(message, step));
    return answer;
}

// A picture handed over by the browser, in a file of its own for as long as `pick` reads it.
class UploadFile {
  public:
    explicit UploadFile(const std::string& bytes) {
        std::string pattern = (fs::temp_directory_path() / "velto-pick-XXXXXX").string();
        const int fd = ::mkstemp(pattern.data());
        if (fd < 0) throw std::runtime_error("cannot keep the picture: no temporary file");
        path_ = pattern;
        const bool written = plat::writeAll(fd, bytes);
        ::close(fd);
        if (!written) {
            fs::remove(path_);
            throw std::runtime_error("cannot keep the picture: the disk is full");
        }
    }
    ~UploadFile() {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }
    UploadFile(const UploadFile&) = delete;
    UploadFile& operator=(const UploadFile&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace

PreviewSession::PreviewSession(std::vector<ServedDevice> devices, EventHub& hub)
    : devices_(std::move(devices)), hub_(hub), collector_([this](const json& record) {
          hub_.publish(record["type"] == "page" ? "page" : "record", jsonText(record));
      }) {
    open(0);
}

PreviewSession::~PreviewSession() = default;

void PreviewSession::requireSession() const {
    if (!session_)
        throw std::runtime_error("the Settings application is not running: choose a device");
}

void PreviewSession::open(std::size_t index) {
    // One process is current at a time: the old session goes before the new one starts.
    runner_.reset();
    session_.reset();
    watch_.reset();
    current_ = index;
    const ServedDevice& device = devices_[index];
    try {
        session_ = std::make_unique<Session>(device.folder);
    } catch (const std::exception& e) {
        throw std::runtime_error("the Settings application could not start on " +
                                 device.folder.string() + ": " + e.what());
    }
    runner_ = std::make_unique<StepRunner>(*session_, collector_);
    WatchPlaces places;
    places.device = device.folder;
    places.resources = device.resources;
    watch_ = std::make_unique<DeviceWatch>(places);
    runner_->setWatchPlaces(places);
    showToStream();
}

json PreviewSession::devices() {
    std::lock_guard lock(mutex_);
    requireSession();
    json list = json::array();
    for (std::size_t i = 0; i < devices_.size(); ++i)
        list.push_back(
            {{"index", i}, {"path", devices_[i].folder.string()}, {"current", i == current_}});
    const auto look = screen::Look::forDevice(plat::DeviceFacts::read(session_->process().root()));
    return {{"devices", list},
            {"screen", {{"width", look.width}, {"height", look.height}, {"scale", look.scale}}}};
}

SessionAnswer PreviewSession::selectDevice(std::size_t index) {
    std::lock_guard lock(mutex_);
    if (index >= devices_.size())
        return usage("", "no device " + std::to_string(index) + "; there are " +
                             std::to_string(devices_.size()));
    const std::size_t previous = current_;
    try {
        open(index);
    } catch (const std::exception& e) {
        SessionAnswer answer;
        answer.status = kExitFailed;
        answer.records.push_back(errorLine(e.what()));
        // The server goes on, on the device it was showing.
        open(previous);
        return answer;
    }
    collector_.take();
    hub_.publish("devices", "{}");
    return {};
}

json PreviewSession::page() {
    std::lock_guard lock(mutex_);
    requireSession();
    runner_->run(showStep());
    json records = collector_.take();
    for (const json& record : records)
        if (record["type"] == "page") return record;
    return records.empty() ? json(nullptr) : records.front();
}

plat::Bytes PreviewSession::screenshot() {
    std::lock_guard lock(mutex_);
    requireSession();
    return screenshotPng(*session_);
}

SessionAnswer PreviewSession::runSteps(const std::vector<std::string>& texts) {
    std::vector<Step> steps;
    for (const std::string& text : texts) {
        try {
            if (auto step = parseStep(text)) {
                if (auto why = refusedByServer(*step))
                    return usage(text, step->text + " is not run by the server: " + *why);
                steps.push_back(*step);
            }
        } catch (const StepError& e) {
            return usage(text, e.what());
        }
    }
    std::lock_guard lock(mutex_);
    requireSession();
    return runLocked(steps);
}

SessionAnswer PreviewSession::tap(double x, double y) {
    std::lock_guard lock(mutex_);
    requireSession();
    std::optional<std::string> text;
    try {
        text = stepForTap(drawTopPage(*session_), *session_->topPage(), session_->depth(), {x, y});
    } catch (const std::exception& e) {
        SessionAnswer answer;
        answer.status = kExitStepFailed;
        answer.records.push_back(errorLine(std::string("cannot draw the page: ") + e.what()));
        return answer;
    }
    if (!text) return {};
    SessionAnswer answer = runLocked({*parseStep(*text)});
    answer.step = text;
    return answer;
}

SessionAnswer PreviewSession::pick(const std::string& picture, bool originalOnly) {
    std::lock_guard lock(mutex_);
    requireSession();
    const UploadFile file(picture);
    return runLocked(
        {*parseStep("pick " + file.path() + (originalOnly ? " --original-only" : ""))});
}

SessionAnswer PreviewSession::runLocked(const std::vector<Step>& steps) {
    // What others wrote before this request is shown first; what the steps write is theirs,
    // not a change to redraw for.
    redrawFor(watch_->settledChanges([] { return true; }));
    SessionAnswer answer;
    for (const Step& step : steps)
        if (const auto status = stopStatus(runner_->run(step))) {
            answer.status = *status;
            break;
        }
    answer.records = collector_.take();
    watch_->forget();
    showToStream();
    return answer;
}

void PreviewSession::showToStream() {
    runner_->run(showStep());
    collector_.take();
}

void PreviewSession::lookForChanges(const std::function<bool()>& stop) {
    std::lock_guard lock(mutex_);
    requireSession();
    redrawFor(watch_->settledChanges(stop));
}

void PreviewSession::redrawFor(const std::vector<fs::path>& changed) {
    if (changed.empty()) return;
    collector_.note(watch_->note(changed));
    try {
        watch_->reinstallIfNeeded(changed);
    } catch (const std::exception& e) {
        collector_.error("watch", e.what());
    }
    // As `watch` does: the page is made again from what is stored now.
    runner_->run(Step{StepKind::Reload, "", "reload"});
    watch_->forget();
    showToStream();
}

}  // namespace velto::app
