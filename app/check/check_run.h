#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <vector>

#include "app/check/check_device_matrix.h"
#include "app/check/check_findings.h"

namespace velto::app {

struct CheckOutcome {
    FindingSet findings;
    std::size_t devices = 0;
    std::size_t steps = 0;
    std::size_t states = 0;  // distinct states the exploration reached
    bool bounded = false;    // a bound stopped the exploration somewhere
};

// How far the check has got, summed over its workers.
struct CheckProgress {
    std::size_t devices = 0;
    std::size_t totalDevices = 0;
    std::size_t pages = 0;
    std::size_t states = 0;
};

// Who hears of the check while it runs. `found` hears each finding once, when it is first
// found: a later state of it that is smaller replaces it in the outcome, not in what was heard.
struct CheckListener {
    std::function<void(const Finding&)> found;
    std::function<void(const CheckProgress&)> progress;
};

// Exercises the bundle with these resources on the devices, in worker processes that share
// the devices out, then runs the static checks. The findings do not depend on how many
// workers ran. Throws std::runtime_error when the check itself cannot run.
CheckOutcome checkBundle(const std::filesystem::path& resources,
                         const std::vector<DeviceConfig>& configs,
                         const CheckListener& listener = {});

}  // namespace velto::app
