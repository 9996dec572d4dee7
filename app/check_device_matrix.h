#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/system/device_facts.h"

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
    // How much the device holds beyond the least: its optional applications.
    std::size_t size() const;
};

// Every device that matters, smallest first: families iPhone, iPad, iPod; system versions
// 12.4 and 13.0; FaceTime present and absent; every subset of the optional applications,
// fewer applications first.
std::vector<DeviceConfig> deviceMatrix();

// Device roots for the configurations, made once per family and application subset under a
// work folder and switched between system versions and FaceTime by rewriting the two files
// that carry them. Throws std::runtime_error when a device cannot be written.
class DeviceFarm {
  public:
    DeviceFarm(std::filesystem::path workFolder, std::filesystem::path resources);

    // The device root for a configuration, its profile and system version made to match.
    std::filesystem::path prepare(const DeviceConfig& config);

  private:
    std::filesystem::path work_;
    std::filesystem::path resources_;
    std::map<std::string, std::filesystem::path> made_;
};

}  // namespace velto::app
