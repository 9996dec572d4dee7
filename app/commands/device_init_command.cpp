#include "app/commands/device_init_command.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>

#include "app/commands/device_location.h"
#include "app/exit_status.h"
#include "app/render/json_output.h"
#include "device/demo_device.h"
#include "device/device_import.h"
#include "device/device_init.h"
#include "device/generated_apps.h"
#include "device/installed_app_list.h"
#include "platform/system/device_models.h"
#include "platform/system/host_device_root.h"

namespace velto::app {

void declareDeviceInit(CLI::App& command, DeviceInitRequest& request) {
    command.add_option("DIR", request.folder, "folder of the new device root")->required();
    command.add_option("--family", request.family, "iphone, ipad or ipod")
        ->check(CLI::IsMember({"iphone", "ipad", "ipod"}))
        ->capture_default_str();
    command.add_option("--system-version", request.systemVersion, "X.Y[.Z]")->capture_default_str();
    command
        .add_option("--scale", request.scale,
                    "screen scale: 1, 2 or 3 (default 3 on an iphone, 2 on an ipad or ipod)")
        ->check(CLI::IsMember({1, 2, 3}));
    command.add_flag("--no-facetime", request.noFaceTime, "the device offers no FaceTime");
    command
        .add_option("--app", request.apps,
                    "an installed application: ID[,NAME[,system|user]], or whatsapp, bitesms, "
                    "ringledger, recents (repeatable)")
        ->allow_extra_args(false);
    command
        .add_option("--package", request.packages,
                    "a package of the dpkg database: ID=VERSION (repeatable)")
        ->allow_extra_args(false);
    command
        .add_option("--user-apps", request.userApps,
                    "N generated user applications with distinct names and icons")
        ->check(CLI::Range(0, 100000));
    command.add_flag("--no-extension", request.noExtension,
                     "the extension does not answer requests");
    command.add_option("--extension-version", request.extensionVersion,
                       "the version the extension reports of itself (default: the "
                       "com.norvale.velto2 package's)");
    command.add_flag("--demo", request.demo,
                     "the demo content: about thirty apps, the product installed, on");
    command.add_option("--from", request.from,
                       "import a real device's preferences, applications (Info.plist and icons), "
                       "dpkg status and system version from a copy of its / or a tar of one");
    command.add_flag("--force", request.force,
                     "write into a folder that is not empty (never the host's /)");
}

namespace {

plat::DeviceFamily familyOf(const std::string& name) {
    if (name == "ipad") return plat::DeviceFamily::iPad;
    if (name == "ipod") return plat::DeviceFamily::iPod;
    return plat::DeviceFamily::iPhone;
}

// The scales the family's models have, "1x or 2x".
std::string scalesOf(plat::DeviceFamily family) {
    std::string text;
    for (int scale = 1; scale <= 3; ++scale)
        if (plat::modelFor(family, scale))
            text += (text.empty() ? "" : " or ") + std::to_string(scale) + "x";
    return text;
}

int fail(bool json, const std::string& message, int status = kExitFailed) {
    if (json)
        std::cerr << jsonText(errorLine(message)) << "\n";
    else
        std::cerr << "velto-settings: device init: " << message << "\n";
    return status;
}

// The status a shell gives a command ended by Ctrl-C.

std::atomic<bool> interrupted{false};

void noteInterrupt(int) {
    interrupted = true;
}

// Ctrl-C while a device is made: noted, so the work stops at the next file and cleans up,
// instead of ending the process with a half-made device and a scratch folder left behind.
class InterruptGuard {
  public:
    InterruptGuard() {
        interrupted = false;
        struct sigaction action {};
        action.sa_handler = noteInterrupt;
        sigemptyset(&action.sa_mask);
        ::sigaction(SIGINT, &action, &previous_);
        ::sigaction(SIGTERM, &action, &previousTerm_);
    }
    ~InterruptGuard() {
        ::sigaction(SIGINT, &previous_, nullptr);
        ::sigaction(SIGTERM, &previousTerm_, nullptr);
    }
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

  private:
    struct sigaction previous_ {};
    struct sigaction previousTerm_ {};
};

bool isEmptyOrMissing(const std::filesystem::path& folder) {
    std::error_code ec;
    if (!std::filesystem::exists(std::filesystem::symlink_status(folder, ec))) return true;
    return std::filesystem::is_directory(std::filesystem::symlink_status(folder, ec)) &&
           std::filesystem::directory_iterator(folder, ec) == std::filesystem::directory_iterator();
}

// A hidden sibling of the device's folder, removed unless it was moved into place.
class Staging {
  public:
    explicit Staging(const std::filesystem::path& folder) {
        const std::filesystem::path absolute = std::filesystem::absolute(folder).lexically_normal();
        const std::filesystem::path named =
            absolute.has_filename() ? absolute : absolute.parent_path();
        std::error_code ec;
        std::filesystem::create_directories(named.parent_path(), ec);
        std::string pattern =
            (named.parent_path() / ("." + named.filename().string() + ".new-XXXXXX")).string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("cannot make a folder beside " + folder.string() + ": " +
                                     std::strerror(errno));
        folder_ = pattern;
        const mode_t mask = ::umask(022);
        ::umask(mask);
        ::chmod(folder_.c_str(), 0777 & ~mask);
    }
    ~Staging() {
        if (folder_.empty()) return;
        std::error_code ec;
        std::filesystem::remove_all(folder_, ec);
    }
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;
    const std::filesystem::path& folder() const { return folder_; }
    // rename(2) replaces an empty folder, and nothing else.
    void moveInto(const std::filesystem::path& place) {
        if (::rename(folder_.c_str(), place.c_str()) != 0)
            throw std::runtime_error("cannot move the new device into " + place.string() + ": " +
                                     std::strerror(errno));
        folder_.clear();
    }

