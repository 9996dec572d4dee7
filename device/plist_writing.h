#pragma once

#include <string_view>

#include "platform/foundation/value.h"

namespace plat {
class DeviceRoot;
}

namespace velto::device {

// Writes a binary property list (the form the device's own files take), making the folders
// on the way. False when the value is not a property list or the file cannot be written.
bool writeBinaryPlist(const plat::DeviceRoot& root, std::string_view devicePath,
                      const plat::Value& value);

// The folder part of a device path ("/a/b/c.plist" -> "/a/b").
std::string_view parentOf(std::string_view devicePath);

}  // namespace velto::device
