// The settings file's round trip: a 50-key dictionary of switches, strings and numbers written
// as a binary property list and read back, as the settings store does on every change.
#include <benchmark/benchmark.h>

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

}  // namespace

BENCHMARK_MAIN();
