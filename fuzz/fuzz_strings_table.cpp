// Any bytes as a bundle's strings table: a lookup answers the translation, the value or the
// key, never anything else, and never fails.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "memory_bundle.h"
#include "platform/foundation/plist.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MemoryBundle device;
    const plat::Bytes bytes(data, data + size);
    device.put("Localizable.strings", bytes);
    const plat::Bundle bundle = device.bundle();
    // A key the table may hold, and one it cannot: the answer is its string or the fallback.
    const plat::Value table = plat::propertyListFromData(bytes);
    for (const char* key : {"Enabled", "About", "\xff"}) {
        const std::string answer = bundle.localizedStringForKey(key, "", "");
        const plat::Value stored = table.objectForKey(key);
        const std::string expected = stored.isString() ? stored.str() : std::string(key);
        if (answer != expected) std::abort();
    }
    device.forgetJournal();
    return 0;
}
