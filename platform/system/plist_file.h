#pragma once

#include <string_view>

#include "platform/foundation/value.h"

namespace plat {

class DeviceRoot;

// The file side of NSDictionary, NSArray and NSData, on device paths. The overloads without a
// DeviceRoot use the current process's device (Process::current().root()).

// +[NSDictionary dictionaryWithContentsOfFile:]: XML or binary; nil when the file is missing,
// unreadable or corrupt, or when its root is not a dictionary.
Value dictionaryWithContentsOfFile(const DeviceRoot& root, std::string_view devicePath);
Value dictionaryWithContentsOfFile(std::string_view devicePath);

// +[NSArray arrayWithContentsOfFile:]: the same for an array root.
Value arrayWithContentsOfFile(const DeviceRoot& root, std::string_view devicePath);
Value arrayWithContentsOfFile(std::string_view devicePath);

// -[NSDictionary/NSArray writeToFile:atomically:]: an XML property list. False, and nothing
// written, unless the value is a dictionary or array holding only property-list objects.
bool writePropertyListToFile(const DeviceRoot& root, const Value& value,
                             std::string_view devicePath, bool atomically);
bool writePropertyListToFile(const Value& value, std::string_view devicePath, bool atomically);

// -[NSData writeToFile:atomically:]. A ".plist" path that holds something which does not read
// as a dictionary (unparseable, too large, not a regular file) is first renamed aside to
// "<path>.unreadable-<UTC time>", with one log line naming both paths: every read-modify-write
// of a preferences domain comes through here, and none may silently replace what it could not
// read. Atomically: through an auxiliary file renamed over the
// path. Otherwise in place: the existing file (its inode, anyone's open handle, hard links)
// gets the new bytes.
bool writeDataToFile(const DeviceRoot& root, const Bytes& bytes, std::string_view devicePath,
                     bool atomically);
bool writeDataToFile(const Bytes& bytes, std::string_view devicePath, bool atomically);

}  // namespace plat
