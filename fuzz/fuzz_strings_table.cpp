// Any bytes as a bundle's strings table: a lookup answers the translation, the value or the
// key, never anything else, and never fails.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/foundation/plist.h"
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
        if (!process->root().createDirectory(kBundle, true)) std::abort();
    }
    std::unique_ptr<plat::Process> process;
    std::unique_ptr<plat::ProcessScope> scope;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Device device;
    const plat::Bytes bytes(data, data + size);
    if (!device.process->root().writeFile(std::string(kBundle) + "/Localizable.strings", bytes,
                                          false))
        std::abort();
    const plat::Bundle bundle(kBundle);
    // A key the table may hold, and one it cannot: the answer is its string or the fallback.
    const plat::Value table = plat::propertyListFromData(bytes);
    for (const char* key : {"Enabled", "About", "\xff"}) {
        const std::string answer = bundle.localizedStringForKey(key, "", "");
        const plat::Value stored = table.objectForKey(key);
        const std::string expected = stored.isString() ? stored.str() : std::string(key);
        if (answer != expected) std::abort();
    }
    device.process->journal().clear();
    return 0;
}
