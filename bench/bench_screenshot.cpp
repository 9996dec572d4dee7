// Drawing the demo device's root page as a picture, against the floor of what every picture
// costs whatever it shows: filling a screen-sized surface.
#include <benchmark/benchmark.h>

#include <cairo.h>

#include <filesystem>

#include "app/commands/device_location.h"
#include "app/session/session.h"
#include "device/demo_device.h"
#include "device/device_init.h"
#include "platform/system/device_facts.h"
#include "screen/screenshot.h"

namespace {

std::filesystem::path demoDevice() {
    static const std::filesystem::path folder = [] {
        auto made = std::filesystem::temp_directory_path() / "velto-bench-screenshot";
        velto::device::DeviceOptions options;
        velto::device::addDemoContent(options);
        velto::device::initDevice(made, options, velto::app::resourcesFolder());
        return made;
    }();
    return folder;
}

void BM_DrawDemoRootPage(benchmark::State& state) {
    velto::app::Session session(demoDevice());
    const auto look = screen::Look::forDevice(plat::DeviceFacts::read(session.process().root()));
    for (auto _ : state)
        benchmark::DoNotOptimize(screen::drawScreenshot(*session.topPage(), look));
}
BENCHMARK(BM_DrawDemoRootPage)->Unit(benchmark::kMillisecond);

// Drawn and encoded: what `screenshot FILE` costs before the file is written.
void BM_DrawAndEncodeDemoRootPage(benchmark::State& state) {
    velto::app::Session session(demoDevice());
    const auto look = screen::Look::forDevice(plat::DeviceFacts::read(session.process().root()));
    for (auto _ : state)
        benchmark::DoNotOptimize(
            screen::pngBytes(screen::drawScreenshot(*session.topPage(), look)));
}
BENCHMARK(BM_DrawAndEncodeDemoRootPage)->Unit(benchmark::kMillisecond);

// The floor: a screen of the same size filled with one colour.
void BM_BlankScreenFloor(benchmark::State& state) {
    const auto look = screen::Look::forDevice(plat::DeviceFacts{});
    for (auto _ : state) {
        cairo_surface_t* surface = cairo_image_surface_create(
            CAIRO_FORMAT_ARGB32, static_cast<int>(look.width * look.scale),
            static_cast<int>(look.height * look.scale));
        cairo_t* cr = cairo_create(surface);
        cairo_set_source_rgb(cr, 0.95, 0.95, 0.97);
        cairo_paint(cr);
        cairo_destroy(cr);
        cairo_surface_flush(surface);
        benchmark::DoNotOptimize(cairo_image_surface_get_data(surface));
        cairo_surface_destroy(surface);
    }
}
BENCHMARK(BM_BlankScreenFloor)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
