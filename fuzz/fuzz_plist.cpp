// Any bytes: the reader answers a value or nil, and whatever it answers can be written again in
// both formats; the binary form reads back to a value that writes the very same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/foundation/plist.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const plat::Value value = plat::propertyListFromData(plat::Bytes(data, data + size));
    if (value.isNil()) return 0;
    const auto binary = plat::dataFromPropertyList(value, plat::PropertyListFormat::Binary);
    const auto xml = plat::dataFromPropertyList(value, plat::PropertyListFormat::XML);
    // What was read is a property list, so writing it cannot fail.
    if (!binary || !xml) std::abort();
    const auto again = plat::dataFromPropertyList(plat::propertyListFromData(*binary),
                                                  plat::PropertyListFormat::Binary);
    if (!again || *again != *binary) std::abort();
    plat::propertyListFromData(*xml);
    return 0;
}
