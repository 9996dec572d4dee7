#include "app/command_line.h"

#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app/check/check_command.h"
#include "app/commands/defaults_command.h"
#include "app/commands/device_init_command.h"
#include "app/commands/device_location.h"
#include "app/commands/plutil_command.h"
#include "app/exit_status.h"
#include "app/render/human_renderer.h"
#include "app/render/json_output.h"
#include "app/render/json_renderer.h"
#include "app/serve/serve_command.h"
#include "app/session/batch_run.h"
#include "app/session/interactive.h"
#include "app/session/session.h"
#include "app/session/spelling.h"
#include "app/session/step.h"
#include "app/session/step_runner.h"

namespace velto::app {

// check keeps statuses of its own; they must mean what the program's mean.
static_assert(kCheckClean == kExitOk && kCheckFound == kExitFailed &&
              kCheckBadArguments == kExitUsage);

// What the command line asked for.
struct CommandLineOptions {
    std::optional<std::string> device;
    // Every --device given: serve switches among them, the rest take one.
    std::vector<std::string> devices;
    bool json = false;
    std::vector<std::string> steps;
    std::string runFile;
    DeviceInitRequest deviceInit;
    std::string domain;
    std::optional<std::string> key;
    std::string file;
    std::string screenshots;
    CheckRequest check;
    std::optional<long> watchRedraws;
    std::optional<double> watchTimeout;
    std::string colour = "auto";
    ServeRequest serve;
};

namespace {

using Options = CommandLineOptions;

int trouble(bool json, const std::string& message, int status = kExitFailed) {
    if (json)
        std::cerr << jsonText(errorLine(message)) << "\n";
    else
        std::cerr << "velto-settings: " << message << "\n";
    return status;
}

// --color: "always" and "never" say it outright; "auto" colours a terminal that wants it.
bool colourOn(const Options& options, int fd) {
    if (options.colour == "auto") return colourFor(fd);
    return options.colour == "always";
}

std::unique_ptr<Renderer> makeRenderer(const Options& options) {
    if (options.json) return std::make_unique<JsonRenderer>(std::cout, std::cerr);
    return std::make_unique<HumanRenderer>(std::cout, std::cerr, colourOn(options, STDOUT_FILENO),
                                           colourOn(options, STDERR_FILENO));
}

// The file of `run FILE`, opened; a usage error names what is wrong with the path.
std::optional<std::string> openSteps(const std::string& path, std::ifstream& file) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) return "no steps file " + path;
    if (std::filesystem::is_directory(status))
        return path + " is a folder; run takes a file of steps, one per line";
    file.open(path);
    if (!file) return "cannot read the steps file " + path;
    return std::nullopt;
}

// The folder --screenshots names, made when missing; its parent must exist, so that a slip in
// the path is reported instead of building a tree of folders nobody asked for.
std::optional<std::string> prepareScreenshotFolder(const std::filesystem::path& folder) {
    std::error_code error;
    if (std::filesystem::is_directory(folder, error)) return std::nullopt;
    if (std::filesystem::exists(folder, error)) return folder.string() + " is not a folder";
    const std::filesystem::path parent =
        folder.parent_path().empty() ? std::filesystem::path(".") : folder.parent_path();
    if (!std::filesystem::is_directory(parent, error))
        return "cannot make " + folder.string() + ": there is no folder " + parent.string();
    if (!std::filesystem::create_directory(folder, error) || error)
        return "cannot make " + folder.string() + ": " + error.message();
    return std::nullopt;
}

// Standard input, when its end may end a watch: a terminal (Ctrl-D) or a pipe, unless the steps
// themselves come from there. /dev/null (a background job's input) ends nothing.
int watchedInput(bool stepsFromInput) {
    struct stat info {};
    if (stepsFromInput || ::fstat(STDIN_FILENO, &info) != 0) return -1;
    if (::isatty(STDIN_FILENO) || S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode))
        return STDIN_FILENO;
    return -1;
}

// `watch [--redraws N] [--timeout SECONDS]` as a step, after the steps given with it.
std::string watchStep(const Options& options) {
    std::string step = "watch";
    if (options.watchRedraws) step += " --redraws " + std::to_string(*options.watchRedraws);
    if (options.watchTimeout) {
        std::ostringstream seconds;
        seconds << *options.watchTimeout;
        step += " --timeout " + seconds.str();
    }
    return step;
}

