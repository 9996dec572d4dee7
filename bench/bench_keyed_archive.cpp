// Decoding the application records the extension hands the disabled-apps page: 500
// dictionaries, each with a bundle identifier, a display name, a type flag and a 120x120 icon.
#include <benchmark/benchmark.h>
#include <cairo.h>

#include <cmath>
#include <string>

#include "platform/foundation/keyed_archive.h"
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

plat::Bytes recordsArchive() {
    plat::Value records = plat::Value::array();
    for (int i = 0; i < 500; ++i)
        records.addObject(plat::Value::dictionary({
            {"VeltoBundleIdentifier", "com.example.application" + std::to_string(i)},
            {"VeltoFolderDisplayName", "Application " + std::to_string(i)},
            {"VeltoType", plat::Value::boolean(i % 5 == 0)},
            {"VeltoFolderImage", plat::Value(icon(i))},
        }));
    return *plat::archivedDataWithRootObject(records);
}

void BM_UnarchiveRecords(benchmark::State& state) {
    const plat::Bytes archive = recordsArchive();
    for (auto _ : state) {
        plat::Value records = plat::unarchiveObjectWithData(archive);
        if (records.count() != 500) state.SkipWithError("archive did not decode");
        benchmark::DoNotOptimize(records);
    }
    state.counters["archive_bytes"] = static_cast<double>(archive.size());
}
BENCHMARK(BM_UnarchiveRecords)->Unit(benchmark::kMillisecond);

void BM_ArchiveRecords(benchmark::State& state) {
    plat::Value records = plat::unarchiveObjectWithData(recordsArchive());
    for (auto _ : state) {
        auto bytes = plat::archivedDataWithRootObject(records);
        benchmark::DoNotOptimize(bytes);
    }
}
BENCHMARK(BM_ArchiveRecords)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
