#pragma once

#include <array>
#include <string>

namespace velto::app {

// The program's exit statuses, one meaning each. `--help`, the man page and the README list
// them from here; scripts branch on them, so a number never changes its meaning.
inline constexpr int kExitOk = 0;
// The command ran and did not succeed: check found faults, a file failed lint or conversion,
// a defaults key or domain is missing, a file could not be read or written.
inline constexpr int kExitFailed = 1;
// The command line or a step is malformed: an unknown subcommand, option or step, a missing
// or bad argument, a steps file that names no file.
inline constexpr int kExitUsage = 2;
// An `expect` step found the session otherwise.
inline constexpr int kExitUnmet = 3;
// A step could not be carried out (no such row, nothing presented, the bundle raised).
inline constexpr int kExitStepFailed = 4;
// --device names a folder that is not a device root with the bundle installed.
inline constexpr int kExitNotADevice = 5;

struct ExitStatusMeaning {
    int status;
    const char* meaning;
};

inline constexpr std::array<ExitStatusMeaning, 6> kExitStatuses = {{
    {kExitOk, "ok"},
    {kExitFailed, "check found faults, lint failed, or the command failed"},
    {kExitUsage, "usage: a bad subcommand, option, argument or step"},
    {kExitUnmet, "an expectation was not met"},
    {kExitStepFailed, "a step failed"},
    {kExitNotADevice, "--device is not a device root"},
}};

// The list for help texts: "Exit status:" and a line per status.
inline std::string exitStatusHelp() {
    std::string text = "Exit status:\n";
    for (const auto& [status, meaning] : kExitStatuses)
        text += "  " + std::to_string(status) + "  " + meaning + "\n";
    return text;
}

}  // namespace velto::app
