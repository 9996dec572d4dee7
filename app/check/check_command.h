#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace velto::app {

struct CheckRequest {
    std::optional<std::string> resources;
    bool json = false;
    bool strict = false;
    // Parts of the device matrix, for a quicker look; empty: all of it.
    std::vector<std::string> families;
    std::vector<std::string> systemVersions;
};

// Exit statuses of `check`.
inline constexpr int kCheckClean = 0;
inline constexpr int kCheckFound = 1;
inline constexpr int kCheckBadArguments = 2;

void declareCheck(CLI::App& check, CheckRequest& request);

// Exercises every page the root lists link to on every device that matters, then checks what
// no state reaches, and prints the findings. kCheckFound when an error is found (or, with
// strict, a warning).
int runCheck(const CheckRequest& request);

}  // namespace velto::app
