// Any bytes as a bundle's strings table: a lookup answers the translation, the value or the
// key, never anything else, and never fails.
#include <cstdlib>
#include <string>

#include "memory_bundle.h"
#include "platform/foundation/plist.h"

void fuzzInBundle(MemoryBundle& device, const plat::Bytes& input) {
    device.put("Localizable.strings", input);
    // A key the table may hold, and one it cannot: the answer is its string or the fallback.
    const plat::Value table = plat::propertyListFromData(input);
    const plat::Bundle bundle = device.bundle();
    for (const char* key : {"Enabled", "About", "\xff"}) {
        const plat::Value stored = table.objectForKey(key);
        const std::string expected = stored.isString() ? stored.str() : std::string(key);
        if (bundle.localizedStringForKey(key, "", "") != expected) std::abort();
    }
}
