#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/system/device_root.h"

namespace plat {

// A device whose files live in this process: no system call per access, so a tool can open
// thousands of devices in the time the host takes for a few (the resource check), and tests
// and fuzzers start from a clean device for free. No symbolic links: nothing the product
// writes makes one.
class MemoryDeviceRoot final : public DeviceRoot {
  public:
    MemoryDeviceRoot();
    ~MemoryDeviceRoot() override;
    MemoryDeviceRoot(const MemoryDeviceRoot&) = delete;
    MemoryDeviceRoot& operator=(const MemoryDeviceRoot&) = delete;

    PortResult<FileStatus> status(std::string_view devicePath) const override;
    PortResult<Bytes> readFile(std::string_view devicePath,
                               std::uint64_t limit = kReadLimit) const override;
    PortStatus writeFile(std::string_view devicePath, const Bytes& bytes,
                         bool atomically) const override;
    PortStatus appendFile(std::string_view devicePath, const Bytes& bytes) const override;
    PortStatus createDirectory(std::string_view devicePath, bool withIntermediates) const override;
    PortStatus removeItem(std::string_view devicePath) const override;
    PortStatus moveItem(std::string_view from, std::string_view to) const override;
    std::vector<std::string> contentsOfDirectory(std::string_view devicePath) const override;
    std::unique_ptr<FolderLock> lockFolder(std::string_view devicePath) const override;
    // Written out to a private temporary folder on first use, and again whenever the folder
    // asked for has changed since; the folder goes when the device does.
    std::optional<std::filesystem::path> hostFolderHolding(
        std::string_view deviceFolder) const override;
    std::optional<std::filesystem::path> hostLocation() const override { return std::nullopt; }
    std::string describe() const override;
    std::string identity() const override { return describe(); }

    struct Node;

  private:
    std::uint64_t number_;
    mutable std::mutex mutex_;
    // Writers of one device in memory are threads of this process: one at a time, whatever
    // the folder.
    mutable std::recursive_mutex writers_;
    std::unique_ptr<Node> top_;
    mutable std::filesystem::path exported_;
    mutable std::map<std::string, std::string> exportedVersions_;
};

}  // namespace plat
