#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace plat {
class DeviceRoot;
class Process;
}  // namespace plat

namespace velto::app {

// What one page's exercise read of the device, each path with what it held when first asked
// for. Two devices on which every such path holds the same give the page the same run, so the
// check exercises a page once per distinct snapshot instead of once per device.
using ReadSnapshot = std::map<std::string, std::string>;

class ReadRecorder {
  public:
    // Watches the process's root, which the bundle reads through, and the device facts it asks
    // for; a fact is recorded as the fact, not as the file that carries it, so a page that
    // asks only for the family runs once per family. Paths under the excluded prefixes are
    // the check's own inputs (the stored states, the files of the facts) and are not recorded.
    // Every .png path asked for under `imageFolder` goes into `images`, recording or not.
    ReadRecorder(plat::Process& process, std::set<std::string> excludedPrefixes,
                 std::string imageFolder, std::set<std::string>& images);
    ~ReadRecorder();
    ReadRecorder(const ReadRecorder&) = delete;
    ReadRecorder& operator=(const ReadRecorder&) = delete;

    void start();
    void pause();
    void resume();
    ReadSnapshot finish();

    // Reads since a mark can be forgotten: those of a restarted interface's root page belong
    // to the root page's own record, not to the page that asked for the restart.
    std::size_t mark() const;
    void forgetSince(std::size_t mark);

    // Whether every path of the snapshot still holds what it held.
    bool matches(const ReadSnapshot& snapshot) const;

  private:
    void observe(std::string_view devicePath);
    void record(std::string key);
    std::string fingerprint(const std::string& key) const;

    plat::Process& process_;
    plat::DeviceRoot& root_;
    std::set<std::string> excluded_;
    std::string imageFolder_;
    std::set<std::string>& images_;
    mutable std::mutex mutex_;
    bool active_ = false;
    ReadSnapshot snapshot_;
    std::vector<std::string> order_;  // the snapshot's keys as first read
};

}  // namespace velto::app
