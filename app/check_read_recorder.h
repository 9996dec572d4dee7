#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace plat {
class DeviceRoot;
}

namespace velto::app {

// What one page's exercise read of the device, each path with what it held when first asked
// for. Two devices on which every such path holds the same give the page the same run, so the
// check exercises a page once per distinct snapshot instead of once per device.
using ReadSnapshot = std::map<std::string, std::string>;

class ReadRecorder {
  public:
    // Watches the root (the process's own, which the bundle reads through). Paths under the
    // excluded prefixes are the check's own inputs (the stored states) and are not recorded.
    // Every .png path asked for under `imageFolder` goes into `images`, recording or not.
    ReadRecorder(plat::DeviceRoot& root, std::set<std::string> excludedPrefixes,
                 std::string imageFolder, std::set<std::string>& images);
    ~ReadRecorder();
    ReadRecorder(const ReadRecorder&) = delete;
    ReadRecorder& operator=(const ReadRecorder&) = delete;

    void start();
    void pause();
    void resume();
    ReadSnapshot finish();

    // Whether every path of the snapshot still holds what it held.
    bool matches(const ReadSnapshot& snapshot) const;

  private:
    void observe(std::string_view devicePath);
    std::string fingerprint(const std::string& devicePath) const;

    plat::DeviceRoot& root_;
    std::set<std::string> excluded_;
    std::string imageFolder_;
    std::set<std::string>& images_;
    mutable std::mutex mutex_;
    bool active_ = false;
    ReadSnapshot snapshot_;
};

}  // namespace velto::app
