#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/value.h"
#include "platform/system/journal.h"
#include "platform/system/process.h"

namespace testsupport {

inline plat::Bytes bytesOf(const std::string& text) {
    return plat::Bytes(text.begin(), text.end());
}

// A fresh "process" on a temporary device root, current for the object's life. Tests get a
// clean journal, clean process-wide slots and an empty device they fill as they need.
class TestDevice {
  public:
    TestDevice();
    ~TestDevice();
    TestDevice(const TestDevice&) = delete;
    TestDevice& operator=(const TestDevice&) = delete;

    plat::Process& process() { return *process_; }
    plat::Journal& journal() const { return process_->journal(); }
    const std::filesystem::path& root() const { return root_; }
    // The host path of a device path.
    std::filesystem::path host(const std::string& devicePath) const;

    void writeText(const std::string& devicePath, const std::string& text) const;
    // A property list, binary unless xml is asked for.
    void writePlist(const std::string& devicePath, const plat::Value& value,
                    bool xml = false) const;
    plat::Value readPlist(const std::string& devicePath) const;
    bool exists(const std::string& devicePath) const;

    // Device facts (the profile) and system version.
    void setProfile(const std::string& family, double scale = 3, bool faceTime = true) const;
    void setSystemVersion(const std::string& version) const;

    // Copies a folder of the source tree into a device folder.
    void install(const std::filesystem::path& sourceFolder, const std::string& deviceFolder) const;

    // Journal entries of one kind, in order.
    template <typename Event>
    std::vector<Event> entries() const {
        return process_->journal().entriesOf<Event>();
    }
    std::vector<std::string> logLines() const;
    // Entries since a mark, a line each: "log <text>", "dismiss <class> <how> animated"...
    std::vector<std::string> journalLines(std::size_t mark) const;
    std::vector<std::string> notifications() const;

  private:
    std::filesystem::path root_;
    std::unique_ptr<plat::Process> process_;
    std::unique_ptr<plat::ProcessScope> scope_;
};

// The checkout's source folder.
std::filesystem::path sourceDir();

}  // namespace testsupport
