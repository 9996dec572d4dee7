// Any bytes: the reader answers a value or nil, and whatever it answers can be written again in
// both formats and read back to the same value.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <utility>

#include "platform/foundation/plist.h"

namespace {

// Value equality, except that NaN equals NaN. (Bytes are no test: the writer's choices of
// widths and sharing are its own.) A pair of containers is compared once: shared objects make
// the value a graph whose paths can be exponentially many.
using Seen = std::set<std::pair<const void*, const void*>>;

bool same(const plat::Value& a, const plat::Value& b, Seen& seen) {
    if (a.type() != b.type() || a.isUnsignedBig() != b.isUnsignedBig()) return false;
    switch (a.type()) {
        case plat::Value::Type::Real:
        case plat::Value::Type::Date: {
            const double x = a.asDate().value_or(a.doubleValue());
            const double y = b.asDate().value_or(b.doubleValue());
            return x == y || (std::isnan(x) && std::isnan(y));
        }
        case plat::Value::Type::Array:
            if (!seen.emplace(a.asArray(), b.asArray()).second) return true;
            if (a.count() != b.count()) return false;
            for (std::size_t i = 0; i < a.count(); ++i)
                if (!same(a.objectAtIndex(i), b.objectAtIndex(i), seen)) return false;
            return true;
        case plat::Value::Type::Dictionary: {
            if (!seen.emplace(a.asDictionary(), b.asDictionary()).second) return true;
            if (a.count() != b.count()) return false;
            for (const auto& [key, item] : *a.asDictionary())
                if (!same(item, b.objectForKey(key), seen)) return false;
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
    // What was read is a property list, so writing it as binary cannot fail, and reading it
    // back gives the same value. XML has no references: a value that shares or nests beyond
    // what XML is written for is refused there, and what is written reads back.
    const auto binary = plat::dataFromPropertyList(value, plat::PropertyListFormat::Binary);
    if (!binary) std::abort();
    Seen seen;
    if (!same(plat::propertyListFromData(*binary), value, seen)) std::abort();
    if (const auto xml = plat::dataFromPropertyList(value, plat::PropertyListFormat::XML))
        if (plat::propertyListFromData(*xml).isNil()) std::abort();
    return 0;
}
