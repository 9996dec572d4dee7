#pragma once

#include <ostream>

namespace CLI {
class App;
}

namespace velto::app {

// The man page of velto-settings in roff, from the command line's own description: its
// options, every subcommand with its options and notes, the steps and the exit statuses.
void writeManPage(const CLI::App& commandLine, std::ostream& out);

}  // namespace velto::app
