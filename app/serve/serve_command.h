#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace velto::app {

// `serve [--port N] [--open]`: the options as the command line gives them.
struct ServeRequest {
    int port = 8765;
    bool open = false;
};

// Declares the subcommand's options on `command`, filling `request`.
void declareServe(CLI::App& command, ServeRequest& request);

// Serves the simulator to a browser on the devices given (the demo device when none is) until
// Ctrl-C. Prints the URL as its first line. Answers the exit status.
int runServe(const std::vector<std::string>& devices, const ServeRequest& request);

}  // namespace velto::app
