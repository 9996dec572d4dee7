// Any bytes as a bundle's specifier list: the loader answers rows or an empty list with a log
// line, and the rows it answers are complete enough to show.
#include <cstdlib>

#include "memory_bundle.h"
#include "platform/prefs/specifier_loader.h"

void fuzzInBundle(MemoryBundle& device, const plat::Bytes& input) {
    device.put("Fuzz.plist", input);
    device.put("Fuzz.strings", input);
    const auto loaded = plat::loadSpecifiersFromPlist(device.bundle(), "Fuzz", nullptr);
    if (!loaded.specifiers) std::abort();
    for (const auto& row : *loaded.specifiers) {
        if (!row || !row->properties().isDictionary()) std::abort();
        (void)row->identifier();
    }
}
