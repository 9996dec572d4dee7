#pragma once

namespace velto::app {

// The whole program: reads the command line and runs what it asks for. Answers the exit
// status.
int runCommandLine(int argc, char** argv);

}  // namespace velto::app
