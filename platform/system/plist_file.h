#pragma once

#include <memory>
#include <string_view>

#include "platform/foundation/value.h"
#include "platform/system/device_root.h"

namespace plat {

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
// The answer says why a write was refused (no space, a read-only folder, a link leading
// outside the device). A ".plist" write runs under the folder's writer lock.
PortStatus writeDataToFile(const DeviceRoot& root, const Bytes& bytes, std::string_view devicePath,
                           bool atomically);
PortStatus writeDataToFile(const Bytes& bytes, std::string_view devicePath, bool atomically);

// The writer lock of the folder holding a settings file (DeviceRoot::lockFolder), for a
// read-modify-write from its read to its write.
std::unique_ptr<DeviceRoot::FolderLock> lockForWriting(const DeviceRoot& root,
                                                       std::string_view devicePath);
std::unique_ptr<DeviceRoot::FolderLock> lockForWriting(std::string_view devicePath);

}  // namespace plat
