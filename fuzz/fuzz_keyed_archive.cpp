// Any bytes: the unarchiver answers an object or nil, in bounded time and memory, and what it
// answers can be archived again.
#include <cstddef>
#include <cstdint>

#include "platform/foundation/keyed_archive.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const plat::Value value = plat::unarchiveObjectWithData(plat::Bytes(data, data + size));
    if (!value.isNil()) plat::archivedDataWithRootObject(value);
    return 0;
}
