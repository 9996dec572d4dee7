#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/value.h"
#include "platform/system/port_result.h"

namespace plat {

enum class FileKind { File, Folder, Other };

// Which version of a file a status saw: two statuses of the same unchanged file compare equal,
// and a rewrite gives another version, so what was made of a file can be kept until it changes.
struct FileVersion {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0;  // nanoseconds
    bool operator==(const FileVersion&) const = default;
};

struct FileStatus {
    FileKind kind = FileKind::Other;
    FileVersion version;
    bool operator==(const FileStatus&) const = default;
};

// The device's file system, as the bundle and the platform see it: every file operation they
// make goes through this port, by device path ("/var/mobile/..."). Relative paths start at the
// device's working directory, "/", and ".." stops at the top. The host implementation lays the
// device out in a host folder; the memory implementation keeps it in the process, for tools
// that open thousands of devices (the resource check) and for tests.
// Every operation may be called from any thread.
class DeviceRoot {
  public:
    // The most a read takes in: one file must not eat the machine.
    static constexpr std::uint64_t kReadLimit = std::uint64_t{64} << 20;

    virtual ~DeviceRoot() = default;

    // Every operation that can fail answers a PortResult: the value, or a message that names
    // the path and why ("Cannot read /var/x: not a regular file").

    // What is at a path, symbolic links followed; a failure when nothing is there.
    virtual PortResult<FileStatus> status(std::string_view devicePath) const = 0;
    // The whole file; a failure when missing, unreadable, not a regular file (a FIFO, a
    // device, a folder: these never block) or larger than the limit.
    virtual PortResult<Bytes> readFile(std::string_view devicePath,
                                       std::uint64_t limit = kReadLimit) const = 0;
    // Atomically: readers see the old contents or the new, never half. In place: the file
    // keeps its identity, so whoever holds it sees the new contents.
    virtual PortStatus writeFile(std::string_view devicePath, const Bytes& bytes,
                                 bool atomically) const = 0;
    // Adds to the end of a file, making it when missing.
    virtual PortStatus appendFile(std::string_view devicePath, const Bytes& bytes) const = 0;
    // createDirectoryAtPath:withIntermediateDirectories:attributes:error:.
    virtual PortStatus createDirectory(std::string_view devicePath,
                                       bool withIntermediates) const = 0;
    // removeItemAtPath:error: (files and whole folders).
    virtual PortStatus removeItem(std::string_view devicePath) const = 0;
    // moveItemAtPath:toPath:error:, refusing to replace anything at the destination.
    virtual PortStatus moveItem(std::string_view from, std::string_view to) const = 0;
    // Names in a folder, sorted; empty when it is not a readable folder.
    virtual std::vector<std::string> contentsOfDirectory(std::string_view devicePath) const = 0;

    // Holds this program's other writers of a folder off, in every process, until the answer
    // is dropped: each read-modify-write of a settings file runs under it, so two writers do
    // not lose each other's keys, and a reader never takes a half-written file for a corrupt
    // one while its writer is at work. A thread may take it again while it holds it. Nothing
    // (and no wait) when the folder is not there.
    class FolderLock {
      public:
        virtual ~FolderLock() = default;
    };
    virtual std::unique_ptr<FolderLock> lockFolder(std::string_view devicePath) const = 0;

    // A host folder that stands for the device's "/" and holds, up to date, what the device
    // holds under `deviceFolder`: for programs that run beside the process and read files by
    // host path (the shell's dpkg-query). Nothing when it cannot be made.
    virtual std::optional<std::filesystem::path> hostFolderHolding(
        std::string_view deviceFolder) const = 0;
    // The host folder the device lives in; nothing for a device in memory.
    virtual std::optional<std::filesystem::path> hostLocation() const = 0;
    // Which device this is, in messages: its host folder, or a name for one in memory.
    virtual std::string describe() const = 0;
    // Distinguishes the devices of one process in caches that outlive a device's files.
    virtual std::string identity() const = 0;

    // NSFileManager fileExistsAtPath:isDirectory:.
    bool fileExists(std::string_view devicePath, bool* isDirectory = nullptr) const;

    // Called with every device path asked for, before it is looked at; from any thread. Tools
    // that must know what a run depended on (the resource check) watch through it.
    using AccessObserver = std::function<void(std::string_view devicePath)>;
    void setAccessObserver(AccessObserver observer) { observer_ = std::move(observer); }

  protected:
    void observe(std::string_view devicePath) const {
        if (observer_) observer_(devicePath);
    }

  private:
    AccessObserver observer_;
};

// The components of a device path after "." and ".." are applied, the way the device's "/"
// answers them: ".." at the top stays at the top.
std::vector<std::string_view> devicePathComponents(std::string_view devicePath);

}  // namespace plat
