#include <exception>
#include <iostream>

#include "app/command_line.h"
#include "app/exit_status.h"

int main(int argc, char** argv) {
    // Whatever goes wrong ends with a message and a status, never with abort().
    try {
        return velto::app::runCommandLine(argc, argv);
    } catch (const std::exception& e) {
        std::cerr << "velto-settings: " << e.what() << "\n";
    } catch (...) {
        std::cerr << "velto-settings: unexpected failure\n";
    }
    return velto::app::kExitFailed;
}