  private:
    std::filesystem::path folder_;
};

}  // namespace

int runDeviceInit(const DeviceInitRequest& request, bool json) {
    device::DeviceOptions options;
    options.family = familyOf(request.family);
    if (!std::regex_match(request.systemVersion, std::regex("[0-9]+\\.[0-9]+(\\.[0-9]+)?")))
        return fail(json, "'" + request.systemVersion + "' is not a system version (X.Y[.Z])",
                    kExitUsage);
    options.systemVersion = request.systemVersion;
    // The scale picks the model whose screen the device has; a family that never had that
    // scale gets no device rather than a screen no device had.
    options.scale = request.scale ? request.scale : plat::defaultModel(options.family).scale;
    if (!plat::modelFor(options.family, options.scale))
        return fail(json,
                    std::string("no ") + plat::familyName(options.family) + " has a " +
                        std::to_string(options.scale) + "x screen (" + scalesOf(options.family) +
                        ")",
                    kExitUsage);
    options.faceTime = !request.noFaceTime;
    options.extensionAnswers = !request.noExtension;
    options.extensionVersion = request.extensionVersion;
    for (const std::string& text : request.apps) {
        std::string error;
        auto app = device::parseAppChoice(text, &error);
        if (!app) return fail(json, "--app " + error, kExitUsage);
        options.apps.push_back(*app);
    }
    for (const std::string& text : request.packages) {
        std::string error;
        auto package = device::parsePackageChoice(text, &error);
        if (!package) return fail(json, "--package " + error, kExitUsage);
        options.packages.push_back(*package);
    }
    if (request.demo) device::addDemoContent(options);
    for (auto& app : device::generatedUserApps(request.userApps))
        options.apps.push_back(std::move(app));

    // Another device's settings, or the host's own files, must not be replaced unasked.
    std::error_code ec;
    const std::filesystem::path folder(request.folder);
    if (std::filesystem::exists(folder, ec) && std::filesystem::equivalent(folder, "/", ec))
        return fail(json, "refusing to write a device into /");
    if (!request.force && std::filesystem::exists(folder, ec) &&
        (!std::filesystem::is_directory(folder, ec) ||
         std::filesystem::directory_iterator(folder, ec) != std::filesystem::directory_iterator()))
        return fail(json, isDeviceRoot(folder)
                              ? request.folder +
                                    " is a device root already; give --force to write a new "
                                    "device over it"
                              : request.folder +
                                    " is not an empty folder and holds no device; choose a new "
                                    "or empty folder");

    std::size_t imported = 0;
    std::size_t apps = 0;
    try {
        const InterruptGuard interrupts;
        // A new device is made whole beside its place and renamed into it, so a failure or an
        // interrupt leaves nothing a retry would refuse. Written into an existing folder
        // (--force), it is written in place.
        std::optional<Staging> staging;
        if (isEmptyOrMissing(folder)) staging.emplace(folder);
        const std::filesystem::path into = staging ? staging->folder() : folder;
        device::initDevice(into, options, resourcesFolder());
        // Over the new device, so the real one's package database and system version win.
        if (!request.from.empty())
            imported = device::importDeviceFiles(
                plat::HostDeviceRoot(std::filesystem::canonical(into)), request.from, &interrupted);
        if (interrupted) throw std::runtime_error("interrupted");
        // What the device holds now, imported applications included.
        apps = device::installedApps(plat::HostDeviceRoot(std::filesystem::canonical(into))).size();
        if (staging) staging->moveInto(folder);
    } catch (const std::exception& e) {
        if (interrupted) return fail(json, "interrupted; nothing was written");
        return fail(json, e.what());
    }
    if (json) {
        nlohmann::ordered_json fields{{"device", request.folder}, {"apps", apps}};
        fields["imported"] = nullptr;
        if (!request.from.empty()) fields["imported"] = imported;
        std::cout << jsonText(recordLine("device", fields)) << "\n";
    } else {
        std::cout << "device written to " << request.folder << " (" << apps << " apps";
        if (!request.from.empty())
            std::cout << "; " << imported << " files imported from " << request.from;
        std::cout << ")\n";
    }
    return kExitOk;
}

}  // namespace velto::app
