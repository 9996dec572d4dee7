// Opening the Excluded applications page against the cost of parsing the reply it decodes.
// One reply of N application records with distinct 120x120 PNG icons; on the same bytes in
// the same run:
//   BM_PlistFromBin    libplist's own plist_from_bin and plist_free (the floor)
//   BM_Unarchive       unarchiveObjectWithData
//   BM_Archive         archivedDataWithRootObject of the decoded records
//   BM_PageOpen        request, decode, sort, group and rows of a fresh page
// Targets: decode <= 1.5x the floor, page open <= 2x, 5,000 records <= 11x 500.
#include <benchmark/benchmark.h>
#include <cairo.h>
#include <plist/plist.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "apps/velto_disabled_apps_settings_controller.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/system/process.h"
#include "platform/ui/image.h"

namespace {

// A different icon per record, so no two carry the same PNG bytes.
plat::ImagePtr icon(int i) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 120, 120);
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, (i % 7) / 7.0, (i % 11) / 11.0, (i % 13) / 13.0);
    cairo_arc(cr, 60, 60, 50, 0, 2 * M_PI);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_rectangle(cr, 20 + i % 40, 30, 30, 60);
    cairo_fill(cr);
    cairo_destroy(cr);
    return plat::Image::adopt(surface, 2);
}

// The reply's archive for n records, made once per size.
const plat::Bytes& reply(int n) {
    static std::map<int, plat::Bytes> made;
    auto it = made.find(n);
    if (it != made.end()) return it->second;
    plat::Value records = plat::Value::array();
    for (int i = 0; i < n; ++i)
        records.addObject(plat::Value::dictionary({
            {"VeltoBundleIdentifier", "com.example.application" + std::to_string(i)},
            // Mixed case, so the case-insensitive grouping sort has work to do.
            {"VeltoFolderDisplayName",
             (i % 2 ? "application " : "Application ") + std::to_string((i * 7919) % n)},
            {"VeltoType", plat::Value::boolean(i % 5 == 0)},
            {"VeltoFolderImage", plat::Value(icon(i))},
        }));
    return made.emplace(n, *plat::archivedDataWithRootObject(records)).first->second;
}

void BM_PlistFromBin(benchmark::State& state) {
    const plat::Bytes& bytes = reply(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        plist_t root = nullptr;
        plist_from_bin(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::uint32_t>(bytes.size()), &root);
        if (!root) state.SkipWithError("not a property list");
        plist_free(root);
    }
    state.counters["reply_bytes"] = static_cast<double>(bytes.size());
}

void BM_Unarchive(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const plat::Bytes& bytes = reply(n);
    for (auto _ : state) {
        plat::Value records = plat::unarchiveObjectWithData(bytes);
        if (records.count() != static_cast<std::size_t>(n)) state.SkipWithError("did not decode");
        benchmark::DoNotOptimize(records);
    }
}

void BM_Archive(benchmark::State& state) {
    const plat::Value records =
        plat::unarchiveObjectWithData(reply(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        auto bytes = plat::archivedDataWithRootObject(records);
        if (!bytes) state.SkipWithError("did not archive");
        benchmark::DoNotOptimize(bytes);
    }
}

// A process on an empty device whose extension answers with the reply's bytes.
class PageProcess {
  public:
    explicit PageProcess(const plat::Bytes& bytes)
        : folder_(std::filesystem::temp_directory_path() /
                  ("velto-bench-" + std::to_string(::getpid()))),
          process_((std::filesystem::create_directories(folder_), folder_),
                   plat::Process::Options{"Preferences", false}),
          scope_(process_) {
        const plat::Value answer =
            plat::Value::dictionary({{"VeltoServiceMessageData", plat::Value::data(bytes)}});
        process_.messageCenters().setResponder([answer](const std::string&, const std::string&,
                                                        const plat::Value&) { return answer; });
    }
    ~PageProcess() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

  private:
    std::filesystem::path folder_;
    plat::Process process_;
    plat::ProcessScope scope_;
};

void BM_PageOpen(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    PageProcess process(reply(n));
    for (auto _ : state) {
        auto page = std::make_shared<velto::VeltoDisabledAppsSettingsController>();
        page->initForContentSize({320, 568});
        auto rows = page->specifiers();
        if (rows->count() != static_cast<std::size_t>(n) + 2) state.SkipWithError("rows missing");
        benchmark::DoNotOptimize(rows);
    }
}

BENCHMARK(BM_PlistFromBin)->Arg(500)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Unarchive)->Arg(500)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Archive)->Arg(500)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PageOpen)->Arg(500)->Arg(5000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
