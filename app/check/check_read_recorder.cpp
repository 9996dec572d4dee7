#include "app/check/check_read_recorder.h"

#include <cstring>
#include <functional>

#include "platform/system/device_facts.h"
#include "platform/system/process.h"

namespace velto::app {

namespace {

// Set while the recorder itself looks at the device, so that its own reads are not recorded.
thread_local bool looking = false;

}  // namespace

constexpr const char* kFact = "fact:";

ReadRecorder::ReadRecorder(plat::Process& process, std::set<std::string> excludedPrefixes,
                           std::string imageFolder, std::set<std::string>& images)
    : process_(process),
      root_(process.root()),
      excluded_(std::move(excludedPrefixes)),
      imageFolder_(std::move(imageFolder)),
      images_(images) {
    root_.setAccessObserver([this](std::string_view path) { observe(path); });
    process_.setFactObserver([this](const char* fact) {
        if (!looking) record(std::string(kFact) + fact);
    });
}

ReadRecorder::~ReadRecorder() {
    root_.setAccessObserver({});
    process_.setFactObserver({});
}

void ReadRecorder::start() {
    std::lock_guard lock(mutex_);
    snapshot_.clear();
    order_.clear();
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
    order_.clear();
    return std::move(snapshot_);
}

std::size_t ReadRecorder::mark() const {
    std::lock_guard lock(mutex_);
    return order_.size();
}

void ReadRecorder::forgetSince(std::size_t mark) {
    std::lock_guard lock(mutex_);
    for (std::size_t i = mark; i < order_.size(); ++i)
        snapshot_.erase(order_[i]);
    if (mark < order_.size()) order_.resize(mark);
}

void ReadRecorder::observe(std::string_view devicePath) {
    if (looking) return;
    std::string path(devicePath);
    {
        std::lock_guard lock(mutex_);
        if (path.size() > 4 && path.compare(path.size() - 4, 4, ".png") == 0 &&
            path.compare(0, imageFolder_.size(), imageFolder_) == 0)
            images_.insert(path);
        for (const std::string& prefix : excluded_)
            if (path.compare(0, prefix.size(), prefix) == 0) return;
    }
    record(std::move(path));
}

void ReadRecorder::record(std::string key) {
    {
        std::lock_guard lock(mutex_);
        if (!active_ || snapshot_.count(key)) return;
    }
    // Taken before the caller goes on: a path first asked for in order to write it is
    // recorded with what it held before.
    std::string print = fingerprint(key);
    std::lock_guard lock(mutex_);
    if (snapshot_.emplace(key, std::move(print)).second) order_.push_back(std::move(key));
}

std::string ReadRecorder::fingerprint(const std::string& key) const {
    looking = true;
    std::string print;
    bool directory = false;
    if (key.compare(0, std::strlen(kFact), kFact) == 0) {
        const plat::DeviceFacts facts = plat::DeviceFacts::read(root_);
        const std::string fact = key.substr(std::strlen(kFact));
        const std::string family = plat::familyName(facts.family);
        const std::string faceTime = facts.faceTime ? "1" : "0";
        const std::string scale = std::to_string(facts.screenScale);
        if (fact == "family")
            print = family;
        else if (fact == "systemVersion")
            print = facts.systemVersion;
        else if (fact == "faceTime")
            print = faceTime;
        else if (fact == "screenScale")
            print = scale;
        else
            print = family + "/" + facts.systemVersion + "/" + faceTime + "/" + scale + "/" +
                    facts.productType;
    } else if (!root_.fileExists(key, &directory)) {
        print = "-";
    } else if (directory) {
        print = "d";
        for (const std::string& name : root_.contentsOfDirectory(key))
            print += "/" + name;
    } else if (auto bytes = root_.readFile(key)) {
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
