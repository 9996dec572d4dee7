// Any bytes: the reader answers a value or nil, and whatever it answers can be written again in
// both formats and read back to the same value.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/foundation/plist.h"

namespace {

// Value equality, except that NaN equals NaN. (Bytes are no test: libplist merges equal data
// objects only when their addresses happen to share a hash bucket.)
bool same(const plat::Value& a, const plat::Value& b) {
    if (a.type() != b.type() || a.isUnsignedBig() != b.isUnsignedBig()) return false;
    switch (a.type()) {
        case plat::Value::Type::Real:
            return a.doubleValue() == b.doubleValue() ||
                   (std::isnan(a.doubleValue()) && std::isnan(b.doubleValue()));
        case plat::Value::Type::Date:
            return *a.asDate() == *b.asDate() ||
                   (std::isnan(*a.asDate()) && std::isnan(*b.asDate()));
        case plat::Value::Type::Array:
            if (a.count() != b.count()) return false;
            for (std::size_t i = 0; i < a.count(); ++i)
                if (!same(a.objectAtIndex(i), b.objectAtIndex(i))) return false;
            return true;
        case plat::Value::Type::Dictionary: {
            if (a.count() != b.count()) return false;
            for (const auto& [key, item] : *a.asDictionary())
                if (!same(item, b.objectForKey(key))) return false;
            return true;
        }
        default:
            return a == b;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const plat::Value value = plat::propertyListFromData(plat::Bytes(data, data + size));
    if (value.isNil()) return 0;
    // What was read is a property list, so writing it cannot fail, and reading it back gives
    // the same value.
    for (auto format : {plat::PropertyListFormat::Binary, plat::PropertyListFormat::XML}) {
        const auto bytes = plat::dataFromPropertyList(value, format);
        if (!bytes) std::abort();
        const plat::Value back = plat::propertyListFromData(*bytes);
        if (format == plat::PropertyListFormat::Binary && !same(back, value)) std::abort();
        if (back.isNil()) std::abort();
    }
    return 0;
}