// Steps from the arguments, from `run FILE|-`, or the interactive session (a printed root
// page when standard input is not a terminal).
int runSession(const Options& options, bool fromFile, bool watch) {
    std::filesystem::path device;
    std::ifstream file;
    try {
        if (fromFile && options.runFile != "-")
            if (const auto wrong = openSteps(options.runFile, file))
                return trouble(options.json, *wrong, kExitUsage);
        device = prepareDevice(options.device);
    } catch (const NotADevice& e) {
        return trouble(options.json, e.what(), kExitNotADevice);
    } catch (const std::exception& e) {
        return trouble(options.json, e.what());
    }

    auto renderer = makeRenderer(options);
    std::unique_ptr<Session> session;
    try {
        session = std::make_unique<Session>(device);
    } catch (const std::exception& e) {
        return trouble(options.json,
                       "the Settings application could not start: " + std::string(e.what()));
    }
    StepRunner runner(*session, *renderer);
    if (!options.screenshots.empty()) {
        if (const auto wrong = prepareScreenshotFolder(options.screenshots))
            return trouble(options.json, *wrong, kExitUsage);
        runner.setScreenshotFolder(options.screenshots);
    }
    WatchPlaces places;
    places.device = device;
    // The demo device gets the bundle afresh at every start, so its source is watched too.
    if (!options.device) places.resources = resourcesFolder();
    places.input = watchedInput(fromFile && options.runFile == "-");
    runner.setWatchPlaces(places);

    if (watch) {
        std::vector<std::string> steps = options.steps;
        steps.push_back(watchStep(options));
        return runArgumentSteps(runner, *renderer, steps);
    }

    if (fromFile) {
        if (options.runFile == "-") return runStepStream(runner, *renderer, std::cin);
        return runStepStream(runner, *renderer, file,
                             std::filesystem::absolute(options.runFile).parent_path());
    }
    if (!options.steps.empty()) return runArgumentSteps(runner, *renderer, options.steps);
    if (::isatty(STDIN_FILENO))
        return runInteractive(*session, runner, *renderer, !options.json,
                              !options.json && colourOn(options, STDOUT_FILENO));
    return runner.run(showStep()) == StepRunner::Outcome::Failed ? kExitStepFailed : kExitOk;
}

int runDefaults(const Options& options, CLI::App& defaults) {
    std::filesystem::path device;
    try {
        device = prepareDevice(options.device);
    } catch (const NotADevice& e) {
        return trouble(options.json, e.what(), kExitNotADevice);
    } catch (const std::exception& e) {
        return trouble(options.json, e.what());
    }
    DefaultsIo io{std::cout, std::cerr, options.json};
    const CLI::App& command = *defaults.get_subcommands().front();
    const std::string name = command.get_name();
    if (name == "read") return defaultsRead(device, options.domain, options.key, io);
    if (name == "read-type") return defaultsReadType(device, options.domain, *options.key, io);
    if (name == "delete") return defaultsDelete(device, options.domain, options.key, io);
    if (name == "domains") return defaultsDomains(device, io);
    if (name == "export") return defaultsExport(device, options.domain, options.file, io);
    if (name == "import") return defaultsImport(device, options.domain, options.file, io);
    // write takes its arguments unparsed: "-bool" is a type, not an option of ours.
    std::vector<std::string> arguments = command.remaining();
    if (arguments.empty())
        return trouble(options.json, "defaults write needs a DOMAIN", kExitUsage);
    const std::string domain = arguments.front();
    arguments.erase(arguments.begin());
    return defaultsWrite(device, domain, arguments, io);
}

// A first argument that is one word and no step was meant as a subcommand, or as a step that
// takes no argument.
std::optional<std::string> unknownSubcommand(CLI::App& app, const std::vector<std::string>& steps) {
    if (steps.empty() || steps.front().find_first_of(" \t") != std::string::npos ||
        steps.front().empty() || steps.front().starts_with('#') || isStepWord(steps.front()))
        return std::nullopt;
    std::string names;
    std::vector<std::string> words;
    for (const CLI::App* command : app.get_subcommands([](CLI::App*) { return true; })) {
        names += (names.empty() ? "" : ", ") + command->get_name();
        words.push_back(command->get_name());
    }
    for (const auto& [word, takesArgument] : stepWords())
        words.push_back(word);
    const std::string guess = didYouMean(steps.front(), words);
    if (!guess.empty()) return "unknown subcommand '" + steps.front() + "'" + guess;
    return "unknown subcommand '" + steps.front() + "' (subcommands: " + names +
           "; steps: velto-settings help)";
}

