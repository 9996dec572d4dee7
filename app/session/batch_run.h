#pragma once

#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "app/session/step_runner.h"

namespace velto::app {

// Exit statuses of the program.
inline constexpr int kExitOk = 0;
inline constexpr int kExitTrouble = 1;     // no device, unreadable file, bad options
inline constexpr int kExitStepFailed = 2;  // a step could not be carried out
inline constexpr int kExitUnmet = 3;       // an expect step found the session otherwise

// The program's status after a step's outcome; nullopt when the run goes on.
std::optional<int> stopStatus(StepRunner::Outcome outcome);
inline constexpr int kExitNotADevice = 2;  // --device names a folder that is not a device root

// Runs steps given as arguments, one step per argument, after checking them all: a step that
// does not parse fails the run before anything happens. Stops at the first failing step.
int runArgumentSteps(StepRunner& runner, Renderer& renderer, const std::vector<std::string>& steps);

// Runs steps read line by line ('#' comments and blank lines skipped), each as soon as it is
// read, so a script can feed the session through a pipe. Stops at the first failing step.
int runStepStream(StepRunner& runner, Renderer& renderer, std::istream& in);

}  // namespace velto::app
