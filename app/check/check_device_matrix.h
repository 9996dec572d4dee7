#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/system/device_facts.h"
#include "platform/system/device_root.h"

namespace velto::app {

// The applications whose presence the bundle's rules test, in the order states list them.
enum OptionalApp : unsigned { kBiteSMS = 1, kWhatsApp = 2, kCallLog = 4, kRecents = 8 };
inline constexpr unsigned kAllOptionalApps = 15;

// One device the check runs the bundle on: what the pages may read of the device itself.
struct DeviceConfig {
    plat::DeviceFamily family = plat::DeviceFamily::iPhone;
    std::string systemVersion;
    bool faceTime = true;
    unsigned apps = 0;      // OptionalApp bits
    std::size_t index = 0;  // place in the matrix

    // "iPad, iOS 12.4, no FaceTime, biteSMS + recents".
    std::string describe() const;
    // The `device init` options that make this device.
    std::vector<std::string> initArguments() const;
    // How much the device holds beyond the least: its optional applications.
    std::size_t size() const;
};

// Every device that matters, smallest first: families iPhone, iPad, iPod; system versions
// 12.4 and 13.0; FaceTime present and absent; every subset of the optional applications,
// fewer applications first.
std::vector<DeviceConfig> deviceMatrix();

// Devices for the configurations, in memory, made once per family and application subset and
// switched between system versions and FaceTime by rewriting the two files that carry them.
// Throws std::runtime_error when a device cannot be written.
class DeviceFarm {
  public:
    explicit DeviceFarm(std::filesystem::path resources);

    // The device for a configuration, its profile and system version made to match.
    std::shared_ptr<plat::DeviceRoot> prepare(const DeviceConfig& config);

  private:
    std::filesystem::path resources_;
    std::map<std::string, std::shared_ptr<plat::DeviceRoot>> made_;
};

}  // namespace velto::app
