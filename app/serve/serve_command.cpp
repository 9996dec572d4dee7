#include "app/serve/serve_command.h"

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "app/commands/device_location.h"
#include "app/exit_status.h"
#include "app/serve/preview_server.h"
#include "app/session/stop_signals.h"

extern char** environ;

namespace velto::app {

namespace {

// How often the device's files are looked at.
constexpr int kServeLookMilliseconds = 200;

// The desktop's browser, through xdg-open (or $BROWSER); false when there is none.
bool openBrowser(const std::string& url) {
    const char* chosen = std::getenv("BROWSER");
    const std::string program = chosen && *chosen ? chosen : "xdg-open";
    std::vector<char*> arguments{const_cast<char*>(program.c_str()), const_cast<char*>(url.c_str()),
                                 nullptr};
    pid_t child = 0;
    if (::posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments.data(), environ) != 0)
        return false;
    // Reaped when it ends, which a browser started in the background does soon.
    std::thread([child] { ::waitpid(child, nullptr, 0); }).detach();
    return true;
}

int serveTrouble(const std::string& message, int status) {
    std::cerr << "velto-settings: " << message << "\n";
    return status;
}

}  // namespace

void declareServe(CLI::App& command, ServeRequest& request) {
    command.add_option("--port", request.port, "the port on 127.0.0.1 (0: any free port)")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    command.add_flag("--open", request.open, "open the page in the desktop's browser");
    command.footer(
        "Serves the simulator to a browser at http://127.0.0.1:PORT/ (the first line printed):\n"
        "the device's screen to click, the journal, a device menu (--device may be repeated) and\n"
        "a redraw whenever a settings file or a resource changes. docs/serve.md describes its\n"
        "HTTP interface. Ctrl-C ends it.");
}

int runServe(const std::vector<std::string>& devices, const ServeRequest& request) {
    std::vector<ServedDevice> served;
    try {
        if (devices.empty()) {
            // The demo device gets the bundle afresh at every start, so its source is watched too.
            served.push_back({prepareDevice(std::nullopt), resourcesFolder()});
        }
        for (const std::string& device : devices)
            served.push_back({prepareDevice(device), std::nullopt});
    } catch (const NotADevice& e) {
        return serveTrouble(e.what(), kExitNotADevice);
    } catch (const std::exception& e) {
        return serveTrouble(e.what(), kExitFailed);
    }

    EventHub hub;
    std::unique_ptr<PreviewSession> session;
    try {
        session = std::make_unique<PreviewSession>(served, hub);
    } catch (const std::exception& e) {
        return serveTrouble(e.what(), kExitFailed);
    }
    PreviewServer server(*session, hub);
    StopSignals signals({SIGINT, SIGTERM});
    if (server.start(request.port) < 0)
        return serveTrouble("cannot listen on 127.0.0.1:" + std::to_string(request.port) +
                                " (in use? --port 0 picks a free port)",
                            kExitFailed);
    std::cout << server.url() << std::endl;
    if (request.open && !openBrowser(server.url()))
        std::cerr << "velto-settings: no browser to open (set BROWSER); visit " << server.url()
                  << "\n";

    const auto stop = [] { return StopSignals::requested(); };
    while (!stop()) {
        ::poll(nullptr, 0, kServeLookMilliseconds);
        try {
            session->lookForChanges(stop);
        } catch (const std::exception& e) {
            std::cerr << "velto-settings: " << e.what() << "\n";
        }
    }
    server.stop();
    return kExitOk;
}

}  // namespace velto::app
