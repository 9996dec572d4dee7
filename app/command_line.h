#pragma once

#include <memory>

namespace CLI {
class App;
}

namespace velto::app {

// The program's command line: its options and subcommands, declared once for parsing, for
// --help, and for the man page and the shell completion made from the same description.
class CommandLine {
  public:
    CommandLine();
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    const CLI::App& description() const;

    // Reads the arguments and runs what they ask for. Answers the exit status.
    int run(int argc, char** argv);

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

// The whole program: reads the command line and runs what it asks for. Answers the exit
// status.
int runCommandLine(int argc, char** argv);

}  // namespace velto::app
