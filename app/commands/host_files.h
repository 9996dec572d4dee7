#pragma once

#include <istream>
#include <optional>
#include <ostream>
#include <string>

#include "platform/foundation/value.h"

namespace velto::app {

// Files on the host, outside any device: what `defaults export/import` and `plutil` read and
// write. "-" names standard input or output.

// The whole file, or nullopt when it cannot be read.
std::optional<plat::Bytes> readHostFile(const std::string& path, std::istream& standardInput);

// Written aside and renamed over the path, so a failed write leaves the old file whole. False
// when it cannot be written.
bool writeHostFile(const std::string& path, const plat::Bytes& bytes, std::ostream& standardOutput);

}  // namespace velto::app
