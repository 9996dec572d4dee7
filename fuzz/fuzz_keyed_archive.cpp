// Any bytes: the unarchiver answers an object or nil, in bounded time and memory, and what it
// answers can be archived again.
#include <cstddef>
#include <cstdint>

#include <cstdlib>

#include "platform/foundation/keyed_archive.h"
#include "platform/ui/image.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const plat::Value value = plat::unarchiveObjectWithData(plat::Bytes(data, data + size));
    // Pictures decode through the codec the image code registers (naming Image links it in);
    // one that decoded was checked against its header, so it has pixels to show.
    if (const auto image = value.as<plat::Image>())
        if (image->pixelWidth() <= 0 || image->pixelHeight() <= 0) std::abort();
    if (!value.isNil()) plat::archivedDataWithRootObject(value);
    return 0;
}
