#include "app/check_read_recorder.h"

#include <functional>

#include "platform/system/device_root.h"

namespace velto::app {

namespace {

// Set while the recorder itself looks at the device, so that its own reads are not recorded.
thread_local bool looking = false;

}  // namespace

ReadRecorder::ReadRecorder(plat::DeviceRoot& root, std::set<std::string> excludedPrefixes,
                           std::string imageFolder, std::set<std::string>& images)
    : root_(root),
      excluded_(std::move(excludedPrefixes)),
      imageFolder_(std::move(imageFolder)),
      images_(images) {
    root_.setAccessObserver([this](std::string_view path) { observe(path); });
}

ReadRecorder::~ReadRecorder() {
    root_.setAccessObserver({});
}

void ReadRecorder::start() {
    std::lock_guard lock(mutex_);
    snapshot_.clear();
    active_ = true;
}

void ReadRecorder::pause() {
    std::lock_guard lock(mutex_);
    active_ = false;
}

void ReadRecorder::resume() {
    std::lock_guard lock(mutex_);
    active_ = true;
}

ReadSnapshot ReadRecorder::finish() {
    std::lock_guard lock(mutex_);
    active_ = false;
    return std::move(snapshot_);
}

void ReadRecorder::observe(std::string_view devicePath) {
    if (looking) return;
    std::string path(devicePath);
    {
        std::lock_guard lock(mutex_);
        if (path.size() > 4 && path.compare(path.size() - 4, 4, ".png") == 0 &&
            path.compare(0, imageFolder_.size(), imageFolder_) == 0)
            images_.insert(path);
        if (!active_ || snapshot_.count(path)) return;
        for (const std::string& prefix : excluded_)
            if (path.compare(0, prefix.size(), prefix) == 0) return;
    }
    // Taken before the caller goes on: a path first asked for in order to write it is
    // recorded with what it held before.
    std::string print = fingerprint(path);
    std::lock_guard lock(mutex_);
    snapshot_.emplace(std::move(path), std::move(print));
}

std::string ReadRecorder::fingerprint(const std::string& devicePath) const {
    looking = true;
    std::string print;
    bool directory = false;
    if (!root_.fileExists(devicePath, &directory)) {
        print = "-";
    } else if (directory) {
        print = "d";
        for (const std::string& name : root_.contentsOfDirectory(devicePath))
            print += "/" + name;
    } else if (auto bytes = root_.readFile(devicePath)) {
        const std::string_view content(reinterpret_cast<const char*>(bytes->data()), bytes->size());
        print = "f" + std::to_string(bytes->size()) + ":" +
                std::to_string(std::hash<std::string_view>{}(content));
    } else {
        print = "?";
    }
    looking = false;
    return print;
}

bool ReadRecorder::matches(const ReadSnapshot& snapshot) const {
    for (const auto& [path, print] : snapshot)
        if (fingerprint(path) != print) return false;
    return true;
}

}  // namespace velto::app
