// The Excluded applications page's whole path on a device made as `device init --user-apps N`
// makes it (real icon files, one per app), at 300 and 3,000 apps:
//   BM_Reply    the modelled extension answering the application-list request from the device
//   BM_Decode   unarchiveObjectWithData of that reply
//   BM_Page     a fresh page: request, decode, sort, group, rows
//   BM_Record   the page's JSON record, every row's cell and icon hash included
// Each reports x_libplist: its CPU time over libplist's plist_from_bin and plist_free of the
// same reply bytes, measured in the same run just before it. The growth from 300 to 3,000
// apps should stay near 10x.
#include <benchmark/benchmark.h>
#include <plist/plist.h>

#include <ctime>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "app/commands/device_location.h"
#include "app/render/json_output.h"
#include "app/render/page_view.h"
#include "app/session/session.h"
#include "apps/velto_disabled_apps_settings_controller.h"
#include "contract/catalogue.h"
#include "device/device_init.h"
#include "device/extension_responder.h"
#include "device/generated_apps.h"
#include "platform/foundation/keyed_archive.h"

namespace {

std::filesystem::path deviceWith(int apps) {
    static std::map<int, std::filesystem::path> made;
    auto found = made.find(apps);
    if (found != made.end()) return found->second;
    const auto folder =
        std::filesystem::temp_directory_path() /
        ("velto-bench-apps-" + std::to_string(apps) + "-" + std::to_string(::getpid()));
    velto::device::DeviceOptions options;
    options.apps = velto::device::generatedUserApps(apps);
    velto::device::initDevice(folder, options, velto::app::resourcesFolder());
    return made.emplace(apps, folder).first->second;
}

// Removes the devices when the run ends.
struct Cleanup {
    ~Cleanup() {
        std::error_code ignored;
        for (const auto& entry :
             std::filesystem::directory_iterator(std::filesystem::temp_directory_path(), ignored))
            if (entry.path().filename().string().starts_with("velto-bench-apps-") &&
                entry.path().filename().string().ends_with("-" + std::to_string(::getpid())))
                std::filesystem::remove_all(entry.path(), ignored);
    }
} cleanup;

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// CPU seconds of one libplist parse of the bytes, over at least a fifth of a second.
double libplistParse(const plat::Bytes& bytes) {
    int runs = 0;
    const double start = cpuSeconds();
    double spent = 0;
    do {
        plist_t root = nullptr;
        plist_from_bin(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::uint32_t>(bytes.size()), &root);
        plist_free(root);
        ++runs;
        spent = cpuSeconds() - start;
    } while (spent < 0.2 || runs < 3);
    return spent / runs;
}

// A session on the device (no page opened) and the reply its extension gives.
class PathFixture {
  public:
    explicit PathFixture(int apps)
        : session_(deviceWith(apps), false),
          responder_(velto::device::extensionResponder(session_.process().sharedRoot())) {}

    plat::Value reply() const {
        return responder_(velto::requests::kCenterName, velto::requests::kApps, plat::Value());
    }
    plat::Bytes replyBytes() const {
        return *reply().objectForKey(velto::requests::kMessageData).asData();
    }
    std::shared_ptr<velto::VeltoDisabledAppsSettingsController> openPage() {
        auto page = std::make_shared<velto::VeltoDisabledAppsSettingsController>();
        page->initForContentSize({390, 844});
        page->specifiers();
        return page;
    }

  private:
    velto::app::Session session_;
    plat::MessageResponder responder_;
};

// Runs `step` as the benchmark's body and reports it against libplist's parse.
template <typename Step>
void measured(benchmark::State& state, const plat::Bytes& bytes, Step step) {
    const double floor = libplistParse(bytes);
    const double start = cpuSeconds();
    for (auto _ : state)
        step();
    const double each = (cpuSeconds() - start) / static_cast<double>(state.iterations());
    state.counters["x_libplist"] = each / floor;
    state.counters["reply_bytes"] = static_cast<double>(bytes.size());
}

void BM_Reply(benchmark::State& state) {
    PathFixture path(static_cast<int>(state.range(0)));
    measured(state, path.replyBytes(), [&] { benchmark::DoNotOptimize(path.reply()); });
}

void BM_Decode(benchmark::State& state) {
    PathFixture path(static_cast<int>(state.range(0)));
    const plat::Bytes bytes = path.replyBytes();
    measured(state, bytes, [&] {
        plat::Value records = plat::unarchiveObjectWithData(bytes);
        if (records.count() != static_cast<std::size_t>(state.range(0)))
            state.SkipWithError("did not decode");
        benchmark::DoNotOptimize(records);
    });
}

void BM_Page(benchmark::State& state) {
    PathFixture path(static_cast<int>(state.range(0)));
    measured(state, path.replyBytes(), [&] {
        auto page = path.openPage();
        if (page->specifiers()->count() != static_cast<std::size_t>(state.range(0)) + 1)
            state.SkipWithError("rows missing");
        benchmark::DoNotOptimize(page);
    });
}

void BM_Record(benchmark::State& state) {
    PathFixture path(static_cast<int>(state.range(0)));
    auto page = path.openPage();
    measured(state, path.replyBytes(), [&] {
        benchmark::DoNotOptimize(velto::app::pageJson(velto::app::viewOf(*page, 2), {}).dump());
    });
}

BENCHMARK(BM_Reply)->Arg(300)->Arg(3000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decode)->Arg(300)->Arg(3000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Page)->Arg(300)->Arg(3000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Record)->Arg(300)->Arg(3000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
