#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace velto::app {

// `device init DIR [options]`: the options as the command line gives them.
struct DeviceInitRequest {
    std::string folder;
    std::string family = "iphone";
    std::string systemVersion = "14.4";
    int scale = 0;  // 0: the family's usual scale
    bool noFaceTime = false;
    bool noExtension = false;
    bool demo = false;
    bool force = false;  // write into a folder that already holds something
    int userApps = 0;
    std::vector<std::string> apps;
    std::vector<std::string> packages;
    std::string extensionVersion;
    std::string from;  // a real device's files to import: a copy of its / or a tar of one
};

// Declares the subcommand's arguments on `command`, filling `request`.
void declareDeviceInit(CLI::App& command, DeviceInitRequest& request);

// Writes the device; answers the exit status, with a message on `err` on failure.
int runDeviceInit(const DeviceInitRequest& request, bool json);

}  // namespace velto::app
