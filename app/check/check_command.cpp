#include "app/check/check_command.h"

#include <malloc.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app/check/check_exerciser.h"
#include "app/check/check_progress.h"
#include "app/check/check_run.h"
#include "app/commands/device_location.h"
#include "app/render/json_output.h"

namespace velto::app {

namespace {

namespace fs = std::filesystem;

int failure(bool json, const std::string& message) {
    if (json)
        std::cerr << jsonText(errorLine(message)) << "\n";
    else
        std::cerr << "velto-settings check: " << message << "\n";
    return kCheckBadArguments;
}

// The whole matrix, or the part of it the options name.
std::vector<DeviceConfig> filteredMatrix(const CheckRequest& request) {
    std::vector<DeviceConfig> configs;
    for (const DeviceConfig& config : deviceMatrix()) {
        const std::string family = plat::familyName(config.family);
        auto named = [&](const std::vector<std::string>& list, const std::string& value) {
            return list.empty() ||
                   std::any_of(list.begin(), list.end(), [&](const std::string& item) {
                       return item.size() == value.size() &&
                              std::equal(item.begin(), item.end(), value.begin(),
                                         [](char a, char b) {
                                             return std::tolower(a) == std::tolower(b);
                                         });
                   });
        };
        if (named(request.families, family) && named(request.systemVersions, config.systemVersion))
            configs.push_back(config);
    }
    return configs;
}

}  // namespace

void declareCheck(CLI::App& check, CheckRequest& request) {
    check.add_option("--resources", request.resources,
                     "the bundle's resources folder (default: the bundle's own)");
    check.add_flag("--json", request.json, "one JSON object per finding");
    check.add_flag("--strict", request.strict, "warnings fail the check too");
    check
        .add_option("--family", request.families,
                    "only devices of this family (iphone, ipad, ipod)")
        ->check(CLI::IsMember({"iphone", "ipad", "ipod"}, CLI::ignore_case));
    check.add_option("--system-version", request.systemVersions, "only this system version")
        ->check(CLI::IsMember({"12.4", "13.0"}));
}

int runCheck(const CheckRequest& request) {
    const fs::path resources = request.resources ? fs::path(*request.resources) : resourcesFolder();
    std::error_code ec;
    if (!fs::is_directory(resources, ec))
        return failure(request.json, "no resources folder at " + resources.string());

    // Tens of thousands of page builds allocate and free picture buffers above glibc's default
    // mmap threshold; each free would unmap and flush the TLB. Keep them in the heap instead.
    ::mallopt(M_MMAP_THRESHOLD, 64 << 20);
    ::mallopt(M_TRIM_THRESHOLD, 256 << 20);
    const auto started = std::chrono::steady_clock::now();
    // Progress only where someone watches it: never in a log or a pipe.
    std::unique_ptr<ProgressLine> progress;
    if (::isatty(STDERR_FILENO)) progress = std::make_unique<ProgressLine>(std::cerr);
    CheckListener listener;
    if (progress) listener.progress = [&](const CheckProgress& p) { progress->update(p); };
    if (request.json)
        listener.found = [&](const Finding& finding) {
            if (progress) progress->clear();
            std::cout << findingJson(finding) << "\n" << std::flush;
        };
    CheckOutcome outcome;
    try {
        outcome = checkBundle(resources, filteredMatrix(request), listener);
    } catch (const std::exception& e) {
        progress.reset();
        return failure(request.json, e.what());
    }
    progress.reset();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    if (request.json) {
        std::cout << recordLine("summary", {{"devices", outcome.devices},
                                            {"steps", outcome.steps},
                                            {"states", outcome.states},
                                            {"depth", kMaxExploreSteps},
                                            {"bounded", outcome.bounded},
                                            {"errors", outcome.findings.errors()},
                                            {"warnings", outcome.findings.warnings()},
                                            {"seconds", seconds}})
                         .dump()
                  << "\n";
    } else {
        printFindings(std::cout, outcome.findings,
                      request.resources ? fs::absolute(resources).string() : "");
        std::ostringstream time;
        time << std::fixed << std::setprecision(1) << seconds;
        std::cout << "checked " << outcome.devices << " devices, " << outcome.states << " states, "
                  << outcome.steps << " steps in " << time.str() << " s; every state "
                  << (outcome.bounded ? "explored to " : "reached within ") << kMaxExploreSteps
                  << " steps of a page's opening"
                  << (outcome.bounded ? " (the bound: deeper states were not explored)" : "")
                  << "\n";
    }
    const bool found =
        outcome.findings.errors() > 0 || (request.strict && outcome.findings.warnings() > 0);
    return found ? kCheckFound : kCheckClean;
}

}  // namespace velto::app
