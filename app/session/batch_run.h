#pragma once

#include <filesystem>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "app/exit_status.h"
#include "app/session/step_runner.h"

namespace velto::app {

// The program's status after a step's outcome; nullopt when the run goes on.
std::optional<int> stopStatus(StepRunner::Outcome outcome);

// Runs steps given as arguments, one step per argument, after checking them all: a step that
// does not parse fails the run before anything happens. Stops at the first failing step.
int runArgumentSteps(StepRunner& runner, Renderer& renderer, const std::vector<std::string>& steps);

// Runs steps read line by line ('#' comments and blank lines skipped, a byte order mark
// before the first line ignored), each as soon as it is read, so a script can feed the session
// through a pipe. Relative files the steps name are found in `folder` (the steps file's own),
// else in the working directory. Stops at the first failing step.
int runStepStream(StepRunner& runner, Renderer& renderer, std::istream& in,
                  const std::filesystem::path& folder = {});

}  // namespace velto::app
