#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/value.h"

namespace plat {

// A host folder laid out like the device's file system. Device paths ("/var/mobile/...")
// resolve under it; relative paths resolve against the device's working directory, "/".
// Nothing resolves outside the root: ".." stops at the root, and a path whose real location
// (after symbolic links) lies outside is refused.
class DeviceRoot {
  public:
    // The most a read takes in: one file must not eat the machine.
    static constexpr std::uint64_t kReadLimit = std::uint64_t{64} << 20;

    explicit DeviceRoot(std::filesystem::path hostRoot);

    const std::filesystem::path& hostRoot() const { return hostRoot_; }

    // The host path of a device path, or nullopt when it would escape the root.
    std::optional<std::filesystem::path> resolve(std::string_view devicePath) const;

    // NSFileManager fileExistsAtPath:isDirectory:.
    bool fileExists(std::string_view devicePath, bool* isDirectory = nullptr) const;
    // The whole file, or nullopt when missing, unreadable, not a regular file (a FIFO, a
    // device, a folder: these read as missing and are never opened for reading, so nothing
    // blocks) or larger than the limit.
    std::optional<Bytes> readFile(std::string_view devicePath,
                                  std::uint64_t limit = kReadLimit) const;
    // Atomically: into a temporary file beside the target, then renamed over it. In place:
    // the target is truncated and written directly. False on any failure.
    bool writeFile(std::string_view devicePath, const Bytes& bytes, bool atomically) const;
    // createDirectoryAtPath:withIntermediateDirectories:attributes:error:.
    bool createDirectory(std::string_view devicePath, bool withIntermediates,
                         std::string* error = nullptr) const;
    // removeItemAtPath:error: (files and whole folders). False with a message on failure.
    bool removeItem(std::string_view devicePath, std::string* error = nullptr) const;
    // Names in a folder, sorted; empty when it is not a readable folder.
    std::vector<std::string> contentsOfDirectory(std::string_view devicePath) const;

    // Called with every device path asked for, before it is resolved; from any thread. Tools
    // that must know what a run depended on (the resource check) watch through it.
    using AccessObserver = std::function<void(std::string_view devicePath)>;
    void setAccessObserver(AccessObserver observer) { observer_ = std::move(observer); }

  private:
    std::filesystem::path hostRoot_;
    AccessObserver observer_;
    mutable std::mutex realRootMutex_;
    mutable std::optional<std::filesystem::path> realRoot_;
};

}  // namespace plat
