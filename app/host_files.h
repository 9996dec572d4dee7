#pragma once

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>

#include "platform/foundation/value.h"
#include "platform/system/port_result.h"

namespace velto::app {

// Files on the host, outside any device: what `defaults export/import` and `plutil` read and
// write. "-" names standard input or output.

// The most a host file or standard input may hold: a property list, never the machine's memory.
inline constexpr std::uint64_t kHostReadLimit = std::uint64_t{64} << 20;

// The whole file, or why it cannot be read (missing, not a regular file, over the limit).
plat::PortResult<plat::Bytes> readHostFile(const std::string& path, std::istream& standardInput);

// Written to a fresh file beside the target (never a name another user could plant first) and
// renamed over it, so a failed write leaves the old file whole. The new file keeps the old
// one's permissions; a symbolic link is written through, and stays a link.
plat::PortStatus writeHostFile(const std::string& path, const plat::Bytes& bytes,
                               std::ostream& standardOutput);

}  // namespace velto::app
