// The settings file's round trip: a 50-key dictionary of switches, strings and numbers written
// as a binary property list and read back, as the settings store does on every change.
#include <benchmark/benchmark.h>

#include <plist/plist.h>

#include <chrono>
#include <string>

#include "platform/foundation/plist.h"

namespace {

plat::Value settingsDictionary() {
    plat::Value settings = plat::Value::dictionary();
    for (int i = 0; i < 50; ++i) {
        const std::string key = "VeltoSetting" + std::to_string(i);
        switch (i % 3) {
            case 0:
                settings.setValueForKey(key, plat::Value::boolean(i % 2 == 0));
                break;
            case 1:
                settings.setValueForKey(key, "com.example.application" + std::to_string(i));
                break;
            default:
                settings.setValueForKey(key, plat::Value::integer(i * 1000));
                break;
        }
    }
    return settings;
}

void BM_WriteBinary(benchmark::State& state) {
    const plat::Value settings = settingsDictionary();
    for (auto _ : state) {
        auto bytes = plat::dataFromPropertyList(settings, plat::PropertyListFormat::Binary);
        benchmark::DoNotOptimize(bytes);
    }
}
BENCHMARK(BM_WriteBinary);

void BM_ReadBinary(benchmark::State& state) {
    const plat::Bytes bytes =
        *plat::dataFromPropertyList(settingsDictionary(), plat::PropertyListFormat::Binary);
    for (auto _ : state) {
        plat::Value value = plat::propertyListFromData(bytes);
        benchmark::DoNotOptimize(value);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_ReadBinary);

void BM_WriteAndReadBinary(benchmark::State& state) {
    const plat::Value settings = settingsDictionary();
    for (auto _ : state) {
        plat::Value value = plat::propertyListFromData(
            *plat::dataFromPropertyList(settings, plat::PropertyListFormat::Binary));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_WriteAndReadBinary);

// The store's cost of one switch flip against its floor, libplist's own plist_from_bin and
// plist_to_bin of the same bytes, measured in the same run in interleaved batches so that a busy
// machine weighs on both alike. "ratio" is ours over the floor.
void BM_RoundTripAgainstLibplist(benchmark::State& state) {
    const plat::Bytes bytes =
        *plat::dataFromPropertyList(settingsDictionary(), plat::PropertyListFormat::Binary);
    const char* raw = reinterpret_cast<const char*>(bytes.data());
    const auto length = static_cast<std::uint32_t>(bytes.size());
    using Clock = std::chrono::steady_clock;
    constexpr int kBatch = 64;
    Clock::duration ours{}, floor{};
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < kBatch; ++i) {
            auto out = plat::dataFromPropertyList(plat::propertyListFromData(bytes),
                                                  plat::PropertyListFormat::Binary);
            benchmark::DoNotOptimize(out);
        }
        const auto middle = Clock::now();
        for (int i = 0; i < kBatch; ++i) {
            plist_t node = nullptr;
            plist_from_bin(raw, length, &node);
            char* out = nullptr;
            std::uint32_t outLength = 0;
            plist_to_bin(node, &out, &outLength);
            benchmark::DoNotOptimize(out);
            plist_to_bin_free(out);
            plist_free(node);
        }
        const auto end = Clock::now();
        ours += middle - start;
        floor += end - middle;
    }
    const double runs = static_cast<double>(state.iterations()) * kBatch;
    state.counters["ours_ns"] = std::chrono::duration<double, std::nano>(ours).count() / runs;
    state.counters["libplist_ns"] = std::chrono::duration<double, std::nano>(floor).count() / runs;
    state.counters["ratio"] =
        std::chrono::duration<double>(ours).count() / std::chrono::duration<double>(floor).count();
}
BENCHMARK(BM_RoundTripAgainstLibplist);

}  // namespace

BENCHMARK_MAIN();