int runDemoReset(bool json) {
    std::filesystem::path folder;
    try {
        folder = resetDemoDevice();
    } catch (const std::exception& e) {
        return trouble(json, "cannot reset the demo device: " + std::string(e.what()));
    }
    if (json)
        std::cout << jsonText(nlohmann::json({{"device", folder.string()}, {"reset", true}}))
                  << "\n";
    else
        std::cout << "the demo device at " << folder.string() << " is back to its first state\n";
    return kExitOk;
}

CLI::App* declareDefaults(CLI::App& app, Options& options) {
    CLI::App* defaults = app.add_subcommand("defaults", "read and change preferences domains");
    defaults->require_subcommand(1);
    CLI::App* read = defaults->add_subcommand("read", "print a domain, or one key of it");
    read->add_option("DOMAIN", options.domain)->required();
    read->add_option("KEY", options.key);
    CLI::App* readType = defaults->add_subcommand("read-type", "print the type of one key");
    readType->add_option("DOMAIN", options.domain)->required();
    readType->add_option("KEY", options.key)->required();
    CLI::App* write = defaults->add_subcommand("write", "store one key");
    write->footer(
        "defaults write DOMAIN KEY VALUE\n"
        "defaults write DOMAIN KEY -bool|-int|-float|-string|-data HEX|-date DATE VALUE\n"
        "defaults write DOMAIN KEY -array|-array-add ITEM...\n"
        "defaults write DOMAIN KEY -dict|-dict-add KEY ITEM ...\n"
        "An ITEM is a string, or a type and a value (-int 3). -array-add and -dict-add add to\n"
        "what the key holds. DATE: YYYY-MM-DD[ HH:MM:SS +0000] in UTC. The domain is written\n"
        "as a binary property list.");
    write->prefix_command();
    write->fallthrough(false);
    CLI::App* remove = defaults->add_subcommand("delete", "remove one key, or the whole domain");
    remove->add_option("DOMAIN", options.domain)->required();
    remove->add_option("KEY", options.key);
    defaults->add_subcommand("domains", "list the domains in the preferences folder");
    CLI::App* exportDomain =
        defaults->add_subcommand("export", "write a domain as an XML property list");
    exportDomain->add_option("DOMAIN", options.domain)->required();
    exportDomain->add_option("FILE", options.file, "'-': standard output")->required();
    CLI::App* importDomain = defaults->add_subcommand(
        "import", "replace a domain with a property list dictionary (XML or binary)");
    importDomain->add_option("DOMAIN", options.domain)->required();
    importDomain->add_option("FILE", options.file, "'-': standard input")->required();

    return defaults;
}

CLI::App* declarePlutil(CLI::App& app) {
    CLI::App* plutil = app.add_subcommand("plutil", "check and convert property list files");
    plutil->footer(
        "plutil -lint FILE...                               say whether each is a property list\n"
        "plutil -p FILE...                                  print each for people\n"
        "plutil -convert xml1|binary1|json FILE... [-o OUT]  rewrite in place, or into OUT\n"
        "FILE and OUT may be '-' for standard input and output. Exit status 1 when a file\n"
        "fails.");
    plutil->prefix_command();
    plutil->allow_extras();
    plutil->fallthrough(false);

    return plutil;
}

// CLI::PositiveNumber's message spells out the largest double, 309 digits of it.
CLI::Validator positive() {
    return CLI::Validator(
        [](std::string& text) {
            double number = 0;
            if (!CLI::detail::lexical_cast(text, number) || !(number > 0))
                return std::string("must be positive");
            return std::string();
        },
        "POSITIVE");
}

CLI::App* declareWatch(CLI::App& app, Options& options) {
    CLI::App* watch = app.add_subcommand(
        "watch",
        "show the page the steps lead to, and again whenever the device's settings or "
        "the bundle's resources change (Ctrl-C or end of input ends it)");
    watch->add_option("--redraws", options.watchRedraws, "stop after N redraws")->check(positive());
    watch->add_option("--timeout", options.watchTimeout, "stop after SECONDS")->check(positive());

    return watch;
}

}  // namespace

// The parsed options and the subcommands the run looks at, beside the description they fill.
struct CommandLine::Parts {
    CommandLineOptions options;
    CLI::App app{
        "velto-settings: the Settings application for the VeltoSettings bundle, on a device root.",
        "velto-settings"};
    CLI::App* run = nullptr;
    CLI::App* device = nullptr;
    CLI::App* init = nullptr;
    CLI::App* defaults = nullptr;
    CLI::App* plutil = nullptr;
    CLI::App* demo = nullptr;
    CLI::App* reset = nullptr;
    CLI::App* watch = nullptr;
    CLI::App* check = nullptr;
    CLI::App* serve = nullptr;

