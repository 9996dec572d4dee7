#pragma once

#include <filesystem>
#include <mutex>
#include <optional>

#include "platform/system/device_root.h"

namespace plat {

// A device laid out in a host folder. Nothing resolves outside it: ".." stops at the top, and
// a path whose real location (after symbolic links) lies outside is refused.
class HostDeviceRoot final : public DeviceRoot {
  public:
    explicit HostDeviceRoot(std::filesystem::path hostRoot);

    const std::filesystem::path& hostRoot() const { return hostRoot_; }
    // The host path of a device path, or nullopt when it would escape the root.
    std::optional<std::filesystem::path> resolve(std::string_view devicePath) const;

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
    std::optional<std::filesystem::path> hostFolderHolding(
        std::string_view deviceFolder) const override;
    std::optional<std::filesystem::path> hostLocation() const override { return hostRoot_; }
    std::string describe() const override { return hostRoot_.string(); }
    std::string identity() const override { return hostRoot_.string(); }

  private:
    std::filesystem::path hostRoot_;
    mutable std::mutex realRootMutex_;
    mutable std::optional<std::filesystem::path> realRoot_;
};

}  // namespace plat
