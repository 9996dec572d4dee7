#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace velto::app {

// The interactive session's history, one step a line, oldest first. Read and written here
// rather than by the line editor, whose loader trusts the file's escapes and reads past its
// buffer on a damaged one.

// The steps kept in `file`, at most the last `most`: nothing when it is missing, not a regular
// file (a FIFO must not hang the start) or larger than a history can be. A line that is not
// text (not UTF-8, or with control characters) is passed over. Lines in the editor's own
// escaped form ("\040" for a space) are read as what they stand for.
std::vector<std::string> loadHistory(const std::filesystem::path& file, std::size_t most);

// Written beside the file and renamed over it. False when it cannot be written.
bool saveHistory(const std::filesystem::path& file, const std::vector<std::string>& steps);

}  // namespace velto::app
