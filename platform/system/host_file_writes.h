#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string_view>

#include "platform/foundation/value.h"

namespace plat {

// Writes every byte to a descriptor, through interrupted and short writes. False on an error,
// with errno set.
bool writeAll(int fd, std::string_view bytes);
bool writeAll(int fd, const Bytes& bytes);

// Writes `bytes` to a fresh file beside `target` (a name nobody could plant first) with the
// given permissions, then renames it over `target`: readers and a full disk leave the old file
// or the new one, never half. Answers 0, or the errno of the step that failed.
int replaceHostFile(const std::filesystem::path& target, const Bytes& bytes, mode_t mode);

}  // namespace plat