    int dispatch();
};

CommandLine::CommandLine() : parts_(std::make_unique<Parts>()) {
    Options& options = parts_->options;
    CLI::App& app = parts_->app;
    app.fallthrough();
    app.set_version_flag("--version", std::string("velto-settings ") + VELTO_VERSION);
    app.add_option("--device", options.devices,
                   "device root folder (default: the demo device); serve switches among several")
        ->type_name("DIR")
        ->allow_extra_args(false);  // one folder each time, so that steps may follow
    app.add_flag("--json", options.json, "JSON Lines output");
    app.add_option("--screenshots", options.screenshots,
                   "also draw every shown page into DIR as 001.png, 002.png...")
        ->type_name("DIR");
    app.add_option("--color", options.colour,
                   "colour the output: auto (a terminal, unless NO_COLOR is set), always or "
                   "never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->capture_default_str();
    app.add_option("STEP", options.steps, "steps to run, one per argument, e.g. 'open Mail'");

    parts_->run =
        app.add_subcommand("run", "run steps from FILE, one per line ('-': standard input)");
    parts_->run->add_option("FILE", options.runFile)->required();

    parts_->device = app.add_subcommand("device", "device roots");
    parts_->device->require_subcommand(1);
    parts_->init = parts_->device->add_subcommand("init", "create a device root");
    declareDeviceInit(*parts_->init, options.deviceInit);

    parts_->defaults = declareDefaults(app, options);
    parts_->plutil = declarePlutil(app);
    parts_->demo = app.add_subcommand("demo", "the demo device used when no --device is given");
    parts_->demo->require_subcommand(1);
    parts_->reset =
        parts_->demo->add_subcommand("reset", "put the demo device back to its first state");

    parts_->watch = declareWatch(app, options);
    parts_->check = app.add_subcommand(
        "check", "prove that the bundle's resources cannot crash the Settings application");
    declareCheck(*parts_->check, options.check);
    parts_->serve = app.add_subcommand(
        "serve", "serve the simulator to a browser on 127.0.0.1, redrawn as files change");
    declareServe(*parts_->serve, options.serve);

    // Set last: subcommands made after it would inherit the list of steps as their footer.
    app.footer(std::string(stepHelp()) + exitStatusHelp());
}

CommandLine::~CommandLine() = default;

const CLI::App& CommandLine::description() const {
    return parts_->app;
}

int CommandLine::run(int argc, char** argv) {
    try {
        parts_->app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return parts_->app.exit(e) == 0 ? kExitOk : kExitUsage;
    }
    return parts_->dispatch();
}

int CommandLine::Parts::dispatch() {
    Options options = this->options;
    if (serve->parsed()) {
        if (!options.steps.empty())
            return trouble(options.json, "serve takes no steps: the browser gives them",
                           kExitUsage);
        return runServe(options.devices, options.serve);
    }
    // The last --device given is the one, as with any option given twice.
    if (!options.devices.empty()) options.device = options.devices.back();
    if (check->parsed()) {
        // The check makes its own devices; a device or steps given with it are a mistake.
        if (!options.steps.empty() || options.device) {
            trouble(options.json || options.check.json, "check takes no steps and no --device");
            return kExitUsage;
        }
        if (options.json) options.check.json = true;
        return runCheck(options.check);
    }
    if (watch->parsed()) return runSession(options, false, true);
    const bool subcommand = run->parsed() || device->parsed() || defaults->parsed() ||
                            demo->parsed() || plutil->parsed();
    if (subcommand && !options.steps.empty())
        return trouble(
            options.json,
            "steps cannot be given together with " + std::string(run->parsed()      ? "run"
                                                                 : device->parsed() ? "device"
                                                                 : demo->parsed()   ? "demo"
                                                                 : plutil->parsed() ? "plutil"
                                                                                    : "defaults"),
            kExitUsage);
    if (plutil->parsed()) return runPlutil(plutil->remaining(), options.json);
    if (reset->parsed()) {
        if (options.device)
            return trouble(options.json, "demo reset takes no --device", kExitUsage);
        return runDemoReset(options.json);
    }
    if (!subcommand)
        if (auto unknown = unknownSubcommand(app, options.steps))
            return trouble(options.json, *unknown, kExitUsage);
    if (init->parsed()) return runDeviceInit(options.deviceInit, options.json);
    if (defaults->parsed()) return runDefaults(options, *defaults);
    return runSession(options, run->parsed(), false);
}

int runCommandLine(int argc, char** argv) {
    return CommandLine().run(argc, argv);
}

}  // namespace velto::app
