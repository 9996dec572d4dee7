#pragma once

#include <ostream>

namespace CLI {
class App;
}

namespace velto::app {

// A bash completion script for velto-settings, from the command line's own description:
// subcommands and options at each level, the choices an option allows, step words at the
// top, file names where a file or folder goes.
void writeBashCompletion(const CLI::App& commandLine, std::ostream& out);

}  // namespace velto::app
