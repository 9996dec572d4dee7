// Any bytes as a bundle's specifier list: the loader answers rows or an empty list with a log
// line, and the rows it answers are complete enough to show.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "memory_bundle.h"
#include "platform/prefs/specifier_loader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MemoryBundle device;
    const plat::Bytes bytes(data, data + size);
    device.put("Fuzz.plist", bytes);
    device.put("Fuzz.strings", bytes);

    const auto loaded = plat::loadSpecifiersFromPlist(device.bundle(), "Fuzz", nullptr);
    if (!loaded.specifiers) std::abort();
    for (const auto& row : *loaded.specifiers) {
        if (!row || !row->properties().isDictionary()) std::abort();
        (void)row->identifier();
    }
    device.forgetJournal();
    return 0;
}
