// Any bytes as a bundle's specifier list: the loader answers rows or an empty list with a log
// line, and the rows it answers are complete enough to show.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/prefs/specifier_loader.h"
#include "platform/system/bundle.h"
#include "platform/system/memory_device_root.h"
#include "platform/system/process.h"

namespace {

const char* const kBundle = "/System/Library/PreferenceBundles/Fuzz.bundle";

// In memory: a run costs what the parser costs, not what the file system does.
struct Device {
    Device() {
        plat::Process::Options options;
        options.echoLog = false;
        process =
            std::make_unique<plat::Process>(std::make_shared<plat::MemoryDeviceRoot>(), options);
        scope = std::make_unique<plat::ProcessScope>(*process);
        // Writes go straight into the bundle's folder, which must be there first.
        if (!process->root().createDirectory(kBundle, true)) std::abort();
    }
    std::unique_ptr<plat::Process> process;
    std::unique_ptr<plat::ProcessScope> scope;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Device device;
    auto& root = device.process->root();
    const plat::Bytes bytes(data, data + size);
    if (!root.writeFile(std::string(kBundle) + "/Fuzz.plist", bytes, false) ||
        !root.writeFile(std::string(kBundle) + "/Fuzz.strings", bytes, false))
        std::abort();

    const auto loaded = plat::loadSpecifiersFromPlist(plat::Bundle(kBundle), "Fuzz", nullptr);
    if (!loaded.specifiers) std::abort();
    for (const auto& row : *loaded.specifiers) {
        if (!row || !row->properties().isDictionary()) std::abort();
        (void)row->identifier();
    }
    // Keep the journal from growing over a long run.
    device.process->journal().clear();
    return 0;
}
