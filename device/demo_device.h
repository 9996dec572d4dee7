#pragma once

#include <vector>

#include "device/device_options.h"

namespace velto::device {

// The demo device's applications for a family: the system applications a phone has (no
// Phone application on iPad or iPod), biteSMS and the maker's call-log application in
// /Applications, WhatsApp and a handful of other user applications.
std::vector<AppChoice> demoApps(plat::DeviceFamily family);

// Adds the demo's content to options: its applications (after any already chosen), the
// product's package at a released version, a main settings file with the master switch on, and
// a few lines of the extension's log.
void addDemoContent(DeviceOptions& options);

inline constexpr const char* kDemoProductVersion = "2.1.0-1";

}  // namespace velto::device
