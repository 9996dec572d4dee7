#pragma once

#include <string>
#include <vector>

#include "device/app_choice.h"
#include "platform/foundation/value.h"
#include "platform/system/device_facts.h"

namespace velto::device {

// Everything `device init` can choose about a device.
struct DeviceOptions {
    plat::DeviceFamily family = plat::DeviceFamily::iPhone;
    std::string systemVersion = "14.4";
    int scale = 3;
    bool faceTime = true;
    // Whether the extension's SpringBoard side answers the bundle's requests.
    bool extensionAnswers = true;
    // The product version the extension's SpringBoard side reports, when it is not the one the
    // package database holds (a copy installed without the package manager). Empty: the
    // database's.
    std::string extensionVersion;
    std::vector<AppChoice> apps;
    std::vector<PackageChoice> packages;
    // The main settings file's contents; nil leaves the file absent (every option off).
    plat::Value mainSettings;
    // The extension's log file; empty leaves none (logging was never on).
    std::string extensionLog;
};

}  // namespace velto::device
